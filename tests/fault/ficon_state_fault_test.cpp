/** FICON on and off, and the box status, with each of their platform calls failing in turn. */
#include <doctest/doctest.h>

#include "fault/locked_rows.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kVsan = 10;

std::uint32_t enable(ScriptedPlatform& platform) {
  return ficon_cmi_set_ficon_state(1, platform.handle(), "VSH", "UNKNOWN", 5, kVsan, 1);
}
std::uint32_t disable(ScriptedPlatform& platform) {
  return ficon_cmi_set_ficon_state(1, platform.handle(), "VSH", "UNKNOWN", 5, kVsan, 0);
}

void script(ScriptedPlatform& platform) {
  platform.ficon_enabled_on({kVsan}).lock_granted().feature_answers(0);
  platform.expect_send(7853).reply(record(128));
}

/** The change's own calls, inside the lock's. */
const std::vector<FaultCase> kOwn = {
    {"mts_send", 0xffffffff}, {"mts_recv", 0x40850000}, {"mts_payload_get", 3}};

}  // namespace

TEST_CASE("faults: enable, under the lock") {
  std::vector<FaultCase> rows = locked_rows(kOwn);
  rows.insert(rows.begin(), {"fm_cmi_set_feature_wait", kInjected});
  fault_sweep(enable, script, rows);
}

TEST_CASE("faults: disable; the check is made twice and only its second outcome locks") {
  std::vector<FaultCase> rows = locked_rows(kOwn);
  rows.insert(
      rows.begin(),
      {{"ficon_send_get_enabled_vsans", 0}, {"mts_recv", 0}, {"ficon_parse_get_enabled_vsans", 0}});
  fault_sweep(disable, script, rows);
}

TEST_CASE("faults: box status query") {
  fault_sweep(
      [](ScriptedPlatform& platform) {
        mts_msg_ref_t msg{};
        const auto status =
            ficon_cmi_get_box_status(1, platform.handle(), "VSH", "UNKNOWN", 5, &msg);
        if (status == 0) mts_drop(platform.handle(), &msg);
        return status;
      },
      [](ScriptedPlatform& platform) { platform.expect_send(7880); }, {{"mts_send", 0xffffffff}});
}

TEST_CASE("faults: box status reply") {
  fault_sweep(
      [](ScriptedPlatform& platform) {
        ficon_cmi_box_status_t* status = nullptr;
        const auto result =
            ficon_cmi_parse_box_status(platform.received(record(148).u8(5, 1)), &status);
        CHECK((status != nullptr) == (result == 0));
        if (status != nullptr) mtrack_free(status);
        return result;
      },
      [](ScriptedPlatform&) {}, {{"mts_payload_get", 3}, {"mtrack_alloc", 0x40850010}});
}
