/** The port map of a module or of the logical ports. */
#include <doctest/doctest.h>

#include "unit/port_map_world.h"

using namespace ficon::test;

namespace {

constexpr std::uint8_t kOld = 0xee;  // what the caller's array holds before

struct Entries {
  Bytes bytes = Bytes(36 * 7, kOld);

  ficon_cmi_portmap_entry_t* data() {
    return reinterpret_cast<ficon_cmi_portmap_entry_t*>(bytes.data());
  }
  std::uint8_t state(std::size_t i) const { return bytes[i * 7]; }
  std::uint8_t address(std::size_t i) const { return bytes[i * 7 + 1]; }
  std::uint32_t interface(std::size_t i) const { return read_be32(bytes, i * 7 + 2); }
  std::uint8_t number(std::size_t i) const { return bytes[i * 7 + 6]; }
};

std::uint32_t get(PortMapWorld& world, std::uint32_t module, std::uint32_t start, int logical,
                  Entries& entries, std::uint32_t& count) {
  return ficon_cmi_get_portmap_entry(world.platform.handle(), "VSH", "UNKNOWN", 5, module, start,
                                     logical, entries.data(), &count);
}

/** Rows whose number and address tell which they are. */
Bytes port_rows(std::uint32_t count) {
  Bytes rows;
  for (std::uint32_t i = 0; i < count; ++i) {
    rows = rows + port_row(static_cast<std::uint16_t>(0x40 + i), static_cast<std::uint16_t>(i));
  }
  return rows;
}

Tlvs answer(const Bytes& rows) {
  return tlvs().add(13, map_header()).add(31, rows);
}

std::uint32_t failure(const Bytes& reply, const std::string& traced) {
  PortMapWorld world;
  world.platform.expect_send(7856).reply(reply);
  Entries entries;
  std::uint32_t count = 0;
  const auto status = get(world, 1, 0, 0, entries, count);
  CHECK(world.platform.history() ==
        (traced.empty() ? std::vector<std::string>{} : std::vector<std::string>{traced}));
  CHECK(world.platform.printed() == "");
  CHECK(difference(Bytes(36 * 7, kOld), entries.bytes) == "");
  CHECK(count == 36);
  CHECK(world.platform.finished());
  return status;
}

}  // namespace

TEST_CASE("port map: the request names the span in big-endian port numbers") {
  PortMapWorld world;
  world.platform.expect_send(7856, golden("port_map_entry.hex")).reply(answer(port_rows(36)));
  Entries entries;
  std::uint32_t count = 0;
  CHECK(get(world, 3, 28, 0, entries, count) == 0);
  CHECK(world.platform.finished());
}

TEST_CASE("port map: a span holds at most 36 ports and stays in its block") {
  struct Case {
    std::uint32_t module, start;
    int logical;
    std::uint32_t first, last, count;
  };
  for (const Case& c :
       {Case{1, 0, 0, 0, 35, 36}, Case{1, 28, 0, 28, 63, 36}, Case{1, 29, 0, 29, 63, 35},
        Case{1, 63, 0, 63, 63, 1}, Case{10, 36, 0, 612, 639, 28}, Case{7, 0, 1, 1024, 1059, 36},
        Case{7, 220, 1, 1244, 1279, 36}, Case{7, 221, -1, 1245, 1279, 35},
        Case{0, 255, 1, 1279, 1279, 1}}) {
    CAPTURE(c.start);
    PortMapWorld world;
    world.platform.expect_send(7856).reply(answer(port_rows(c.count)));
    Entries entries;
    std::uint32_t count = 0;
    CHECK(get(world, c.module, c.start, c.logical, entries, count) == 0);
    CHECK(count == c.count);
    const Bytes request = world.platform.sent(7856).at(0);
    CHECK(read_be32(request, 157) == c.first);
    CHECK(read_be32(request, 161) == c.last);
    CHECK(entries.number(c.count - 1) == 0x40 + c.count - 1);
    if (c.count < 36) CHECK(entries.number(c.count) == kOld);
    CHECK(world.platform.finished());
  }
}

TEST_CASE("port map: a start beyond the block is asked for and gives no entries") {
  for (const auto& [start, logical, count_bits] :
       {std::tuple{64U, 0, 0U},
        {70U, 0, 0xfffffffaU},
        {300U, 1, 0xffffffd4U},
        {0x80000041U, 0, 0x7fffffffU},  // so far beyond that the count's sign turns
        {0x80000101U, 1, 0x7fffffffU}}) {
    PortMapWorld world;
    world.platform.expect_send(7856).reply(answer(port_rows(2)));
    Entries entries;
    std::uint32_t count = 0x7777;
    CHECK(get(world, 1, start, logical, entries, count) == 0);
    CHECK(count == count_bits);
    CHECK(difference(Bytes(record(36 * 7).fill(0, 36 * 7, kOld).be32(0, 0)), entries.bytes) == "");
    CHECK(world.asked.empty());
    CHECK(world.platform.finished());
  }
}

TEST_CASE("port map: numbers, addresses and interfaces of a module's ports") {
  PortMapWorld world;
  world.module_ports = 3;
  world.platform.expect_send(7856).reply(
      answer(port_row(0x1234, 512) + port_row(512, 0x0178) + port_rows(34)));
  Entries entries;
  std::uint32_t count = 0;
  CHECK(get(world, 4, 0, 0, entries, count) == 0);
  CHECK(entries.number(0) == 0x34);
  CHECK(entries.address(0) == 0xff);
  CHECK(entries.number(1) == 0xff);
  CHECK(entries.address(1) == 0x78);
  CHECK(entries.interface(2) == physical(4, 2));
  CHECK(world.asked == std::vector<std::uint32_t>{physical(4, 0), physical(4, 1), physical(4, 2)});
  for (std::size_t i = 3; i < 36; ++i) {
    CHECK(entries.state(i) == 5);
    CHECK(entries.interface(i) == 0xeeeeeeee);  // the caller's bytes
  }
  CHECK(world.platform.calls({"pm_get_port_info_brief"}) ==
        std::vector<std::string>{"pm_get_port_info_brief * 1 16 65535 255 255 0 0 *"});
  CHECK(world.platform.finished());
}

TEST_CASE("port map: a port that the chassis refuses is passed over") {
  PortMapWorld world;
  world.platform.expect_send(7856).reply(answer(port_rows(36)));
  world.platform.on.if_index_phy_fc_port_init = [](if_index_t* out, std::uint8_t, std::uint8_t port,
                                                   std::uint32_t) {
    *out = port == 1 ? 0 : 0x01020300U + port;
    return port == 0 ? 0x7777U : 0U;
  };
  Entries entries;
  std::uint32_t count = 0;
  CHECK(get(world, 1, 0, 0, entries, count) == 0);
  // refused: what clearing the array's first four bytes left, in network order like the rest
  CHECK(entries.interface(0) == read_host32({0, 0, kOld, kOld}, 0));
  CHECK(entries.interface(1) == 0);  // an interface of 0 is stored and not asked about
  CHECK(entries.interface(2) == 0x01020302);
  CHECK(entries.state(1) == 5);
  CHECK(world.asked.size() == 34);
  CHECK(world.platform.finished());
}

TEST_CASE("port map: logical ports are looked up by the low byte of their number") {
  PortMapWorld world(127);
  Bytes rows = port_row(0x0107, 1) + port_row(0x0008, 2) + port_row(0x0009, 3) +
               port_row(0x000a, 4) + port_row(0x0080, 5) + port_row(512, 512);
  world.platform.expect_send(7856).reply(
      tlvs()
          .add(27,
               world.interface_map({{0x07, 0x04000001}, {0x08, kRefusedRow}, {0x0a, 0x0a000003}}))
          .add(31, rows + port_rows(30)));
  Entries entries;
  std::uint32_t count = 0;
  CHECK(get(world, 1, 0, 1, entries, count) == 0);
  CHECK(entries.interface(0) == 0x04000001);
  CHECK(entries.interface(1) == 0xeeeeeeee);  // the look-up failed
  CHECK(entries.interface(2) == 0xeeeeeeee);  // no interface
  CHECK(entries.interface(3) == 0x0a000003);
  CHECK(entries.interface(4) == 0xeeeeeeee);  // 0x80 is beyond the largest port number
  CHECK(entries.interface(5) == 0xeeeeeeee);  // so is "none"
  CHECK(world.asked == std::vector<std::uint32_t>{0x04000001, 0x0a000003});
  CHECK(world.platform.count("ficonm_platform_lc_to_slot_b0") == 0);
  CHECK(world.platform.count("pm_get_port_info_brief") == 0);
  CHECK(world.platform.finished());
}

TEST_CASE("port map: without the map of interfaces no logical port has one") {
  PortMapWorld world(127);
  world.platform.expect_send(7856).reply(answer(port_rows(36)));
  Entries entries;
  std::uint32_t count = 0;
  CHECK(get(world, 1, 0, 1, entries, count) == 0);
  CHECK(world.platform.count("ficon_pmap_get_pn_to_phyif") == 36);
  CHECK(entries.interface(1) == 0xeeeeeeee);
  CHECK(world.asked.empty());
  CHECK(world.platform.finished());
}

TEST_CASE("port map: without the port records every number and address reads as zero") {
  PortMapWorld world(127);
  world.platform.expect_send(7856).reply(tlvs().add(27, world.interface_map({{0, 0x04000001}})));
  Entries entries;
  std::uint32_t count = 0;
  CHECK(get(world, 1, 0, 1, entries, count) == 0);
  CHECK(entries.number(35) == 0);
  CHECK(entries.address(35) == 0);
  CHECK(entries.interface(35) == 0x04000001);
  CHECK(world.platform.finished());
}

TEST_CASE("port map: without any interface nobody else is asked") {
  PortMapWorld world;
  world.module_ports = 0;
  world.platform.expect_send(7856).reply(answer(port_rows(36)));
  Entries entries;
  std::uint32_t count = 0;
  CHECK(get(world, 1, 0, 0, entries, count) == 0);
  CHECK(world.platform.count("pm_cmi_get_port_config") == 0);
  CHECK(entries.state(0) == 5);
  CHECK(world.platform.finished());
}

TEST_CASE("port map: a refused or malformed answer") {
  const std::string kNone = "CMI_ERROR: invalid cmi payload: no tlvs present\n";
  CHECK(failure(tlvs(), kNone) == 0x40850003);
  CHECK(failure(tlvs().add(13, map_header(0x1234)).add(31, port_rows(36)),
                "CMI_ERROR: status was 4660\n") == 0x1234);
  CHECK(failure(tlvs().add(13, map_header()).add(26, zeros(2560)),
                "CMI_ERROR: Unrecognised response for the request\n") == 0x40850003);
  CHECK(failure(answer(port_rows(35)), "") == 0x40850003);
  CHECK(failure(answer(port_rows(36) + zeros(1)), "") == 0x40850003);
  CHECK(failure(answer(port_rows(36)).add(27, zeros(1279 * 4)), "") == 0x40850003);
}

TEST_CASE("port map: a walk that fails is traced, in other words in its second pass") {
  // two added TLVs, send, receive, payload, count; then the answer's one TLV, once a pass
  for (const auto& [call, traced] : {std::pair{7, "CMI_ERROR: tlv_next_tlv gave error\n"},
                                     {8, "CMI_ERROR: Next tlv failed for ports.\n"}}) {
    PortMapWorld world;
    world.platform.expect_send(7856).reply(tlvs().add(31, port_rows(36)));
    world.platform.fail_call(call);
    Entries entries;
    std::uint32_t count = 0;
    CHECK(get(world, 1, 0, 0, entries, count) == kInjected);
    CHECK(world.platform.history() == std::vector<std::string>{traced});
    CHECK(difference(Bytes(36 * 7, kOld), entries.bytes) == "");
    CHECK(world.platform.finished());
  }
}

TEST_CASE("port map: the slot's error is the result") {
  PortMapWorld world;
  world.platform.expect_send(7856).reply(answer(port_rows(36)));
  world.platform.on.ficonm_platform_lc_to_slot_b0 = [](std::uint8_t lc, std::uint8_t*) {
    CHECK(lc == 0x2b);
    return 0x1234U;
  };
  Entries entries;
  std::uint32_t count = 0;
  CHECK(get(world, 0x12c, 0, 0, entries, count) == 0x1234);
  CHECK(world.platform.finished());
}

TEST_CASE("port map: more port numbers than an answer can carry") {
  for (const std::uint32_t largest : {16383U, 0x7fffffffU, 0xffffffffU}) {
    PortMapWorld world(largest);
    world.platform.expect_send(7856).reply(answer(port_rows(36)));
    Entries entries;
    std::uint32_t count = 0;
    CHECK(get(world, 1, 0, 1, entries, count) == 0x40850003);
    CHECK(world.platform.finished());
  }
}

TEST_CASE("port map: no memory for the ranges") {
  PortMapWorld world;
  world.module_ports = 0;
  world.platform.expect_send(7856).reply(answer(port_rows(36)));
  world.platform.fail_allocation(2);  // the first is the port manager's answer
  Entries entries;
  std::uint32_t count = 0;
  CHECK(get(world, 1, 0, 0, entries, count) == 0x40850010);
  CHECK(world.platform.printed().find("Malloc Failure in feature/ficon/cmi/tevrak") !=
        std::string::npos);
  CHECK(world.platform.finished());
}

TEST_CASE("port map: interface states are asked for in one request of their own") {
  PortMapWorld world(127);
  world.manager = [](std::uint32_t) { return PortOfManager{32, 0}; };
  Bytes rows = port_row(7, 1);
  for (int i = 0; i < 35; ++i) rows = rows + port_row(8, 2);
  world.platform.expect_send(7856).reply(
      tlvs().add(31, rows).add(27, world.interface_map({{7, 0x11223344}})));
  world.platform.expect_send(7869, golden("interface_state.hex"))
      .reply(tlvs()
                 .add(99, zeros(60))
                 .add(15, interface_row(0x55555555, 0x40, 0))     // not an entry's
                 .add(15, interface_row(0x11223344, 0x40, 0, 1))  // did not succeed
                 .add(15, interface_row(0, 0x40, 0))              // no interface
                 .add(15, interface_row(0x11223344, 0x10, 10)));
  Entries entries;
  std::uint32_t count = 0;
  CHECK(get(world, 1, 0, 1, entries, count) == 0);
  CHECK(entries.state(0) == 1);
  CHECK(entries.interface(0) == 0x11223344);
  CHECK(entries.state(1) == 5);
  CHECK(world.platform.finished());
}

TEST_CASE("port map: every state from mode, flag, interface flags and reason") {
  struct Case {
    std::uint32_t mode;
    std::uint8_t flag, flags, reason;
    bool answered;
  };
  std::vector<Case> cases;
  for (const std::uint32_t mode : {0U, 1U, 2U, 4U, 5U, 8U, 32U, 36U, 0x04000000U}) {
    for (const int flag : {0, 1, 0x80}) {
      cases.push_back({mode, static_cast<std::uint8_t>(flag), 0, 0, false});
      for (int flags = 0; flags < 256; ++flags) {
        for (const int reason : {0, 9, 10, 11, 255}) {
          cases.push_back({mode, static_cast<std::uint8_t>(flag), static_cast<std::uint8_t>(flags),
                           static_cast<std::uint8_t>(reason), true});
        }
      }
      for (int reason = 0; reason < 256; ++reason) {
        cases.push_back(
            {mode, static_cast<std::uint8_t>(flag), 0, static_cast<std::uint8_t>(reason), true});
      }
    }
  }
  const auto expected = [](const Case& c) -> int {
    const bool device = c.mode == 32 || c.mode == 4;
    if (!device) return c.flag != 0 ? 0 : 5;
    if (!c.answered) return c.flag != 0 ? 4 : 5;
    if (c.flags >= 0x40 && c.flags <= 0x5f) return 4;
    if (c.flags % 0x20 >= 0x10) return 1;
    return c.reason == 10 ? 3 : 2;
  };
  for (std::size_t first = 0; first < cases.size(); first += 36) {
    const auto at = [&](std::uint32_t port) -> const Case& {
      return cases[std::min(first + port, cases.size() - 1)];
    };
    PortMapWorld world;
    world.manager = [&](std::uint32_t if_index) {
      const Case& c = at(if_index & 0xff);
      return PortOfManager{c.mode, c.flag};
    };
    Tlvs states = tlvs().add(13, zeros(145));
    bool asks = false;
    for (std::uint32_t port = 0; port < 36; ++port) {
      asks = asks || at(port).mode == 32 || at(port).mode == 4;
      if (at(port).answered && (at(port).mode == 32 || at(port).mode == 4)) {
        states.add(15, interface_row(physical(1, port), at(port).flags, at(port).reason));
      }
    }
    world.platform.expect_send(7856).reply(answer(port_rows(36)));
    if (asks) world.platform.expect_send(7869).reply(states);
    Entries entries;
    std::uint32_t count = 0;
    REQUIRE(get(world, 1, 0, 0, entries, count) == 0);
    for (std::uint32_t port = 0; port < 36; ++port) {
      CAPTURE(at(port).mode);
      CAPTURE(int{at(port).flag});
      CAPTURE(int{at(port).flags});
      CAPTURE(int{at(port).reason});
      CHECK(entries.state(port) == expected(at(port)));
      CHECK(entries.interface(port) == physical(1, port));
    }
    REQUIRE(world.platform.finished());
  }
}

TEST_CASE("port map: an empty answer to the interface states leaves host order") {
  PortMapWorld world;
  world.manager = [](std::uint32_t) { return PortOfManager{4, 1}; };
  world.platform.expect_send(7856).reply(answer(port_rows(36)));
  world.platform.expect_send(7869).reply(tlvs());
  Entries entries;
  std::uint32_t count = 0;
  CHECK(get(world, 1, 0, 0, entries, count) == 0x40850003);
  CHECK(read_host32(entries.bytes, 2) == physical(1, 0));
  CHECK(entries.state(0) == 4);
  CHECK(world.platform.history() ==
        std::vector<std::string>{"CMI_ERROR: invalid cmi payload: no tlvs present\n"});
  CHECK(world.platform.finished());
}

TEST_CASE("port map: an answer whose walk breaks stays undropped") {
  PortMapWorld world;
  world.manager = [](std::uint32_t) { return PortOfManager{4, 1}; };
  world.platform.expect_send(7856).reply(answer(port_rows(36)));
  world.platform.expect_send(7869).reply(
      tlvs().add(15, interface_row(physical(1, 0), 0x10, 0)).add_claiming(15, 400, zeros(60)));
  Entries entries;
  std::uint32_t count = 0;
  CHECK(get(world, 1, 0, 0, entries, count) != 0);
  CHECK(entries.state(0) == 1);
  CHECK(read_host32(entries.bytes, 2) == physical(1, 0));
  CHECK(world.platform.history() ==
        std::vector<std::string>{"CMI_ERROR: tlv_next_tlv gave error\n"});
  CHECK_FALSE(world.platform.messages_dropped());
  CHECK(world.platform.leaks().empty());
}

TEST_CASE("port map: what goes to the history goes to the debug channel too, when it is on") {
  PortMapWorld world;
  world.platform.history_on = false;
  world.platform.debug_on = true;
  world.platform.expect_send(7856).reply(tlvs());
  Entries entries;
  std::uint32_t count = 0;
  CHECK(get(world, 1, 0, 0, entries, count) == 0x40850003);
  CHECK(world.platform.history().empty());
  CHECK(world.platform.debug_output() ==
        std::vector<std::string>{"CMI_ERROR: invalid cmi payload: no tlvs present\n"});
  CHECK(world.platform.lines({"sdwrap_hist_event_subtype_check", "sdwrap_chk_int"}) ==
        "sdwrap_hist_event_subtype_check 0x730000 101\nsdwrap_chk_int 101 0 0 1\n");
}
