/** Changes to files with each platform call failing in turn: what becomes of lock and edit. */
#include <doctest/doctest.h>

#include "fault/locked_rows.h"
#include "unit/port_change_forms.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kNoLock = 0x40850012;
constexpr std::uint32_t kNoCodepage = 0x40850004;
constexpr std::uint32_t kInvalid = 0x40850003;
constexpr std::uint32_t kReceive = 0x40850000;
constexpr std::uint32_t kNoConversion = 0x40850020;

using Rows = std::vector<FaultCase>;

Rows together(std::initializer_list<Rows> parts) {
  Rows all;
  for (const Rows& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

/** The VSAN query: two TLVs, two passes. */
Rows codepage_rows() {
  Rows rows = {{"tlv_aligned_array_add_tlv", kNoCodepage},
               {"mts_send", kNoCodepage},
               {"mts_recv", kNoCodepage},
               {"mts_payload_get", kNoCodepage},
               {"tlv_aligned_array_get_num_tlvs", kNoCodepage}};
  rows.resize(9, {"tlv_aligned_array_get_next_tlv", kNoCodepage});
  return rows;
}

const Rows kConvert = {{"ficon_get_convert_fn_ptr", kNoConversion}};
const Rows kAdd = {{"tlv_aligned_array_add_tlv", kInjected}};
const Rows kExchange = {{"mts_send", 0xffffffff},
                        {"mts_recv", kReceive},
                        {"mts_payload_get", kInvalid},
                        {"tlv_aligned_array_get_num_tlvs", kInvalid},
                        {"tlv_aligned_array_get_next_tlv", kInjected}};

Rows operation_rows() {
  return locked_rows(together({codepage_rows(), kConvert, kAdd, kExchange}));
}

void script_operation(ScriptedPlatform& platform) {
  platform.ficon_enabled_on({kFileVsan}).lock_granted();
  play_converter(platform, ebcdic);
  expect_codepage(platform);
  platform.expect_send(7861).reply(file_answer(0));
}

void script_change(ScriptedPlatform& platform) {
  platform.ficon_enabled_on({kFileVsan}).lock_granted();
  play_converter(platform, ebcdic);
  expect_codepage(platform);
  platform.expect_send(7866).reply(file_answer(0));
}

}  // namespace

TEST_CASE("faults: file operation") {
  fault_sweep(
      [](ScriptedPlatform& p) {
        Name name("a");
        return ficon_cmi_file_ops(1, p.handle(), "VSH", "UNKNOWN", 5, kFileVsan, 1, name, nullptr,
                                  nullptr, nullptr);
      },
      script_operation, operation_rows());
}

TEST_CASE("faults: copy, header, description") {
  fault_sweep(
      [](ScriptedPlatform& p) {
        Name from("a"), to("b");
        return ficon_cmi_file_copy(1, p.handle(), "VSH", "UNKNOWN", 5, kFileVsan, from, to);
      },
      script_change, locked_rows(together({codepage_rows(), kConvert, kConvert, kAdd, kExchange})));
  const Rows header = locked_rows(together(
      {codepage_rows(), kConvert, {{"convert_codepage", kInjected}}, kAdd, kAdd, kExchange}));
  fault_sweep(
      [](ScriptedPlatform& p) {
        Name name("a");
        ficon_cmi_file_hdr_t record{};
        std::memset(record.description, ' ', sizeof record.description);
        return ficon_cmi_file_set_file_hdr(1, p.handle(), "VSH", "UNKNOWN", 5, kFileVsan, name,
                                           nullptr, &record);
      },
      script_change, header);
  fault_sweep(
      [](ScriptedPlatform& p) {
        Name name("a");
        return ficon_cmi_file_set_file_desc(1, p.handle(), "VSH", "UNKNOWN", 5, kFileVsan, name,
                                            "Tape", 4);
      },
      script_change, header);
}

TEST_CASE("faults: file operation and copy while the daemon goes away, or too late") {
  const auto copy = [](ScriptedPlatform& p) {
    char raw[8] = {};
    return ficon_cmi_file_copy(3, p.handle(), "VSH", "UNKNOWN", 5, kFileVsan, raw, raw);
  };
  Rows late = locked_rows(together({codepage_rows(), kAdd, kExchange}));
  late[locked_rows({}).size() - 3 + 9 + 2].status = 0x40850043;  // the change's own receive
  fault_sweep(copy, script_change, late, 62);
  // a lock that could not be asked for counts as held
  fault_sweep(copy, script_change,
              locked_rows(together({codepage_rows(), kAdd, kExchange}), {.lock_send = 0}), 32);
}

namespace {

/** A row of the sweep over a change with an edit: how the run's story ends. */
struct EditCase {
  FaultCase fault;
  std::string ending;
};

std::vector<EditCase> ending(const Rows& rows, const std::string& text) {
  std::vector<EditCase> cases;
  for (const FaultCase& row : rows) cases.push_back({row, text});
  return cases;
}

std::vector<EditCase> edit_rows(const PortChange& form) {
  const std::string kept = "lock, code page, keep, free";
  const std::string discarded = "change, free, lock, code page, discard, free";
  const std::string refused = "change, lock, code page, discard, free, free";
  const std::string unsent = "lock, code page, discard, free";
  const Rows check = {
      {"ficon_send_get_enabled_vsans", 0}, {"mts_recv", 0}, {"ficon_parse_get_enabled_vsans", 0}};
  const Rows lock = {{"mts_send", kNoLock}, {"mts_recv", kNoLock}, {"mts_payload_get", kNoLock}};
  const Rows free = {{"mts_send", 0}, {"mts_recv", 0}, {"mts_payload_get", 0}};
  const std::string opened = "code page, open, free, ";
  const Rows adds = form.name == "name" ? together({kAdd, kConvert, kAdd}) : together({kAdd, kAdd});
  std::vector<EditCase> rows;
  const auto then = [&](const std::vector<EditCase>& more) {
    rows.insert(rows.end(), more.begin(), more.end());
  };
  // the query that finds no room is not sent
  const auto then_codepage = [&](const std::string& before, const std::string& after) {
    const Rows all = codepage_rows();
    then(ending({all[0]}, before + after));
    then(ending(Rows(all.begin() + 1, all.end()), before + "code page, " + after));
  };
  then(ending(check, "change, " + kept));  // unlocked, and no free before the edit is kept
  then(ending(lock, "lock"));
  then_codepage("lock, ", "free");
  // opening
  then(ending(check, "code page, open, change, free, " + kept));
  then(ending(lock, "lock, free"));
  then_codepage("lock, code page, lock, ", "free, free");
  then(ending(kConvert, "code page, free, free"));
  then(ending(kAdd, "code page, free, free"));
  then(ending(kExchange, "open, free, free"));
  then(ending(free, "change, free, " + kept));
  // the change itself
  if (form.name == "prohibit") then(ending({{"mtrack_alloc", 1}}, opened + "free, " + unsent));
  then(ending(kConvert, opened + "free, " + unsent));
  then(ending(kAdd, opened + "free, " + unsent));
  then(ending(Rows(adds.begin() + 1, adds.end()), opened + "free, " + unsent));
  then(ending({kExchange[0]}, discarded));
  then(ending({kExchange[1]}, form.leaves_edit_open ? "open, free, change, free" : discarded));
  then(ending({kExchange[2], kExchange[3], kExchange[4]}, refused));
  then(ending(free, "change, free, " + kept));
  // keeping
  then(ending(check, "change, free, code page, keep"));
  then(ending(lock, "change, free, lock"));
  then_codepage("change, free, lock, ", "free");
  then(ending(kConvert, "change, free, lock, code page, free"));
  then(ending(kAdd, "change, free, lock, code page, free"));
  then(ending(kExchange, kept));
  then(ending(free, kept));
  return rows;
}

}  // namespace

TEST_CASE("faults: changes of ports: who closes the edit, who leaves it open, who frees the lock") {
  for (const PortChange& form : port_changes()) {
    CAPTURE(form.name);
    const std::vector<EditCase> rows = edit_rows(form);
    for (std::size_t n = 0; n <= rows.size(); ++n) {
      ScriptedPlatform platform;
      platform.ficon_enabled_on({kFileVsan}).lock_granted();
      play_converter(platform, ebcdic);
      expect_codepage(platform);
      script_operation(platform);
      platform.expect_send(7866).reply(file_answer(0));
      script_operation(platform);
      platform.fail_call(static_cast<int>(n) + 1);
      Name name("a");
      const std::uint32_t status = form.run(platform, 1, name, nullptr, nullptr);
      const std::string where = std::to_string(n + 1) + ": " + platform.fault();
      CAPTURE(where);
      REQUIRE(platform.fault_was_hit() == (n < rows.size()));
      if (n == rows.size()) {
        CHECK(status == 0);
        CHECK(platform.finished());
        break;
      }
      CHECK(platform.fault().substr(0, platform.fault().find(' ')) == rows[n].fault.call);
      CHECK(status == rows[n].fault.status);
      const std::string told = story(platform);
      CHECK_MESSAGE(told.ends_with(rows[n].ending), told, " should end with ", rows[n].ending);
      CHECK(platform.messages_dropped());
      CHECK(platform.lock_balanced());
      CHECK(platform.leaks().empty());
    }
  }
}
