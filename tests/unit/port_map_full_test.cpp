/** The port map of any range of port numbers, and the port manager asked in batches. */
#include <doctest/doctest.h>

#include "unit/port_map_world.h"

using namespace ficon::test;

namespace {

constexpr std::uint8_t kOld = 0xee;

struct Entries {
  explicit Entries(std::size_t count) : bytes(count * 6, kOld) {}
  Bytes bytes;

  ficon_cmi_portmap_full_entry_t* data() {
    return reinterpret_cast<ficon_cmi_portmap_full_entry_t*>(bytes.data());
  }
  std::uint8_t state(std::size_t i) const { return bytes[i * 6]; }
  std::uint8_t address(std::size_t i) const { return bytes[i * 6 + 1]; }
  std::uint32_t interface(std::size_t i) const { return read_host32(bytes, i * 6 + 2); }
};

std::uint32_t get(PortMapWorld& world, std::uint32_t first, std::uint32_t last, Entries& entries) {
  return ficon_cmi_get_portmap_full(world.platform.handle(), "VSH", "UNKNOWN", 5, first, last,
                                    entries.data());
}

/** The map of port addresses to port numbers; rows not named hold 0x0fff, no port number here. */
Bytes address_map(std::uint32_t rows, const std::map<std::uint32_t, std::uint16_t>& named) {
  Record map(rows * 2);
  for (std::uint32_t row = 0; row < rows; ++row) map.be16(row * 2, 0x0fff);
  for (const auto& [row, port_number] : named) map.be16(row * 2, port_number);
  return map;
}

}  // namespace

TEST_CASE("full map: own address first, else the lowest one, else none") {
  PortMapWorld world(299);
  world.platform.expect_send(7856, golden("port_map_full.hex"))
      .reply(tlvs()
                 .add(26, address_map(300, {{3, 2},
                                            {4, 4},
                                            {5, 2},
                                            {7, 2},
                                            {9, 7},
                                            {8, 7},
                                            {2, 4},
                                            {270, 6},
                                            {0, 0x8003}}))
                 .add(27, world.interface_map(
                              {{2, 0x11223344}, {3, 0x03}, {4, 0x44}, {6, 0x66}, {7, 0x77}}))
                 .add(13, map_header()));
  Entries entries(7);
  CHECK(get(world, 2, 8, entries) == 0);
  CHECK(entries.address(0) == 3);
  CHECK(entries.interface(0) == 0x11223344);  // host order, unlike the entry form
  CHECK(entries.address(1) == kOld);          // port number 3 has no address
  CHECK(entries.interface(1) == 0xeeeeeeee);
  CHECK(entries.address(2) == 4);  // its own, though address 2 holds it too
  CHECK(entries.address(3) == kOld);
  CHECK(entries.address(4) == 270 % 256);
  CHECK(entries.address(5) == 8);
  CHECK(world.asked == std::vector<std::uint32_t>{0x11223344, 0x44, 0x66, 0x77});
  for (std::size_t i = 0; i < 7; ++i) CHECK(entries.state(i) == 5);
  CHECK(world.platform.finished());
}

TEST_CASE("full map: a port counts when its look-up succeeds with an interface") {
  PortMapWorld world(299);
  world.platform.expect_send(7856).reply(
      tlvs()
          .add(26, address_map(300, {{10, 10}, {11, 11}, {12, 12}}))
          .add(27, world.interface_map({{10, kRefusedRow}, {12, 0x1234}})));
  world.manager = [](std::uint32_t) { return PortOfManager{2, 1}; };
  Entries entries(3);
  CHECK(get(world, 10, 12, entries) == 0);
  CHECK(entries.interface(0) == read_host32({0, 0, kOld, kOld}, 0));
  CHECK(entries.interface(1) == 0);
  CHECK(entries.interface(2) == 0x1234);
  CHECK(entries.address(0) == 10);
  CHECK(entries.state(2) == 0);
  CHECK(world.asked == std::vector<std::uint32_t>{0x1234});
  CHECK(world.platform.finished());
}

TEST_CASE("full map: ports beyond the largest number keep all but their state") {
  for (const std::uint32_t last : {10U, 12U}) {
    PortMapWorld world(9);
    world.platform.expect_send(7856).reply(
        tlvs().add(26, address_map(10, {{9, 9}})).add(27, world.interface_map({{9, 0x99}})));
    Entries entries(4);
    CHECK(get(world, 9, last, entries) == 0);
    CHECK(entries.interface(0) == 0x99);
    for (std::size_t i = 1; i <= last - 9; ++i) {
      CHECK(entries.state(i) == 5);
      CHECK(entries.address(i) == kOld);
      CHECK(entries.interface(i) == 0xeeeeeeee);
    }
    CHECK(world.asked == std::vector<std::uint32_t>{0x99});
    CHECK(world.platform.finished());
  }
}

TEST_CASE("full map: the first of two ports with one interface gets its state") {
  PortMapWorld world(9);
  world.platform.expect_send(7856).reply(tlvs()
                                             .add(26, address_map(10, {{3, 3}, {5, 5}}))
                                             .add(27, world.interface_map({{3, 77}, {5, 77}})));
  world.manager = [](std::uint32_t) { return PortOfManager{2, 1}; };
  Entries entries(10);
  CHECK(get(world, 0, 9, entries) == 0);
  CHECK(entries.state(3) == 0);
  CHECK(entries.state(5) == 5);
  CHECK(world.platform.finished());
}

TEST_CASE("full map: a map that does not come reads as zeros") {
  PortMapWorld world(9);
  world.platform.expect_send(7856).reply(
      tlvs().add(27, world.interface_map({{0, 0x10}, {1, 0x11}})));
  Entries entries(2);
  CHECK(get(world, 0, 1, entries) == 0);
  CHECK(entries.interface(0) == 0x10);
  CHECK(entries.address(0) == 0);
  CHECK(entries.interface(1) == 0xeeeeeeee);
  CHECK(world.platform.finished());
}

TEST_CASE("full map: without the map of interfaces no port has one") {
  PortMapWorld other(9);
  other.platform.expect_send(7856).reply(tlvs().add(26, address_map(10, {{1, 1}})));
  Entries none(2);
  CHECK(get(other, 0, 1, none) == 0);
  CHECK(none.address(1) == 1);
  CHECK(none.interface(1) == 0);
  CHECK(other.platform.count("pm_cmi_get_port_config") == 0);
  CHECK(other.platform.finished());
}

TEST_CASE("full map: first above last asks nothing") {
  PortMapWorld world;
  Entries entries(1);
  CHECK(get(world, 5, 4, entries) == 0);
  CHECK(difference(Bytes{0, 0, 0, 0, kOld, kOld}, entries.bytes) == "");
  CHECK(world.platform.order() == "");
}

TEST_CASE("full map: a refused or malformed answer") {
  const auto failure = [](const Bytes& reply, const std::string& traced) {
    PortMapWorld world(9);
    world.platform.expect_send(7856).reply(reply);
    Entries entries(3);
    const auto status = get(world, 0, 2, entries);
    CHECK(world.platform.history() ==
          (traced.empty() ? std::vector<std::string>{} : std::vector<std::string>{traced}));
    CHECK(difference(Bytes(18, kOld), entries.bytes) == "");
    CHECK(world.platform.finished());
    return status;
  };
  CHECK(failure(tlvs(), "CMI_ERROR: invalid cmi payload: no tlvs present\n") == 0x40850003);
  CHECK(failure(tlvs().add(13, map_header(7)), "CMI_ERROR: status was 7\n") == 7);
  CHECK(failure(tlvs().add(31, zeros(60)), "CMI_ERROR: Unrecognised response for the request\n") ==
        0x40850003);
  CHECK(failure(tlvs().add(26, zeros(19)), "") == 0x40850003);
  CHECK(failure(tlvs().add(27, zeros(44)), "") == 0x40850003);
}

TEST_CASE("full map: device ports are judged by fcd, in host order") {
  PortMapWorld world(9);
  world.manager = [](std::uint32_t) { return PortOfManager{4, 0}; };
  world.platform.expect_send(7856).reply(
      tlvs().add(26, address_map(10, {{3, 3}})).add(27, world.interface_map({{3, 0x11223344}})));
  world.platform.expect_send(7869, golden("interface_state.hex"))
      .reply(tlvs().add(15, interface_row(0x11223344, 0x1f, 10)));
  Entries entries(1);
  CHECK(get(world, 3, 3, entries) == 0);
  CHECK(entries.state(0) == 1);
  CHECK(entries.interface(0) == 0x11223344);
  CHECK(world.platform.finished());
}

TEST_CASE("full map: an answer whose walk breaks stays undropped") {
  PortMapWorld world(9);
  world.manager = [](std::uint32_t) { return PortOfManager{4, 0}; };
  world.platform.expect_send(7856).reply(
      tlvs().add(26, address_map(10, {{3, 3}})).add(27, world.interface_map({{3, 0x11223344}})));
  world.platform.expect_send(7869).reply(tlvs().add_claiming(15, 400, zeros(60)));
  Entries entries(1);
  CHECK(get(world, 3, 3, entries) != 0);
  CHECK_FALSE(world.platform.messages_dropped());
}

TEST_CASE("full map: more device ports than one request holds") {
  PortMapWorld world(499);
  world.manager = [](std::uint32_t) { return PortOfManager{4, 0}; };
  std::map<std::uint32_t, std::uint16_t> addresses;
  std::map<std::uint32_t, std::uint32_t> interfaces;
  for (std::uint16_t port = 0; port < 500; ++port) {
    addresses[port] = port;
    interfaces[port] = 0x01000000U + port;
  }
  world.platform.expect_send(7856).reply(
      tlvs().add(26, address_map(500, addresses)).add(27, world.interface_map(interfaces)));
  Entries entries(500);
  CHECK(get(world, 0, 499, entries) != 0);
  CHECK(world.platform.sent(7869).empty());
  CHECK(world.platform.finished());
}

TEST_CASE("full map: the whole of 1280 ports") {
  PortMapWorld world;
  std::map<std::uint32_t, std::uint16_t> addresses;
  std::map<std::uint32_t, std::uint32_t> interfaces;
  for (std::uint16_t port = 0; port < 1280; ++port) {
    addresses[port] = static_cast<std::uint16_t>(1279 - port);
    interfaces[port] = 0x01000000U + port * 0x1000U;
  }
  world.manager = [](std::uint32_t if_index) {
    return PortOfManager{2, static_cast<std::uint8_t>(if_index >> 12 & 1)};
  };
  world.platform.expect_send(7856).reply(
      tlvs().add(26, address_map(1280, addresses)).add(27, world.interface_map(interfaces)));
  Entries entries(1280);
  CHECK(get(world, 0, 1279, entries) == 0);
  for (std::uint32_t port = 0; port < 1280; ++port) {
    CAPTURE(port);
    CHECK(entries.address(port) == (1279 - port) % 256);
    CHECK(entries.interface(port) == 0x01000000U + port * 0x1000U);
    CHECK(entries.state(port) == (port % 2 == 1 ? 0 : 5));
  }
  CHECK(world.platform.count("pm_cmi_get_port_config") == 6);
  CHECK(world.platform.finished());
}

namespace {

std::vector<ficon_cmi_ifindex_rng_t> ranges(std::uint32_t n) {
  std::vector<ficon_cmi_ifindex_rng_t> list;
  for (std::uint32_t i = 0; i < n; ++i) list.push_back({0x5000 + i, 0x5000 + i});
  return list;
}

}  // namespace

TEST_CASE("port config: batches of 250") {
  for (const std::uint32_t n : {1U, 250U, 251U, 500U, 501U}) {
    PortMapWorld world;
    std::vector<std::uint32_t> batches;
    const auto answer = world.platform.on.pm_cmi_get_port_config;
    world.platform.on.pm_cmi_get_port_config = [&](auto handle, auto kind, auto count,
                                                   auto... rest) {
      batches.push_back(count);
      return answer(handle, kind, count, rest...);
    };
    std::uint32_t count = 77;
    pm_cmi_port_config_t* records = nullptr;
    CHECK(ficon_pm_cmi_get_port_config(world.platform.handle(), 1, n, ranges(n).data(), &count,
                                       &records, 5) == 0);
    CHECK(count == n);
    CHECK(batches.size() == (n + 249) / 250);
    CHECK(batches.back() == (n % 250 == 0 ? 250 : n % 250));
    for (std::uint32_t i = 0; i < n; ++i) CHECK(std::uint32_t{records[i].if_index} == 0x5000 + i);
    mtrack_free(records);
    CHECK(world.platform.finished());
  }
}

TEST_CASE("port config: nothing asked, nothing answered") {
  PortMapWorld world;
  std::uint32_t count = 77;
  auto* records = reinterpret_cast<pm_cmi_port_config_t*>(&world);
  CHECK(ficon_pm_cmi_get_port_config(world.platform.handle(), 1, 0, nullptr, &count, &records, 5) ==
        0);
  CHECK(count == 0);
  CHECK(records == nullptr);
  CHECK(world.platform.order() == "");
}

TEST_CASE("port config: short, failing and overlong answers") {
  struct Case {
    std::uint32_t status, answered, expected, count;
  };
  for (const Case& c : {Case{0, 2, 0x40850000, 2}, Case{0x1234, 2, 0x1234, 0},
                        Case{0xffffffff, 0, 0xffffffff, 0}, Case{0, 9, 0, 3}}) {
    PortMapWorld world;
    world.platform.on.pm_cmi_get_port_config =
        [&](mts_handle_t, std::uint32_t, std::uint32_t, const ficon_cmi_ifindex_rng_t*,
            std::uint32_t* count, pm_cmi_port_config_t** records, std::uint32_t) {
          *count = c.answered;
          *records = handed_out_records(std::vector<Bytes>(c.answered, Bytes(498, 0x5a)));
          return c.status;
        };
    std::uint32_t count = 77;
    pm_cmi_port_config_t* records = nullptr;
    CHECK(ficon_pm_cmi_get_port_config(world.platform.handle(), 1, 3, ranges(3).data(), &count,
                                       &records, 5) == c.expected);
    CHECK(count == c.count);
    REQUIRE(records != nullptr);  // the caller's, on failure too
    CHECK(difference(Bytes(3 * 498, c.expected == 0 ? 0x5a : 0),
                     Bytes(reinterpret_cast<std::uint8_t*>(records),
                           reinterpret_cast<std::uint8_t*>(records) + 3 * 498)) == "");
    mtrack_free(records);
    CHECK(world.platform.finished());
  }
}

TEST_CASE("port config: no memory") {
  PortMapWorld world;
  world.platform.fail_allocation(1);
  std::uint32_t count = 77;
  pm_cmi_port_config_t* records = nullptr;
  CHECK(ficon_pm_cmi_get_port_config(world.platform.handle(), 1, 3, ranges(3).data(), &count,
                                     &records, 5) == 1);
  CHECK(records == nullptr);
  CHECK(count == 0);
  const std::string printed = world.platform.printed();
  CHECK(printed.find("Warning! Malloc Failure in feature/ficon/cmi/tevrak.cpp[") == 0);
  CHECK(printed.find("] for size 1494\n") != std::string::npos);
}
