/** Changes of numbers, addresses, swaps and prohibit settings: refused, seen by all, and kept. */
#include <doctest/doctest.h>

#include "chassis_daemon.h"
#include "file_client.h"
#include "port_client.h"

using namespace ficon;
using namespace ficon::test;
using wire::FileOperation;

namespace {

constexpr std::uint8_t kReserve = 1;
constexpr std::uint8_t kRelease = 2;
constexpr std::uint8_t kReserved = 3;
constexpr std::uint8_t kReserveLogical = 4;
constexpr std::uint8_t kReservedLogical = 6;
constexpr if_index_t kChannel12 = 0x0400000c;
constexpr if_index_t kAutoCreated = 0x0400000d;

// Numbers 0 to 7 are module 1's, 8 to 15 module 2's, 240 to 249 the logical ports'; the last port
// of module 2 is of another VSAN.
constexpr const char* kChassis = R"(
slots = 2
[[module]]
slot = 1
ports = 8
vsan = 20
condition = "up"
[[module]]
slot = 2
ports = 8
vsan = 20
condition = "up"
[[module.port]]
ports = "8"
vsan = 10
[[port_channel]]
number = 12
mode = "TE"
vsan = 20
[[port_channel]]
number = 13
vsan = 20
auto_created = true
)";

struct Director : ChassisDaemon {
  Director() : ChassisDaemon(kChassis) { REQUIRE(files.enable()); }

  /** Swaps, and checks what the reply says was swapped. */
  std::uint32_t swap(std::uint32_t first, std::uint32_t second) const {
    ficon_cmi_swap_reply_t* record = nullptr;
    const std::uint32_t status = ports.call(ficon_cmi_swap_port, first, second, &record);
    CHECK((record == nullptr) == (status != 0));
    if (record != nullptr) {
      CHECK(std::uint32_t{record->count} == 1);
      const auto* operation = reinterpret_cast<const std::uint8_t*>(record + 1);
      const test::Bytes bytes(operation, operation + 8);
      CHECK(be32_at(bytes, 0) == ports.walk(1, 0, port_number(first), kNone).if_index);
      CHECK(be32_at(bytes, 4) == ports.walk(1, 0, port_number(second), kNone).if_index);
    }
    mtrack_free(record);
    return status;
  }
  static std::uint16_t port_number(std::uint32_t number) {
    return static_cast<std::uint16_t>(number);
  }
  /** What a file that is created now prohibits. */
  Masks prohibited_in_new(const std::string& file) const {
    std::uint32_t key = 0;
    std::uint8_t flag = 0;
    REQUIRE(files.operate(FileOperation::kOpen, file, &key, &flag) == 0);
    CHECK(flag == 1);  // a new file
    REQUIRE(files.operate(FileOperation::kKeep, "", &key) == 0);
    return files.masks(file);
  }
  if_index_t interface_in(const std::string& file, std::uint32_t address) const {
    return files.ports(file).at(address).if_index.get();
  }
  /** Change and detail of the newest entry of the history. */
  std::pair<int, std::string> newest_change() const {
    std::uint32_t key = 0;
    std::uint32_t count = 0;
    std::uint32_t word = 0;
    ficon_cmi_hist_entry_t* entries = nullptr;
    REQUIRE(ports.call(ficon_cmi_get_history_summary, 1U, &key, 1U, 1U, 0U, &count, &word,
                       &entries) == 0);
    REQUIRE(count == 1);
    const auto* bytes = reinterpret_cast<const char*>(entries);
    std::pair<int, std::string> change{bytes[4], std::string(bytes + 13, strnlen(bytes + 13, 24))};
    mtrack_free(entries);
    return change;
  }

  FileClient files{socket()};
  PortClient ports{socket()};
};

}  // namespace

TEST_CASE_FIXTURE(Director, "A swap moves a port's settings in every file, and a second one back") {
  REQUIRE(files.block("", 0x01) == 0);
  REQUIRE(files.operate(FileOperation::kSaveActive, "ONE") == 0);
  REQUIRE(files.copy("ONE", "TWO") == 0);
  REQUIRE(files.block("TWO", 0x0a) == 0);

  REQUIRE(swap(1, 10) == 0);
  CHECK(newest_change() == std::pair<int, std::string>{12, "addresses 01 and 0a"});
  for (const char* file : {"", "ONE", "TWO"}) {
    CHECK(interface_in(file, 0x01) == fc(2, 3));
    CHECK(interface_in(file, 0x0a) == fc(1, 2));
    CHECK(files.ports(file).at(0x01).port_number.get() == 10);
    CHECK(files.blocked(file, 0x01));  // what was fc1/2's is fc2/3's now
    CHECK(files.blocked(file, 0x0a) == (std::string(file) == "TWO"));
  }
  const Span map = ports.span(1, 0);
  CHECK(map.ports[1].port_number == 1);
  CHECK(map.ports[1].port_address == 0x0a);

  ficon_cmi_swap_reply_t* record = nullptr;
  REQUIRE(ports.call(ficon_cmi_swap_intf, fc(2, 3), fc(1, 2), &record) == 0);
  mtrack_free(record);
  CHECK(interface_in("ONE", 0x01) == fc(1, 2));
  CHECK(ports.span(1, 0).ports[1].port_address == 0x01);
}

TEST_CASE_FIXTURE(Director, "A refused swap has a reason and no record, and changes nothing") {
  REQUIRE(ports.call(ficon_cmi_set_pa_pn, std::uint16_t{0x0f}, kNone) == 0);
  const auto before = ports.interfaces_by_address(255);
  CHECK(swap(1, 1) == 0x40850025);
  CHECK(swap(1, 240) == code(FcdStatus::kPortNotInstalled));
  CHECK(swap(200, 1) == code(FcdStatus::kPortNotInstalled));
  CHECK(swap(1, 254) == code(FcdStatus::kControlUnitPort));
  CHECK(swap(1, 15) == code(FcdStatus::kPortWithoutAddress));
  CHECK(swap(1, 512) == code(FcdStatus::kPortNumberOutOfRange));
  CHECK(swap(256, 1) == code(FcdStatus::kPortNumberOutOfRange));
  ficon_cmi_swap_reply_t* record = nullptr;
  CHECK(ports.call(ficon_cmi_swap_intf, fc(1, 1), fc(1, 9), &record) ==
        code(FcdStatus::kPortNotInstalled));
  CHECK(ports.call(ficon_cmi_swap_intf, fc(1, 1), kChannel12, &record) ==
        code(FcdStatus::kPortWithoutNumber));
  CHECK(record == nullptr);
  CHECK(ports.interfaces_by_address(255) == before);
  CHECK(newest_change().first == 11);  // the address that was taken away before
}

TEST_CASE_FIXTURE(Director, "A refused reservation says which number collides with what") {
  struct Case {
    std::uint8_t op;
    std::uint32_t module;
    std::vector<std::uint32_t> ranges;
    FcdStatus status;
    const char* text;
  };
  for (const Case& refused :
       {Case{kReserve,
             2,
             {16, 20, 4, 9},
             FcdStatus::kPortNumberTaken,
             "port number 4 is reserved for module 1"},
        Case{kReserve,
             1,
             {240, 240},
             FcdStatus::kPortNumberTaken,
             "port number 240 is reserved for the logical ports"},
        Case{kReserveLogical,
             0,
             {8, 8},
             FcdStatus::kPortNumberTaken,
             "port number 8 is reserved for module 2"},
        Case{kReserve,
             1,
             {16, 20, 18, 18},
             FcdStatus::kBadPortNumberRange,
             "port number 18 stands in two ranges, 16-20 and 18"},
        Case{kReserve,
             1,
             {20, 16},
             FcdStatus::kBadPortNumberRange,
             "range 20-16 ends before it begins"},
        Case{kReserve,
             1,
             {20, 84},
             FcdStatus::kBadPortNumberRange,
             "65 port numbers are more than the 64 positions of module 1"},
        Case{kReserve,
             1,
             {253, 254},
             FcdStatus::kControlUnitPort,
             "port number 254 belongs to the control unit port"},
        Case{kReserve,
             1,
             {255, 256},
             FcdStatus::kPortNumberOutOfRange,
             "port number 256 is beyond the port numbers of this switch, 0 to 255"},
        Case{kRelease,
             1,
             {8, 8},
             FcdStatus::kPortNumberTaken,
             "port number 8 is reserved for module 2"}}) {
    const Reserved reply = ports.reserve(refused.op, refused.module, refused.ranges);
    CHECK(reply.status == code(refused.status));
    CHECK(reply.text == refused.text);
  }
  const Reserved module = ports.reserve(kReserved, 1);
  CHECK(module.numbers == std::vector<std::uint32_t>{0, 7});
  CHECK(module.result == 8);
}

TEST_CASE_FIXTURE(Director,
                  "64 ranges are reserved and read back, and the numbers stand in order") {
  REQUIRE(ports.reserve(kRelease, 2).status == 0);
  std::vector<std::uint32_t> ranges;
  for (std::uint32_t i = 0; i < 64; ++i) ranges.insert(ranges.end(), {20 + 2 * i, 20 + 2 * i});
  CHECK(ports.reserve(kReserve, 2, ranges).status == 0);
  const Reserved reply = ports.reserve(kReserved, 2);
  CHECK(reply.numbers == ranges);
  CHECK(reply.result == 64);
  const Span span = ports.span(2, 0);
  for (std::uint32_t i = 0; i < kSpan; ++i) CHECK(span.ports[i].port_number == 20 + 2 * i);
  CHECK(ports.walk(1, fc(2, 8), kNone, kNone).port_number == 34);
}

TEST_CASE_FIXTURE(Director, "Numbers and addresses are bound, and never twice") {
  CHECK(ports.set_number(1, kAutoCreated, 241) == 0x40850050);
  CHECK(ports.set_number(1, kChannel12, 3) == code(FcdStatus::kPortNumberNotReserved));
  CHECK(ports.set_number(1, fc(1, 1), 1) == code(FcdStatus::kPortNumberTaken));
  CHECK(ports.set_number(1, kChannel12, 241) == 0);
  CHECK(ports.set_number(3, kChannel12, 241) == 0);
  CHECK(ports.set_number(3, kChannel12, 242) == code(FcdStatus::kPortNumberNotBound));
  CHECK(ficon_cmi_vsan_portnum_intf(ports.handle(), 3, 20, 241, 0, kPortWait) == 0);
  const auto not_bound = static_cast<std::int32_t>(code(FcdStatus::kPortNumberNotBound));
  CHECK(ficon_cmi_vsan_portnum_intf(ports.handle(), 3, 20, 242, 0, kPortWait) == not_bound);
  const auto logical = ports.span(0, 0, true).ports;
  CHECK(logical[1].port_number == 241);
  CHECK(logical[1].state ==
        5);  // the port manager does not see it up, and it is not towards devices
  CHECK(ports.numbers(241, 241)[0].if_index == kChannel12);

  CHECK(ports.call(ficon_cmi_set_pa_if, std::uint16_t{0x21}, kChannel12) ==
        code(FcdStatus::kPortNumberHasAddress));
  CHECK(ports.call(ficon_cmi_set_pa_if, std::uint16_t{0xf1}, if_index_t{0}) == 0);
  CHECK(ports.call(ficon_cmi_set_pa_if, std::uint16_t{0x21}, kChannel12) == 0);
  CHECK(ports.walk(1, 0, kNone, 0x21).if_index == kChannel12);
  CHECK(ports.call(ficon_cmi_set_pa_if, std::uint16_t{0xfe}, kChannel12) ==
        code(FcdStatus::kControlUnitPort));
  CHECK(ports.call(ficon_cmi_set_pa_pn, std::uint16_t{0x22}, std::uint16_t{254}) ==
        code(FcdStatus::kControlUnitPort));
  CHECK(ports.set_number(2, kChannel12, 241) == 0);
  CHECK(ports.call(ficon_cmi_set_pa_if, std::uint16_t{0x30}, kChannel12) ==
        code(FcdStatus::kPortWithoutNumber));
}

TEST_CASE_FIXTURE(Director, "The default prohibit state is read back, and only 0 and 1 are any") {
  std::uint32_t value = 0x77;
  CHECK(ports.call(ficon_cmi_get_port_default_prohibit, &value) == 0);
  CHECK(value == 0);
  REQUIRE(ports.call(ficon_cmi_set_port_default_prohibit, 1U) == 0);
  CHECK(ports.call(ficon_cmi_set_port_default_prohibit, 2U) ==
        code(FcdStatus::kBadProhibitSetting));
  CHECK(ports.call(ficon_cmi_get_port_default_prohibit, &value) == 0);
  CHECK(value == 1);
}

TEST_CASE_FIXTURE(Director, "acl-not-fcid is set, downgraded, and a downgrade twice is done") {
  std::uint32_t value = 0x77;
  CHECK(ports.call(ficon_cmi_set_port_prohibit_acl_not_fcid, 1U) == 0);
  CHECK(ports.call(ficon_cmi_get_port_prohibit_acl_not_fcid, &value) == 0);
  CHECK(value == 1);
  CHECK(ports.call(ficon_cmi_set_acl_type_downgrade) == 0);
  CHECK(newest_change() == std::pair<int, std::string>{13, "acl not fcid: 0"});
  CHECK(ports.call(ficon_cmi_set_acl_type_downgrade) == 0);
  CHECK(ports.call(ficon_cmi_get_port_prohibit_acl_not_fcid, &value) == 0);
  CHECK(value == 0);
}

TEST_CASE_FIXTURE(Director, "Access lists of new files name ports with an FCID, or all of them") {
  REQUIRE(ports.call(ficon_cmi_set_ficon_state, 10U, std::uint8_t{1}) == 0);
  REQUIRE(ports.call(ficon_cmi_set_pa_pn, std::uint16_t{0x03}, kNone) == 0);
  CHECK(prohibited_in_new("OPEN") == Masks{});
  REQUIRE(ports.call(ficon_cmi_set_port_default_prohibit, 1U) == 0);
  const Masks by_fcid = prohibited_in_new("FCID");
  REQUIRE(ports.call(ficon_cmi_set_port_prohibit_acl_not_fcid, 1U) == 0);
  const Masks by_port = prohibited_in_new("PORT");
  REQUIRE(ports.call(ficon_cmi_set_acl_type_downgrade) == 0);
  CHECK(prohibited_in_new("DOWN") == by_fcid);

  // Of 00 to 0f, 03 has no port, and the port of 0f is of VSAN 10.
  CHECK(by_fcid[0x00] == std::array<std::uint8_t, 32>{0x6f, 0xfe});
  CHECK(by_fcid[0x0e] == std::array<std::uint8_t, 32>{0xef, 0xfc});
  for (const std::size_t address : {0x03U, 0x0fU, 0x10U, 0xf0U, 0xfdU}) {
    CHECK(by_fcid[address] == std::array<std::uint8_t, 32>{});
  }
  std::array<std::uint8_t, 32> all_but_10;
  all_but_10.fill(0xff);
  all_but_10[0x10 / 8] = 0x7f;
  all_but_10[31] = 0xfc;  // fe and ff are no ports to prohibit
  CHECK(by_port[0x10] == all_but_10);

  // What is there stays as it is, and what was set holds, also for FICON that is enabled anew.
  REQUIRE(ports.call(ficon_cmi_set_port_prohibit_acl_not_fcid, 1U) == 0);
  kill_and_start();
  const FileClient again(socket());
  CHECK(again.masks("OPEN") == Masks{});
  CHECK(again.masks("FCID") == by_fcid);
  CHECK(again.masks("PORT") == by_port);
  CHECK(again.masks("") == Masks{});
  REQUIRE(again.call(ficon_cmi_set_ficon_state, std::uint8_t{0}) == 0);
  REQUIRE(again.enable());
  CHECK(again.masks("") == by_port);
  REQUIRE(PortClient(socket()).call(ficon_cmi_set_acl_type_downgrade) == 0);
  REQUIRE(again.call(ficon_cmi_set_ficon_state, std::uint8_t{0}) == 0);
  kill_and_start();
  const FileClient downgraded(socket());
  REQUIRE(downgraded.enable());
  CHECK(downgraded.masks("") == by_fcid);
  CHECK(downgraded.masks("IPL") == by_fcid);
}

TEST_CASE_FIXTURE(Director, "What was acknowledged outlives a kill") {
  REQUIRE(ports.reserve(kRelease, 2).status == 0);
  REQUIRE(ports.reserve(kReserve, 2, {100, 105, 90, 91}).status == 0);
  REQUIRE(ports.set_number(2, fc(1, 8), 7) == 0);
  REQUIRE(ports.set_number(1, kChannel12, 243) == 0);
  REQUIRE(ports.call(ficon_cmi_set_pa_pn, std::uint16_t{0xf3}, kNone) == 0);
  REQUIRE(ports.call(ficon_cmi_set_pa_if, std::uint16_t{0x44}, kChannel12) == 0);
  REQUIRE(swap(2, 101) == 0);
  REQUIRE(ports.call(ficon_cmi_set_port_default_prohibit, 1U) == 0);
  REQUIRE(ports.call(ficon_cmi_set_port_prohibit_acl_not_fcid, 1U) == 0);
  const auto before = ports.interfaces_by_address(255);
  kill_and_start();

  const PortClient again(socket());
  CHECK(again.interfaces_by_address(255) == before);
  CHECK(before[0x02] == fc(2, 2));
  CHECK(before[0x44] == kChannel12);
  CHECK(again.reserve(kReserved, 2).numbers == std::vector<std::uint32_t>{90, 91, 100, 105});
  CHECK(again.reserve(kReservedLogical, 0).numbers == std::vector<std::uint32_t>{240, 249});
  const Span module = again.span(2, 0);
  CHECK(module.ports[0].port_number == 100);  // in the order in which they were reserved
  CHECK(module.ports[6].port_number == 90);
  CHECK(again.span(1, 0).ports[7].port_number == 0xff);
  std::uint32_t value = 0;
  CHECK(again.call(ficon_cmi_get_port_default_prohibit, &value) == 0);
  CHECK(value == 1);
  CHECK(again.call(ficon_cmi_get_port_prohibit_acl_not_fcid, &value) == 0);
  CHECK(value == 1);
}
