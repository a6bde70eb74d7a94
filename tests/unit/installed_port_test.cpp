/** The get-next walk in installed mode: which range is asked for, and which port is handed out. */
#include <doctest/doctest.h>

#include "unit/installed_port_world.h"

using namespace ficon::test;

namespace {

/** What a walk over a single port comes to: its interface, 0 for none. */
std::uint32_t taken_of(const PlayedInterface& only) {
  InstalledPortWorld world({{50, only}});
  CHECK(world.run({info_port(1, 50)}) == 0);
  const auto taken = world.taken();
  CHECK(world.platform.finished());
  return taken;
}

const std::string kTraceHead =
    "CMI_ERROR: Type is INSTALLED && GETNEXT\nCMI_ERROR: Start 17 End 255\n";

}  // namespace

TEST_CASE("installed: a get next asks with a get for all behind the caller's interface") {
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  play_interfaces(platform, {5, 0x01020304, 0x01020305, 0x05060708});
  expect_getnext_type(platform, kInstalledType);
  expect_codepage(platform);
  platform
      .expect_send(7856, golden("port_info_interfaces.hex")
                             .with(8, be32(1), "a get")
                             .with(8 + 137, zeros(4), "no key")
                             .with(157, be32(0x01020305), "the one behind")
                             .with(161, be32(0x05060708), "the last one"))
      .reply(tlvs().add(13, info_head()));
  PortInfoResult out;
  CHECK(kByInterface.get(platform, 2, 0x01020304, 0x99, nullptr, out) == 0);
  CHECK(out.count == 0);
  CHECK(out.list == nullptr);
  CHECK(traced(platform) ==
        "CMI_ERROR: Type is INSTALLED && GETNEXT\n"
        "CMI_ERROR: Start 16909061 End 84281096\n"
        "CMI_ERROR: Entering loop start 16909061 num_ports 0\n");
  CHECK(platform.finished());
}

TEST_CASE("installed: from interface 0 the walk begins with the first port of the first slot") {
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  play_interfaces(platform, {7, 8});
  platform.on.if_index_phy_fc_port_init = [](if_index_t* out, std::uint8_t slot, std::uint8_t port,
                                             std::uint32_t zero) {
    CHECK(*out == 0);
    CHECK(slot + port + zero == 0);
    *out = 7;
    return 0U;
  };
  expect_getnext_type(platform, kInstalledType);
  expect_codepage(platform);
  platform.expect_send(7856).reply(tlvs().add(13, info_head()));
  PortInfoResult out;
  CHECK(kByInterface.get(platform, 2, 0, 0, nullptr, out) == 0);
  CHECK(read_be32(platform.sent(7856).at(0), 157) == 7);
  CHECK(read_be32(platform.sent(7856).at(0), 161) == 8);
  CHECK(platform.finished());
}

TEST_CASE("installed: behind the last interface, and where none can be looked up, is no port") {
  const auto fails = [](const std::function<void(ScriptedPlatform&)>& script, std::uint32_t start) {
    ScriptedPlatform platform;
    script(platform);
    expect_getnext_type(platform, kInstalledType);
    expect_codepage(platform);
    PortInfoResult out;
    CHECK(kByInterface.get(platform, 2, start, 9, nullptr, out) == 0x4085000a);
    CHECK(platform.finished());
  };
  fails([](ScriptedPlatform& p) { play_interfaces(p, {1, 2}); }, 2);
  fails(
      [](ScriptedPlatform& p) {
        play_interfaces(p, {1, 2});
        p.on.ficon_pmap_get_last_if = [](auto) { return 1U; };
      },
      1);
  fails([](ScriptedPlatform& p) { p.on.if_index_phy_fc_port_init = [](auto...) { return 1U; }; },
        0);
}

TEST_CASE("installed: by port address from the next one, or from 0, to 255") {
  for (const auto& [start, first] : {std::pair{0U, 1U}, {0x10U, 0x11U}, {254U, 255U}, {512U, 0U}}) {
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    expect_getnext_type(platform, kInstalledType);
    expect_codepage(platform);
    platform
        .expect_send(7856, golden("port_info_addresses.hex")
                               .with(8, be32(1), "a get")
                               .with(8 + 137, zeros(4), "no key")
                               .with(157, be32(first), "first")
                               .with(161, be32(255), "last"))
        .reply(tlvs().add(13, info_head()));
    PortInfoResult out;
    CHECK(kByPortAddress.get(platform, 2, start, 0x20, nullptr, out) == 0);
    CHECK(platform.finished());
  }
}

TEST_CASE("installed: behind port address 255 is no port") {
  for (const std::uint32_t start : {255U, 256U, 511U, 513U}) {
    ScriptedPlatform platform;
    expect_getnext_type(platform, kInstalledType);
    expect_codepage(platform);
    PortInfoResult out;
    CHECK(kByPortAddress.get(platform, 2, start, 0x20, nullptr, out) == 0x4085000a);
    CHECK(platform.finished());
  }
}

TEST_CASE("installed: VSAN 0 is replaced by the first one, by port address alone") {
  for (const PortInfoForm& form : port_info_forms()) {
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    play_interfaces(platform, {1, 2, 3});
    expect_getnext_type(platform, kInstalledType);
    expect_codepage(platform);
    platform.expect_send(7856).fails(32);
    PortInfoResult out;
    out.vsan = 0;
    out.name = Name("");
    CHECK(form.get(platform, 2, 1, 2, nullptr, out) == 0xffffffff);
    const bool replaced = form.name == "portaddr";
    CHECK(out.vsan == (replaced ? kFileVsan : 0));
    CHECK(read_be32(platform.sent(7856).at(0), 8 + 116) == (replaced ? kFileVsan : 0));
    CHECK(platform.finished());
  }
}

TEST_CASE("installed: other interface types are taken at once, without a question") {
  InstalledPortWorld world({{50, {.type = kOther, .port_vsan = 0}}});
  CHECK(world.run({info_port(1, 50)}) == 0);
  CHECK(world.taken() == 50);
  CHECK(world.platform.count("pm_cmi_get_port_config") == 0);
  CHECK(traced(world.platform) == kTraceHead +
                                      "CMI_ERROR: Entering loop start 17 num_ports 1\n"
                                      "CMI_ERROR: Loop i 17\n");
  CHECK(world.platform.finished());
}

TEST_CASE("installed: a port channel or tunnel of the VSAN needs no transceiver") {
  for (const std::uint32_t type : {kPortChannel, kTunnel}) {
    CHECK(taken_of({.type = type, .transceiver = 7}) == 50);
    CHECK(taken_of({.type = type, .port_vsan = 9}) == 0);
  }
}

TEST_CASE("installed: a physical port of the VSAN needs a transceiver without a fault") {
  CHECK(taken_of({}) == 50);
  CHECK(taken_of({.port_vsan = 9}) == 0);
  InstalledPortWorld world({{50, {.transceiver = 0x71}}, {51, PlayedInterface{}}});
  CHECK(world.run({info_port(1, 50), info_port(2, 51)}) == 0);
  CHECK(world.taken() == 51);
  CHECK(traced(world.platform) == kTraceHead +
                                      "CMI_ERROR: Entering loop start 17 num_ports 2\n"
                                      "CMI_ERROR: Loop i 17\n"
                                      "CMI_ERROR: fcot_status failed 0x00000071\n"
                                      "CMI_ERROR: Loop i 18\n");
  CHECK(world.platform.finished());
}

TEST_CASE("installed: the record handed out is one port, converted, in memory of its own") {
  InstalledPortWorld world({{50, {.port_vsan = 9}}, {51, PlayedInterface{}}});
  CHECK(world.run({info_port(1, 50), info_port(2, 51), info_port(3, 52)}) == 0);
  REQUIRE(world.out.count == 1);
  CHECK(difference(Record(info_port(2, 51)).text(18, "A                       ").u8(42, 0),
                   bytes_of(*world.out.list)) == "");
  CHECK(world.platform.lines({"mtrack_alloc"}).find("type=4 size=321\n") != std::string::npos);
  CHECK(world.platform.lines({"mtrack_alloc"}).find("type=4 size=107\n") != std::string::npos);
  CHECK(world.taken() == 51);
  CHECK(world.platform.finished());
}

TEST_CASE("installed: the VSAN is the one that fcd answered with") {
  InstalledPortWorld world({{50, {.port_vsan = kFileVsan}}, {51, {.port_vsan = 77}}});
  CHECK(world.run({info_port(1, 50), info_port(2, 51)}, 77) == 0);
  CHECK(world.taken() == 51);
  CHECK(world.out.vsan == 77);
}

TEST_CASE("installed: a trunking port belongs where its VSAN's bit is set, from the left") {
  struct Case {
    std::uint32_t vsan;
    std::size_t byte;
    std::uint8_t bits;
    bool taken;
  };
  for (const Case& c : {Case{10, 1, 0x20, true}, Case{10, 1, 0xdf, false}, Case{8, 1, 0x80, true},
                        Case{4095, 511, 0x01, true}, Case{4095, 511, 0xfe, false},
                        Case{4096, 511, 0xff, false}, Case{0xffffffff, 511, 0xff, false}}) {
    CAPTURE(c.vsan);
    // its own VSAN does not count
    InstalledPortWorld world({{50, {.type = kTunnel, .port_vsan = 0x99, .trunk_mode = 8}}});
    world.trunk_vsans[c.byte] = c.bits;
    CHECK(world.run({info_port(1, 50)}, c.vsan) == 0);
    CHECK(world.taken() == (c.taken ? 50 : 0));
    const std::string missing = "CMI_ERROR: vsan not in prt-vsan failed vsan:" +
                                std::to_string(static_cast<std::int32_t>(c.vsan)) +
                                ", 0x00000000\n";
    CHECK(traced(world.platform).ends_with(missing) == !c.taken);
    CHECK(world.platform.finished());
  }
}

TEST_CASE("installed: other trunk modes go by the port's own VSAN") {
  for (const int mode : {0, 7, 9, 0xff}) {
    const auto trunk_mode = static_cast<std::uint8_t>(mode);
    CHECK(taken_of({.trunk_mode = trunk_mode}) == 50);
    CHECK(taken_of({.port_vsan = 9, .trunk_mode = trunk_mode}) == 0);
  }
}

TEST_CASE("installed: a member's config goes back with free, all others with mtrack_free") {
  const auto released = [](const PlayedInterface& interface) {
    InstalledPortWorld world({{50, interface}});
    CHECK(world.run({info_port(1, 50)}) == 0);
    const std::string block = " block=mtrack_alloc module=1 type=0 size=498";
    const auto lines = world.platform.lines({"free", "mtrack_free"});
    const bool plain = ("\n" + lines).find("\nfree" + block) != std::string::npos;
    const bool tracked = lines.find("mtrack_free" + block) != std::string::npos;
    CHECK(plain != tracked);
    world.taken();
    return plain ? "free" : "mtrack_free";
  };
  CHECK(released({}) == std::string("free"));
  CHECK(released({.type = kTunnel}) == std::string("free"));
  CHECK(released({.transceiver = 9}) == std::string("free"));
  CHECK(released({.port_vsan = 9}) == std::string("mtrack_free"));
  CHECK(released({.trunk_mode = 8}) == std::string("mtrack_free"));
}

TEST_CASE("installed: ports without an interface are passed over") {
  InstalledPortWorld world({{51, PlayedInterface{}}});
  CHECK(world.run({info_port(1, 0), info_port(2, 51)}) == 0);
  CHECK(world.taken() == 51);
  CHECK(traced(world.platform).find("Loop i 17\nCMI_ERROR: Continuing ifindex is 0\n") !=
        std::string::npos);
  CHECK(world.platform.finished());
}

TEST_CASE("installed: no ports, or none that can be taken, is success without a port") {
  InstalledPortWorld empty{std::map<std::uint32_t, PlayedInterface>{}};
  CHECK(empty.run({}) == 0);
  CHECK(empty.taken() == 0);
  CHECK(empty.out.count == 0);
  CHECK(empty.platform.finished());
}
