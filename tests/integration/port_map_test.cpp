/** The port map between processes: read whole, read while it changes, walked and asked by FCID. */
#include <doctest/doctest.h>
#include <platform/mts.h>
#include <platform/port_manager.h>

#include <set>

#include "chassis_daemon.h"
#include "port_client.h"

using namespace ficon;
using namespace ficon::test;

namespace {

constexpr std::uint32_t kExact = 1;
constexpr std::uint32_t kNext = 2;

constexpr const char* kSmall = R"toml(
name = "small"
software_version = "7.6(5)"
model = "M1"
slots = 3
[[module]]
slot = 1
type = "48-port"
ports = 48
vsan = 20
condition = "up"
[[module]]
slot = 3
type = "4-port"
ports = 4
vsan = 20
mode = "TE"
condition = "up"
trunk_vsans = [20]
[[port_channel]]
number = 12
mode = "TE"
condition = "up"
trunk_vsans = [20]
)toml";

struct Small : ChassisDaemon {
  Small() : ChassisDaemon(kSmall) {
    REQUIRE(ports.call(ficon_cmi_set_ficon_state, 20U, std::uint8_t{1}) == 0);
  }
  PortClient ports{socket()};
};

constexpr if_index_t kChannel256 = 0x04000100;

/** Sixteen modules of 64 ports towards devices, 256 port channels towards switches. */
std::string largest() {
  std::string text = "name = \"largest\"\nslots = 16\nficon_ports = 1280\n";
  for (int slot = 1; slot <= 16; ++slot) {
    text += "[[module]]\nslot = " + std::to_string(slot) +
            "\nports = 64\nvsan = 20\ncondition = \"up\"\n";
  }
  for (int number = 1; number <= 256; ++number) {
    text += "[[port_channel]]\nnumber = " + std::to_string(number) +
            "\nmode = \"TE\"\ncondition = \"up\"\n";
  }
  return text;
}

/** Number 254 is the control unit port's and 512 is none: their positions stay without. */
bool has_number(std::uint32_t position) {
  return position != 254 && position != 512;
}

struct Unnumbered : ChassisDaemon {
  Unnumbered() : ChassisDaemon(largest()) {}
  PortClient ports{socket()};
};

/** Each position gets the number of its own value where there is one. */
struct Largest : Unnumbered {
  Largest() {
    REQUIRE(ports.reserve(5, 0).status == 0);
    for (std::uint32_t module = 1; module <= 16; ++module) {
      REQUIRE(ports.reserve(2, module).status == 0);
    }
    for (std::uint32_t module = 1; module <= 16; ++module) {
      const std::uint32_t first = (module - 1) * 64;
      std::vector<std::uint32_t> numbers{first, first + 63};
      if (module == 4) numbers = {192, 253, 255, 255};
      if (module == 9) numbers = {513, 575};
      REQUIRE(ports.reserve(1, module, numbers).status == 0);
    }
    REQUIRE(ports.reserve(4, 0, {1024, 1279}).status == 0);
    REQUIRE(ports.set_number(1, kChannel256, 1279) == 0);
  }
};

/** The numbers that a reserved block hands to its positions, in order. */
std::vector<std::uint32_t> expected_numbers(std::uint32_t first, std::uint32_t last) {
  std::vector<std::uint32_t> numbers;
  for (std::uint32_t position = first; position <= last; ++position) {
    if (has_number(position)) numbers.push_back(position);
  }
  numbers.resize(last - first + 1, kNone);
  return numbers;
}

/** Reads a block of positions in spans; checks what every entry must have. */
void check_block(const PortClient& ports, std::uint32_t module, bool logical, std::uint32_t first,
                 std::uint32_t size) {
  const auto numbers = expected_numbers(first, first + size - 1);
  for (std::uint32_t start = 0; start < size; start += kSpan) {
    const Span span = ports.span(module, start, logical);
    REQUIRE(span.status == 0);
    REQUIRE(span.ports.size() == std::min(kSpan, size - start));
    for (std::uint32_t i = 0; i < span.ports.size(); ++i) {
      const auto& port = span.ports[i];
      const std::uint32_t number = numbers[start + i];
      const bool numbered = number != kNone;
      REQUIRE(port.port_number == (numbered ? number & 0xff : 0xff));
      REQUIRE(port.port_address == (numbered && number < 254 ? number : 0xff));
      if (logical) continue;  // their interfaces are found by the low byte of the number
      REQUIRE(ntoh_if_index(port.if_index) == fc(module, start + i + 1));
      REQUIRE(port.state == 4);
    }
  }
}

/** Swaps ports 0 and 17 and changes the conditions of ports 2 to 9, until it is killed. */
bool keep_changing(const std::string& socket) {
  const PortClient ports(socket);
  Client port_manager(socket);
  for (std::uint32_t round = 0;; ++round) {
    ficon_cmi_swap_reply_t* record = nullptr;
    if (ports.call(ficon_cmi_swap_port, 0U, 17U, &record) != 0) return false;
    mtrack_free(record);
    for (std::uint32_t port = 3; port <= 10; ++port) {
      if (!set_condition(port_manager, fc(1, port), (round + port) % 4)) return false;
    }
  }
}

struct FcidAnswer {
  std::uint32_t status;
  if_index_t if_index;
  std::uint16_t port_number;
  std::uint16_t port_address;
  std::uint32_t fcid;
  std::uint8_t state;
};

FcidAnswer ask_fcid(const PortClient& ports, std::uint32_t type, std::uint32_t fcid,
                    if_index_t if_index, std::uint16_t number, std::uint16_t address) {
  mts_msg_ref_t request{};
  REQUIRE(ficon_send_get_portmap_fcid_nonblock(ports.handle(), "TEST", "PORTS", type, 0, fcid,
                                               if_index, number, address, &request) == 0);
  const mts_recv_opts_t options{{1, 0, kPortWait, mts_rr_token_get(&request)}};
  mts_drop(ports.handle(), &request);
  mts_msg_ref_t reply{};
  REQUIRE(ficon_cmi_mts_recv(ports.handle(), &reply, &options) == 0);
  FcidAnswer answer{};
  answer.status = ficon_parse_get_portmap_fcid(&reply, &answer.if_index, &answer.port_number,
                                               &answer.port_address, &answer.fcid, &answer.state);
  mts_drop(ports.handle(), &reply);
  return answer;
}

}  // namespace

TEST_CASE_FIXTURE(Small, "A map read while ports change is never torn and never short") {
  Process changer([&] { return keep_changing(socket()); });
  std::set<std::uint32_t> states;
  std::set<std::uint32_t> addresses_of_0;
  for (int round = 0; round < 2000; ++round) {
    const Span span = ports.span(1, 0);
    REQUIRE(span.status == 0);
    REQUIRE(span.ports.size() == kSpan);
    for (std::uint32_t i = 0; i < kSpan; ++i) {
      REQUIRE(ntoh_if_index(span.ports[i].if_index) == fc(1, i + 1));
      REQUIRE(span.ports[i].port_number == i);
      const bool changes = i >= 2 && i <= 9;
      if (changes) states.insert(span.ports[i].state);
      if (!changes) REQUIRE(span.ports[i].state == 4);
      if (i != 0 && i != 17) REQUIRE(span.ports[i].port_address == i);
    }
    const std::uint32_t of_0 = span.ports[0].port_address;
    addresses_of_0.insert(of_0);
    REQUIRE((of_0 == 0 || of_0 == 17));
    REQUIRE(span.ports[17].port_address == 17 - of_0);
    if (round > 200 && states.size() == 4 && addresses_of_0.size() == 2) break;
  }
  CHECK(states == std::set<std::uint32_t>{1, 2, 3, 4});
  CHECK(addresses_of_0.size() == 2);  // it did change meanwhile
  CHECK(changer.running());
}

TEST_CASE_FIXTURE(Small,
                  "The description of the chassis reaches ports, version and identification") {
  CHECK(ficon_cmi_fc_port_in_mod(ports.handle(), 1) == 48);
  std::array<std::uint8_t, 4> version{};
  CHECK(ficon_cmi_get_sw_version(0, version.data(), 4) == 0);
  CHECK(version == std::array<std::uint8_t, 4>{7, 6, 5, 0});
  CHECK(ficon_cmi_fc_port_in_mod(ports.handle(), 2) == 0);
  CHECK(ficon_cmi_fc_port_in_mod(ports.handle(), 3) == 4);
  CHECK(ports.span(2, 0).status == 19);  // an empty slot
  const Span module = ports.span(3, 0);
  REQUIRE(module.status == 0);
  CHECK(module.ports[0].state == 0);
  CHECK(ntoh_if_index(module.ports[3].if_index) == fc(3, 4));
  CHECK(module.ports[4].if_index == 0);
  CHECK(module.ports[4].state == 5);
}

TEST_CASE_FIXTURE(Largest, "A chassis of 1280 ports is read whole, span by span") {
  for (std::uint32_t module = 1; module <= 16; ++module) {
    check_block(ports, module, false, (module - 1) * 64, 64);
  }
  check_block(ports, 0, true, 1024, 256);
  for (std::uint32_t first = 0; first < 1280; first += 256) {
    const auto map = ports.numbers(first, first + 255);
    for (std::uint32_t i = 0; i < 256; ++i) {
      const std::uint32_t number = first + i;
      const bool addressed = number < 254;
      const std::uint32_t none = i == 0 ? 0 : 0xff;  // the library clears the array's begin
      REQUIRE(map[i].port_address == (addressed ? number : none));
      REQUIRE(map[i].if_index == (addressed ? fc(number / 64 + 1, number % 64 + 1) : 0));
      REQUIRE(map[i].state == (addressed ? 4 : 5));
    }
  }
}

TEST_CASE_FIXTURE(Largest, "A logical port is in the map by number once it has an address") {
  REQUIRE(ports.call(ficon_cmi_set_pa_pn, std::uint16_t{0x21}, kNone) == 0);
  REQUIRE(ports.call(ficon_cmi_set_pa_pn, std::uint16_t{0x21}, std::uint16_t{1279}) == 0);
  const auto map = ports.numbers(1278, 1279);
  CHECK(map[0].if_index == 0);
  CHECK(map[1].if_index == kChannel256);
  CHECK(map[1].port_address == 0x21);
  CHECK(map[1].state == 0);
  CHECK(ports.numbers(0x20, 0x21)[1].port_address == 0xff);
}

TEST_CASE_FIXTURE(Unnumbered,
                  "The port manager answers 250 and 251 ranges, and says when one lacks") {
  for (const std::uint32_t n : {250U, 251U, 1024U}) {
    std::vector<ficon_cmi_ifindex_rng_t> ranges(n);
    for (std::uint32_t i = 0; i < n; ++i) {
      const if_index_t if_index = fc(i / 64 + 1, i % 64 + 1);
      ranges[i] = {if_index, if_index};
    }
    std::uint32_t count = 0;
    pm_cmi_port_config_t* records = nullptr;
    REQUIRE(ficon_pm_cmi_get_port_config(ports.handle(), 1, n, ranges.data(), &count, &records,
                                         kPortWait) == 0);
    REQUIRE(count == n);
    for (std::uint32_t i = 0; i < n; ++i)
      REQUIRE(if_index_t{records[i].if_index} == if_index_t{ranges[i].first_if});
    mtrack_free(records);

    ranges[n - 1] = {fc(16, 65), fc(16, 65)};
    records = nullptr;
    CHECK(ficon_pm_cmi_get_port_config(ports.handle(), 1, n, ranges.data(), &count, &records,
                                       kPortWait) == 0x40850000);
    mtrack_free(records);
  }
}

TEST_CASE_FIXTURE(Small,
                  "A port is found by each of its names, and by its FCID at the other node") {
  REQUIRE(ports.call(ficon_cmi_set_fcid_last_byte, 20U, std::uint8_t{0x1f}) == 0);
  for (const Keys& found :
       {ports.walk(kExact, fc(1, 6), kNone, kNone), ports.walk(kExact, 0, 5, kNone),
        ports.walk(kExact, 0, kNone, 5), ports.walk(kExact, fc(1, 6), 5, 5)}) {
    CHECK(found.status == 0);
    CHECK(found.if_index == fc(1, 6));
    CHECK(found.port_number == 5);
    CHECK(found.port_address == 5);
  }
  CHECK(ports.walk(kExact, fc(1, 6), 6, kNone).status == code(FcdStatus::kNoSuchPort));
  for (const FcidAnswer& answer :
       {ask_fcid(ports, kExact, 0x01051f, 0, kNone, kNone), ask_fcid(ports, kExact, 0, 0, kNone, 5),
        ask_fcid(ports, kExact, 0, fc(1, 6), kNone, kNone),
        ask_fcid(ports, kNext, 0, 0, 4, kNone)}) {
    CHECK(answer.status == 0);
    CHECK(answer.if_index == fc(1, 6));
    CHECK(answer.port_number == 5);
    CHECK(answer.port_address == 5);
    CHECK(answer.fcid == 0x01051f);
    CHECK(answer.state == 4);
  }
  CHECK(ask_fcid(ports, kExact, 0x010500, 0, kNone, kNone).status == code(FcdStatus::kNoSuchPort));
  CHECK(ask_fcid(ports, kNext, 0, 0, 249, kNone).status == code(FcdStatus::kNoPortInRange));
}

TEST_CASE_FIXTURE(Small,
                  "Walks: every reserved number in one mode, those with a port in the other") {
  REQUIRE(ports.set_number(1, 0x0400000c, 243) == 0);
  std::vector<std::uint32_t> reserved;
  std::vector<std::uint32_t> installed;
  for (std::uint32_t number = 0; number < 52; ++number) reserved.push_back(number);
  installed = reserved;
  for (std::uint32_t number = 240; number < 250; ++number) reserved.push_back(number);
  installed.push_back(243);
  for (const std::uint32_t mode : {1U, 2U}) {
    REQUIRE(ports.call(ficon_cmi_set_getnext_type, mode) == 0);
    std::vector<std::uint32_t> walked;
    Keys keys = ports.walk(kNext, 0, kNone, kNone);
    while (keys.status == 0 && walked.size() < 300) {
      walked.push_back(keys.port_number);
      keys = ports.walk(kNext, 0, keys.port_number, kNone);
    }
    CHECK(keys.status == code(FcdStatus::kNoPortInRange));
    CHECK(walked == (mode == 1 ? reserved : installed));
  }
}
