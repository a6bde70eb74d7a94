/** The port manager's client and the walk of the port map, byte for byte. */
#include <doctest/doctest.h>
#include <platform/ficon_base.h>
#include <platform/mts.h>
#include <platform/port_manager.h>

#include <algorithm>
#include <cstdlib>
#include <thread>

#include "chassis/current_chassis.h"
#include "fake_daemon.h"

using namespace ficon::test;

namespace {

/** Runs `ask(handle)` while the daemon answers its one request; the request from its SAP on. */
template <class Ask>
Bytes answered(const Bytes& payload, Ask ask) {
  FakeDaemon daemon;
  daemon.listen();
  Bytes request;
  std::thread answerer([&] {
    daemon.accept();
    request = daemon.receive();
    daemon.reply(static_cast<std::uint32_t>(request.at(8) << 24 | request.at(9) << 16 |
                                            request.at(10) << 8 | request.at(11)),
                 payload);
  });
  Handle handle(daemon.endpoint());
  ask(mts_handle_t{handle});
  answerer.join();
  return Bytes(request.begin() + 16, request.begin() + 24) +
         Bytes(request.begin() + 32, request.end());
}

const ficon_cmi_ifindex_rng_t kRanges[] = {{0x11223344, 0x11223344}, {0x55667788, 0x55667799}};

}  // namespace

TEST_CASE("port manager: port config") {
  const Bytes request = answered(
      hex("00000000 00000002  11223344 0000000a 00000004 08 01 0000"
          " 55667788 00000014 00000020 00 00 0000"),
      [](mts_handle_t handle) {
        std::uint32_t count = 0x77;
        pm_cmi_port_config_t* records = nullptr;
        REQUIRE(pm_cmi_get_port_config(handle, 1, 2, kRanges, &count, &records, 2000) == 0);
        REQUIRE(count == 2);
        CHECK(std::uint32_t{records[0].if_index} == 0x11223344);
        CHECK(std::uint32_t{records[0].port_vsan} == 10);
        CHECK(std::uint32_t{records[0].port_mode} == 4);
        CHECK(records[0].trunk_mode == 8);
        CHECK(records[0].flags == 1);
        CHECK(std::uint32_t{records[1].if_index} == 0x55667788);
        CHECK(std::uint32_t{records[1].port_vsan} == 20);
        CHECK(std::uint32_t{records[1].port_mode} == 32);
        CHECK(records[1].flags == 0);
        std::free(records);
      });
  CHECK(request == hex("000000ca 00000001  11223344 11223344 55667788 55667799"));
}

TEST_CASE("port manager: transceivers") {
  const Bytes request =
      answered(hex("00000000 00000001  11223344 00000002"), [](mts_handle_t handle) {
        std::uint32_t count = 0;
        pm_fcot_info_t* records = nullptr;
        REQUIRE(pm_cmi_get_fcot_info(handle, 1, 1, kRanges, &count, &records, 2000) == 0);
        REQUIRE(count == 1);
        CHECK(std::uint32_t{records[0].status} == 2);
        std::free(records);
      });
  CHECK(request == hex("000000ca 00000002  11223344 11223344"));
}

TEST_CASE("port manager: the VSANs of a trunk") {
  Bytes bitmap(512);
  bitmap[1] = 0x20;  // VSAN 10
  const Bytes request = answered(hex("00000000 00000001") + bitmap, [&](mts_handle_t handle) {
    std::vector<Bytes> maps(4, Bytes(512, 0x77));
    CHECK(pm_cmi_get_trunk_vsan_info(handle, 1, 0x11223344, maps[0].data(), maps[1].data(),
                                     maps[2].data(), maps[3].data(), 2000) == 0);
    CHECK(maps[0] == bitmap);
    CHECK(maps[3] == Bytes(512));
  });
  CHECK(request == hex("000000ca 00000003  11223344"));
}

TEST_CASE("port manager: the ports of modules") {
  const Bytes request =
      answered(hex("00000000 00000002  11223344 55667788"), [](mts_handle_t handle) {
        mts_msg_ref_t reply{};
        REQUIRE(pm_get_port_info_brief(handle, 1, 0x80000001, 65535, 255, 255, 0, 0, &reply) == 0);
        std::uint32_t count = 0;
        pm_port_info_brief_t* records = nullptr;
        REQUIRE(pm_parse_get_port_info_brief(&reply, &count, &records) == 0);
        REQUIRE(count == 2);
        CHECK(std::uint32_t{records[1].if_index} == 0x55667788);
        std::free(records);
        CHECK(mts_drop(handle, &reply) == 0);
      });
  CHECK(request == hex("000000ca 00000004  80000001"));
}

TEST_CASE("port manager: port channels that the system created") {
  const Bytes request = answered(hex("00000000 00000001 00000001"), [](mts_handle_t handle) {
    std::uint32_t created = 0;
    CHECK(pcm_is_pc_auto_created(handle, 0x0400000d, &created) == 0);
    CHECK(created == 1);
  });
  CHECK(request == hex("000000ca 00000005  0400000d"));
}

TEST_CASE("port manager: refusals and replies whose length is not what their count says") {
  const auto result = [](const Bytes& reply) {
    std::uint32_t status = 0;
    answered(reply, [&](mts_handle_t handle) {
      std::uint32_t count = 0x77;
      auto* records = reinterpret_cast<pm_fcot_info_t*>(&count);
      status = pm_cmi_get_fcot_info(handle, 1, 1, kRanges, &count, &records, 2000);
      CHECK(count == 0);
      CHECK(records == nullptr);
    });
    return status;
  };
  CHECK(result(hex("11223344 00000000")) == 0x11223344);
  constexpr std::uint32_t kBadMessage = 74;
  CHECK(result(hex("00000000 00000002  11223344 00000002")) == kBadMessage);
  CHECK(result(hex("00000000 00000001  11223344 00000002 00")) == kBadMessage);
  CHECK(result(hex("00000000 ffffffff")) == kBadMessage);
  CHECK(result(hex("00000000")) == kBadMessage);
  CHECK(result({}) == 38);  // nobody answers this question
}

TEST_CASE("port manager: without a daemon the transport has the reason") {
  FakeDaemon nobody;
  Handle handle(nobody.endpoint());
  std::uint32_t count = 0;
  pm_cmi_port_config_t* records = nullptr;
  CHECK(pm_cmi_get_port_config(handle, 1, 1, kRanges, &count, &records, 2000) == 0xffffffff);
  CHECK(mts_errno_get(handle) == 32);
}

TEST_CASE("port map: one step of the walk") {
  const Bytes request = answered(hex("00000000 11223344 5566 7788"), [](mts_handle_t handle) {
    mts_msg_ref_t message{}, reply{};
    REQUIRE(ficon_send_get_portmap_nonblock(handle, "VSH", "UNKNOWN", 2, 0x5e, 0x01020304, 0x0506,
                                            0x0708, &message) == 0);
    const mts_recv_opts_t options{{1, 0, 2000, mts_rr_token_get(&message)}};
    mts_drop(handle, &message);
    REQUIRE(mts_recv(handle, &reply, &options) == 0);
    if_index_t if_index = 0;
    std::uint16_t number = 0, address = 0;
    CHECK(ficon_parse_get_portmap(&reply, &if_index, &number, &address) == 0);
    CHECK(if_index == 0x11223344);
    CHECK(number == 0x5566);
    CHECK(address == 0x7788);
    mts_drop(handle, &reply);
  });
  CHECK(request == hex("000000c8 00000002  00000002 5e000000 01020304 0506 0708"));
}

TEST_CASE("chassis: that of the endpoint opened last, asked for once") {
  const std::string description = "slots = 3\nname = \"asked\"\n[[module]]\nslot = 2\nports = 4\n";
  std::uint8_t lc = 0x77;
  const Bytes request = answered(Bytes(description.begin(), description.end()), [&](mts_handle_t) {
    CHECK(ficonm_platform_slot_to_lc_b0(1, &lc) == 0);
    CHECK(lc == 1);
    CHECK(ficonm_platform_slot_to_lc_b0(0, &lc) != 0);
  });
  CHECK(request == hex("000000cb 00000001"));
  CHECK(ficon::platform::current_chassis()->name == "asked");  // nobody is there to ask any more
  FakeDaemon other;
  Handle handle(other.endpoint());
  CHECK(ficon::platform::current_chassis()->name == "director");
}
