/** The get-next walk in installed mode where the platform fails: what it returns and releases. */
#include <doctest/doctest.h>

#include "unit/installed_port_world.h"

using namespace ficon::test;

TEST_CASE("installed: an interface whose type is not known ends the walk") {
  InstalledPortWorld world({{51, PlayedInterface{}}});
  CHECK(world.run({info_port(1, 0x50), info_port(2, 51)}) == 0x40880022);
  CHECK(world.taken() == 0);
  CHECK(traced(world.platform)
            .ends_with("CMI_ERROR: failed to get if type for if_index:0x50 (1082654754)\n"));
  CHECK(world.platform.finished());
}

TEST_CASE("installed: the port manager out of reach ends the walk with the transport's error") {
  for (const bool block : {false, true}) {  // a block may come with the failure: it is released
    InstalledPortWorld world({{50, PlayedInterface{}}});
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
  InstalledPortWorld world({{50, PlayedInterface{}}, {51, PlayedInterface{}}});
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
  InstalledPortWorld world({{50, PlayedInterface{}}});
  world.platform.on.pm_cmi_get_port_config = [](auto&&...) { return 0U; };
  CHECK(world.run({info_port(1, 50)}) == 0);
  CHECK(world.taken() == 0);
  CHECK(traced(world.platform).ends_with("CMI_ERROR: pm_cmi_get_port_config failed 0x00000000\n"));
  CHECK(world.platform.finished());
}

TEST_CASE("installed: trunk VSANs or a transceiver that cannot be read end the walk") {
  {
    InstalledPortWorld world({{50, {.trunk_mode = 8}}});
    world.platform.on.pm_cmi_get_trunk_vsan_info = [](auto&&...) { return 0x40880033U; };
    CHECK(world.run({info_port(1, 50)}) == 0x40880033);
    CHECK(world.taken() == 0);
    CHECK(traced(world.platform)
              .ends_with("CMI_ERROR: pm_cmi_get_trunk_vsan_info failed 0x40880033\n"));
    CHECK(world.platform.finished());
  }
  for (const bool block : {false, true}) {  // a block may come with the failure: it is released
    InstalledPortWorld world({{50, PlayedInterface{}}});
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
  InstalledPortWorld world({{50, PlayedInterface{}}});
  world.platform.fail_allocation(2);  // the list, then the port
  CHECK(world.run({info_port(1, 50)}) == 0x40850010);
  CHECK(without_lines(world.platform.printed()) ==
        "Warning! Malloc Failure in feature/ficon/cmi/tevrak.cpp[N] for size 107\n");
  CHECK(world.taken() == 0);
  CHECK(world.platform.finished());
}
