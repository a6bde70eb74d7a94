/** The VSAN settings with each of their platform calls failing in turn. */
#include <doctest/doctest.h>

#include "fault/locked_rows.h"
#include "unit/vsan_setting_table.h"

using namespace ficon::test;

namespace {

/** The setting's own calls, with the transport's errors given by the sweep. */
std::vector<FaultCase> own_rows(std::uint32_t recv_status) {
  return {
      {"tlv_aligned_array_add_tlv", kInjected},
      {"tlv_aligned_array_add_tlv", kInjected},
      {"mts_send", 0xffffffff},
      {"mts_recv", recv_status},
      {"mts_payload_get", 0x40850003},
      {"tlv_aligned_array_get_num_tlvs", 0x40850003},
      {"tlv_aligned_array_get_next_tlv", kInjected},
  };
}

void sweep(const VsanSetting& setting, const std::vector<FaultCase>& rows,
           std::int32_t error = kInjectedError) {
  CAPTURE(setting.name);
  fault_sweep([&](ScriptedPlatform& platform) { return setting.blocking(platform.handle()); },
              [&](ScriptedPlatform& platform) {
                platform.ficon_enabled_on({kSettingVsan}).lock_granted();
                platform.expect_send(7865, setting.request()).reply(tlvs().header_status(0));
              },
              rows, error);
}

}  // namespace

TEST_CASE("faults: every VSAN setting under the lock") {
  for (const VsanSetting& setting : vsan_settings())
    sweep(setting, locked_rows(own_rows(0x40850000)));
}

TEST_CASE("faults: a VSAN setting while the daemon goes away") {
  // a lock that could not be asked for counts as held
  sweep(vsan_settings().front(), locked_rows(own_rows(0x40850000), {.lock_send = 0}), 32);
}

TEST_CASE("faults: a VSAN setting that waits too long") {
  sweep(vsan_settings().front(), locked_rows(own_rows(0x40850043)), 62);
}

TEST_CASE("faults: a VSAN setting interrupted while it waits") {
  sweep(vsan_settings().front(), locked_rows(own_rows(0), {.lock_recv = 0}), 4);
}

TEST_CASE("faults: a VSAN setting where FICON is not enabled") {
  const VsanSetting& setting = vsan_settings().front();
  std::vector<FaultCase> rows = {
      {"ficon_send_get_enabled_vsans", 0}, {"mts_recv", 0}, {"ficon_parse_get_enabled_vsans", 0}};
  for (const FaultCase& row : own_rows(0x40850000)) rows.push_back(row);
  fault_sweep([&](ScriptedPlatform& platform) { return setting.blocking(platform.handle()); },
              [&](ScriptedPlatform& platform) {
                platform.ficon_enabled_on({});
                platform.expect_send(7865, setting.request()).reply(tlvs().header_status(0));
              },
              rows);
}

TEST_CASE("faults: every VSAN setting that does not block") {
  for (const VsanSetting& setting : vsan_settings()) {
    if (!setting.nonblock) continue;
    CAPTURE(setting.name);
    fault_sweep(
        [&](ScriptedPlatform& platform) {
          mts_msg_ref_t msg{};
          const std::uint32_t status = setting.nonblock(platform.handle(), &msg);
          if (status == 0) mts_drop(platform.handle(), &msg);
          return status;
        },
        [&](ScriptedPlatform& platform) { platform.expect_send(7865, setting.request()); },
        {{"tlv_aligned_array_add_tlv", kInjected},
         {"tlv_aligned_array_add_tlv", kInjected},
         {"mts_send", 0xffffffff}});
  }
}
