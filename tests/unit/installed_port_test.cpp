/** The get-next walk in installed mode: which range is asked for, and which port is handed out. */
#include <doctest/doctest.h>

#include <functional>

#include "unit/port_info_forms.h"

using namespace ficon::test;

namespace {

const PortInfoForm& kByInterface = port_info_forms()[0];
const PortInfoForm& kByPortAddress = port_info_forms()[1];

constexpr std::uint32_t kPhysical = 1, kPortChannel = 4, kTunnel = 10, kOther = 3;

/** What the platform knows of an interface. */
struct Interface {
  std::uint32_t type = kPhysical;
  std::uint32_t port_vsan = kFileVsan;
  std::uint8_t trunk_mode = 0;
  std::uint32_t transceiver = 0;
};

/** A platform with interfaces; its answers to the query are given by the ports of `run`. */
class World {
 public:
  explicit World(std::map<std::uint32_t, Interface> interfaces)
      : interfaces_(std::move(interfaces)) {
    play_converter(platform, ebcdic);
    auto& on = platform.on;
    on.if_index_get_type = [this](if_index_t if_index, std::uint32_t* type) {
      if (interfaces_.count(if_index) == 0) return 0x40880022U;
      *type = interfaces_[if_index].type;
      return 0U;
    };
    on.pm_cmi_get_port_config = [this](mts_handle_t, std::uint32_t kind, std::uint32_t n,
                                       const ficon_cmi_ifindex_rng_t* range, std::uint32_t* count,
                                       pm_cmi_port_config_t** answer, std::uint32_t wait) {
      CHECK(kind == 1);
      CHECK(n == 1);
      CHECK(wait == 5);
      CHECK(if_index_t{range->first_if} == if_index_t{range->last_if});
      const Interface& it = interfaces_[range->first_if];
      *count = 1;
      *answer = static_cast<pm_cmi_port_config_t*>(mtrack_alloc(1, 0, 498));
      const Bytes config = record(498).host32(143, it.port_vsan).u8(157, it.trunk_mode);
      std::memcpy(*answer, config.data(), config.size());
      return 0U;
    };
    on.pm_cmi_get_trunk_vsan_info = [this](mts_handle_t, std::uint32_t kind, if_index_t,
                                           std::uint8_t* first, std::uint8_t* second, std::uint8_t*,
                                           std::uint8_t* fourth, std::uint32_t wait) {
      CHECK(kind == 1);
      CHECK(wait == 5);
      CHECK(Bytes(first, first + 512) == zeros(512));
      std::memset(second, 0xff, 512);
      std::memset(fourth, 0xff, 512);
      std::copy(trunk_vsans.begin(), trunk_vsans.end(), first);
      return 0U;
    };
    on.pm_cmi_get_fcot_info = [this](mts_handle_t, std::uint32_t kind, std::uint32_t n,
                                     const ficon_cmi_ifindex_rng_t* range, std::uint32_t* count,
                                     pm_fcot_info_t** answer, std::uint32_t wait) {
      CHECK(kind == 1);
      CHECK(n == 1);
      CHECK(wait == 5);
      *count = 1;
      *answer = handed_out(std::vector<pm_fcot_info_t>(1));
      (*answer)->status = interfaces_[range->first_if].transceiver;
      return 0U;
    };
  }

  /** Walks on from port address 0x10; fcd answers with these ports, which have a VSAN of theirs. */
  std::uint32_t run(const std::vector<Bytes>& ports, std::uint32_t vsan = kFileVsan) {
    expect_getnext_type(platform, kInstalledType);
    expect_codepage(platform);
    Tlvs reply = tlvs();
    reply.add(13, Record(info_head()).be32(116, vsan));
    for (const Bytes& port : ports) reply.add(0, port);
    platform.expect_send(7856).reply(reply);
    return kByPortAddress.get(platform, 2, 0x10, 0x20, nullptr, out);
  }

  /** The interface of the port that was handed out; 0 for none. Frees it. */
  std::uint32_t taken() {
    CHECK((out.list != nullptr) == (out.count == 1));
    const std::uint32_t if_index = out.list == nullptr ? 0 : std::uint32_t{out.list->if_index};
    mtrack_free(out.list);
    out.list = nullptr;
    return if_index;
  }

  ScriptedPlatform platform;
  PortInfoResult out;
  Bytes trunk_vsans = zeros(512);

 private:
  std::map<std::uint32_t, Interface> interfaces_;
};

/** What a walk over a single port comes to: its interface, 0 for none. */
std::uint32_t taken_of(const Interface& only) {
  World world({{50, only}});
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
  World world({{50, {.type = kOther, .port_vsan = 0}}});
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
  World world({{50, {.transceiver = 0x71}}, {51, Interface{}}});
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
  World world({{50, {.port_vsan = 9}}, {51, Interface{}}});
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
  World world({{50, {.port_vsan = kFileVsan}}, {51, {.port_vsan = 77}}});
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
    World world({{50, {.type = kTunnel, .port_vsan = 0x99, .trunk_mode = 8}}});
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
  const auto released = [](const Interface& interface) {
    World world({{50, interface}});
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
  World world({{51, Interface{}}});
  CHECK(world.run({info_port(1, 0), info_port(2, 51)}) == 0);
  CHECK(world.taken() == 51);
  CHECK(traced(world.platform).find("Loop i 17\nCMI_ERROR: Continuing ifindex is 0\n") !=
        std::string::npos);
  CHECK(world.platform.finished());
}

TEST_CASE("installed: no ports, or none that can be taken, is success without a port") {
  World empty{std::map<std::uint32_t, Interface>{}};
  CHECK(empty.run({}) == 0);
  CHECK(empty.taken() == 0);
  CHECK(empty.out.count == 0);
  CHECK(empty.platform.finished());
}

TEST_CASE("installed: an interface whose type is not known ends the walk") {
  World world({{51, Interface{}}});
  CHECK(world.run({info_port(1, 0x50), info_port(2, 51)}) == 0x40880022);
  CHECK(world.taken() == 0);
  CHECK(traced(world.platform)
            .ends_with("CMI_ERROR: failed to get if type for if_index:0x50 (1082654754)\n"));
  CHECK(world.platform.finished());
}

TEST_CASE("installed: the port manager out of reach ends the walk with the transport's error") {
  for (const bool block : {false, true}) {  // a block may come with the failure: it is released
    World world({{50, Interface{}}});
    expect_getnext_type(world.platform, kInstalledType);
    world.platform.on.pm_cmi_get_port_config = [&](mts_handle_t, auto, auto, auto*, auto*,
                                                   pm_cmi_port_config_t** out, auto) {
      if (block) *out = static_cast<pm_cmi_port_config_t*>(mtrack_alloc(1, 0, 498));
      return 0xffffffffU;
    };
    expect_codepage(world.platform);
    world.platform.expect_send(7856)
        .recv_errors({4})  // the last error number of the transport
        .reply(tlvs().add(13, info_head()).add(0, info_port(1, 50)));
    CHECK(kByPortAddress.get(world.platform, 2, 0x10, 0x20, nullptr, world.out) == 4);
    CHECK(traced(world.platform).ends_with("CMI_ERROR: pm get port config failed 0x00000004\n"));
    CHECK(world.out.list == nullptr);
    CHECK(world.out.count == 0);
    CHECK(world.platform.finished());
  }
}

TEST_CASE("installed: another refusal of the port manager is told, and passes the port over") {
  World world({{50, Interface{}}, {51, Interface{}}});
  const auto healthy = world.platform.on.pm_cmi_get_port_config;
  int calls = 0;
  world.platform.on.pm_cmi_get_port_config =
      [&](mts_handle_t handle, std::uint32_t kind, std::uint32_t n,
          const ficon_cmi_ifindex_rng_t* range, std::uint32_t* count, pm_cmi_port_config_t** out,
          std::uint32_t wait) {
        const std::uint32_t status = healthy(handle, kind, n, range, count, out, wait);
        return ++calls == 1 ? 0x44332211U : status;
      };
  CHECK(world.run({info_port(1, 50), info_port(2, 51)}) == 0);
  CHECK(world.taken() == 51);
  const std::string text = "text of 0x11223344";
  CHECK(world.platform.printed() == "error: " + text + " [0x11223344]\n");
  CHECK(traced(world.platform).find("CMI_ERROR: pm get port config " + text + "[0x11223344]\n") !=
        std::string::npos);
  CHECK(world.platform.finished());
}

TEST_CASE("installed: a config that is not there passes the port over") {
  World world({{50, Interface{}}});
  world.platform.on.pm_cmi_get_port_config = [](auto&&...) { return 0U; };
  CHECK(world.run({info_port(1, 50)}) == 0);
  CHECK(world.taken() == 0);
  CHECK(traced(world.platform).ends_with("CMI_ERROR: pm_cmi_get_port_config failed 0x00000000\n"));
  CHECK(world.platform.finished());
}

TEST_CASE("installed: trunk VSANs or a transceiver that cannot be read end the walk") {
  {
    World world({{50, {.trunk_mode = 8}}});
    world.platform.on.pm_cmi_get_trunk_vsan_info = [](auto&&...) { return 0x40880033U; };
    CHECK(world.run({info_port(1, 50)}) == 0x40880033);
    CHECK(world.taken() == 0);
    CHECK(traced(world.platform)
              .ends_with("CMI_ERROR: pm_cmi_get_trunk_vsan_info failed 0x40880033\n"));
    CHECK(world.platform.finished());
  }
  for (const bool block : {false, true}) {  // a block may come with the failure: it is released
    World world({{50, Interface{}}});
    world.platform.on.pm_cmi_get_fcot_info = [&](mts_handle_t, auto, auto, auto*, auto*,
                                                 pm_fcot_info_t** out, auto) {
      if (block) *out = handed_out(std::vector<pm_fcot_info_t>(1));
      return 0x40880044U;
    };
    CHECK(world.run({info_port(1, 50)}) == 0x40880044);
    CHECK(world.taken() == 0);
    CHECK(traced(world.platform).ends_with("CMI_ERROR: pm_cmi_get_fcot_info failed 0x40880044\n"));
    CHECK(world.platform.finished());
  }
}

TEST_CASE("installed: without memory for the port there is a warning and no port") {
  World world({{50, Interface{}}});
  world.platform.fail_allocation(2);  // the list, then the port
  CHECK(world.run({info_port(1, 50)}) == 0x40850010);
  CHECK(without_lines(world.platform.printed()) ==
        "Warning! Malloc Failure in feature/ficon/cmi/tevrak.cpp[N] for size 107\n");
  CHECK(world.taken() == 0);
  CHECK(world.platform.finished());
}
