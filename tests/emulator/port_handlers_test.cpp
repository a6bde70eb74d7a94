#include <doctest/doctest.h>

#include <algorithm>

#include "client.h"
#include "daemon_process.h"
#include "handlers/routes.h"
#include "model/hardware.h"
#include "store/store.h"

using namespace ficon;
using namespace ficon::test;
using emulator::Answer;
using emulator::Request;
using emulator::Requester;
using emulator::Switch;

namespace {

// Slot 1: 01000000 and on, port 2 shut down, port 3 failed, port 4 towards another switch.
constexpr const char* kSmall = R"(
name = "small"
slots = 1
[[module]]
slot = 1
ports = 4
vsan = 276
condition = "up"
  [[module.port]]
  ports = "2"
  condition = "admin-down"
  [[module.port]]
  ports = "3"
  condition = "failed"
  [[module.port]]
  ports = "4"
  mode = "TE"
  trunk_vsans = [276, 1]
)";

struct Ports {
  Ports() : model({.hardware = emulator::hardware_from(kSmall, "small")}) {
    model.enable_feature();
    REQUIRE(model.enable_ficon(0x114, {1, Requester::kOperator}) == FcdStatus::kDone);
  }

  test::Bytes reply(std::uint32_t opcode, const test::Bytes& payload, std::uint32_t sap = 101,
                    std::uint32_t node = 0xfe000000) {
    const Request request{1, node, sap, opcode, payload};
    const emulator::Route* route = find_route(request);
    REQUIRE(route != nullptr);
    const Answer given = route->handle(request, model);
    if (const auto* bytes = std::get_if<emulator::Bytes>(&given)) return *bytes;
    const auto* status = std::get_if<FcdStatus>(&given);
    return route->status_reply(payload, status == nullptr ? FcdStatus::kMalformed : *status);
  }

  Switch model;
};

test::Bytes slice(const test::Bytes& bytes, std::size_t from, std::size_t count) {
  REQUIRE(bytes.size() >= from + count);
  return {bytes.begin() + static_cast<std::ptrdiff_t>(from),
          bytes.begin() + static_cast<std::ptrdiff_t>(from + count)};
}

std::string at(const test::Bytes& bytes, std::size_t from, std::size_t count) {
  return hex_of(slice(bytes, from, count));
}

test::Bytes port_map_request(std::uint32_t selector) {
  return be32(1) + zeros(108) + be32(selector) + zeros(29);
}

/** An array of TLVs: its length in all, then each with type and length. */
test::Bytes array(const test::Bytes& tlvs) {
  return be32(static_cast<std::uint32_t>(4 + tlvs.size())) + tlvs;
}
test::Bytes one_tlv(const std::string& type_and_length, const test::Bytes& value) {
  return array(hex(type_and_length) + value);
}

}  // namespace

TEST_CASE_FIXTURE(Ports,
                  "The port map of a range carries records in host order, and the interfaces") {
  const auto request =
      array(hex("00 0d 00 91") + port_map_request(4) + hex("00 1e 00 08") + be32(3) + be32(4));
  const auto answer = reply(7856, request);
  CHECK(host32_at(answer, 4 + 4 + 141) == 0);
  const std::size_t records = 4 + 4 + 145;
  CHECK(at(answer, records, 4) == "00 1f 00 28 ");
  CHECK(at(answer, records + 4, 4) == "03 00 03 00 ");   // position 3: port number, port address
  CHECK(at(answer, records + 24, 4) == "00 02 00 02 ");  // position 4: none
  const std::size_t map = records + 4 + 40;
  CHECK(at(answer, map, 4) == "00 1b 04 00 ");
  CHECK(at(answer, map + 4 + 12, 8) == "01 00 00 03 00 00 00 00 ");
  CHECK(answer.size() == map + 4 + 1024);
}

TEST_CASE_FIXTURE(Ports,
                  "A range that ends before it begins is empty; one beyond the table refused") {
  const auto ask = [&](std::uint32_t first, std::uint32_t last) {
    return reply(7856, array(hex("00 0d 00 91") + port_map_request(4) + hex("00 1e 00 08") +
                             be32(first) + be32(last)));
  };
  CHECK(at(ask(64, 63), 4 + 4 + 145, 8) == "00 1f 00 00 00 1b 04 00 ");
  CHECK(host32_at(ask(1279, 1280), 4 + 4 + 141) == 0x4089008e);
}

TEST_CASE_FIXTURE(Ports, "The whole port map carries the address map big-endian") {
  const auto answer = reply(7856, one_tlv("00 0d 00 91", port_map_request(3)));
  const std::size_t map = 4 + 4 + 145;
  CHECK(at(answer, map, 4) == "00 1a 02 00 ");
  CHECK(at(answer, map + 4, 4) == "00 00 00 01 ");
  CHECK(at(answer, map + 4 + 2 * 0xfd, 6) == "00 fd 02 00 02 00 ");  // fe and ff have none
}

TEST_CASE_FIXTURE(Ports, "Interface states say online, shut down, failed, and no such interface") {
  const auto ask = [](std::uint32_t if_index) {
    return hex("00 0f 00 3c") + be32(if_index) + zeros(56);
  };
  const auto answer =
      reply(7869, array(ask(0x01000000) + ask(0x01000001) + ask(0x01000002) + ask(0x01000044)));
  const auto state = [&](std::size_t row) { return 4 + row * 64 + 4; };
  CHECK(host32_at(answer, state(0) + 20) == 0);
  CHECK(at(answer, state(0) + 28, 3) == "40 00 00 ");
  CHECK(at(answer, state(1) + 28, 3) == "00 00 0a ");
  CHECK(at(answer, state(2) + 28, 3) == "10 00 00 ");
  CHECK(host32_at(answer, state(3) + 20) == 0x40890089);
}

TEST_CASE_FIXTURE(Ports, "A port's condition changes while clients look") {
  const auto flags = [&] {
    const auto config = reply(1, be32(0x01000000) + be32(0x01000000), 202);
    CHECK(at(config, 0, 24) == "00 00 00 00 00 00 00 01 01 00 00 00 00 00 01 14 00 00 00 04 00 " +
                                   at(config, 21, 1) + "00 00 ");
    return config[21];
  };
  CHECK(flags() == 1);
  CHECK(at(reply(6, be32(0x01000000) + be32(3), 202), 0, 4) == "00 00 00 00 ");
  CHECK(flags() == 0);
  const auto state = reply(7869, one_tlv("00 0f 00 3c", be32(0x01000000) + zeros(56)));
  CHECK(at(state, 4 + 4 + 28, 1) == "10 ");
  CHECK(at(reply(6, be32(0x01000044) + be32(3), 202), 0, 4) == "40 89 00 89 ");
}

TEST_CASE_FIXTURE(Ports, "The port manager lists ranges, trunks and modules") {
  CHECK(be32_at(reply(2, be32(1) + be32(0xffffffff), 202), 4) == 4);
  const auto trunk = reply(3, be32(0x01000003), 202);
  REQUIRE(trunk.size() == 8 + 512);
  CHECK(trunk[8] == 0x40);            // VSAN 1
  CHECK(trunk[8 + 276 / 8] == 0x08);  // VSAN 276
  CHECK(be32_at(reply(4, be32(1), 202), 4) == 4);
  CHECK(be32_at(reply(4, be32(2), 202), 4) == 0);
  CHECK(be32_at(reply(5, be32(0x04000077), 202), 4) == 0);
}

TEST_CASE_FIXTURE(Ports, "A reservation that collides tells the number in its text") {
  auto record = be32(1) + be32(1) + be32(239) + zeros(252) + be32(240) + zeros(252) + zeros(8);
  record.push_back(1);
  record = record + zeros(264);
  const auto answer = reply(7890, one_tlv("00 1c 03 19", record));
  REQUIRE(answer.size() == 8 + 793);
  CHECK(host32_at(answer, 8 + 524) == 0x40890083);
  const auto text = slice(answer, 8 + 537, 56);
  CHECK(std::string(text.begin(), std::find(text.begin(), text.end(), 0)) ==
        std::string("port number 240 is reserved for the logical ports"));
}

TEST_CASE_FIXTURE(Ports, "A query lists the ranges and how many numbers they hold") {
  auto record = be32(0x55) + zeros(524);
  record.push_back(6);
  record = record + zeros(264);
  const auto answer = reply(7890, one_tlv("00 1c 03 19", record));
  CHECK(at(answer, 8 + 4, 8) == "00 00 00 01 00 00 00 f0 ");
  CHECK(be32_at(answer, 8 + 264) == 0xf9);
  CHECK(host32_at(answer, 8 + 524) == 0);
  CHECK(be32_at(answer, 8 + 529) == 10);
}

TEST_CASE_FIXTURE(Ports, "A binding query names the interface of a VSAN's port number") {
  const auto ask = [&](std::uint32_t vsan, std::uint32_t number) {
    auto record = be32(vsan) + be32(number) + zeros(8);
    record.push_back(3);
    return reply(7892, one_tlv("00 1d 00 11", record));
  };
  CHECK(at(ask(0x114, 2), 8 + 8, 8) == "01 00 00 02 00 00 00 00 ");
  CHECK(host32_at(ask(0x114, 9), 8 + 12) == 0x40890085);
  CHECK(host32_at(ask(0x115, 2), 8 + 12) == 0x40890005);
}

TEST_CASE_FIXTURE(Ports, "A swap reports the two interfaces, and a refusal its status") {
  const auto swap = [&](std::uint32_t opcode, std::uint32_t first, std::uint32_t second) {
    return reply(opcode, be32(3) + be32(16) + zeros(108) + be32(first) + be32(second) + zeros(4));
  };
  const auto done = swap(7867, 1, 2);
  REQUIRE(done.size() == 136);
  CHECK(host32_at(done, 112) == 0);
  CHECK(host32_at(done, 124) == 1);
  CHECK(at(done, 128, 8) == "01 00 00 01 01 00 00 02 ");
  CHECK(model.port_identity(1).if_index == 0x01000002);
  CHECK(host32_at(swap(7867, 1, 0x30), 112) == 0x4089008a);
  CHECK(host32_at(swap(7891, 0x01000001, 0x01000044), 112) == 0x4089008a);
  CHECK(at(swap(7891, 0x01000002, 0x01000001), 128, 8) == "01 00 00 02 01 00 00 01 ");
  CHECK(model.port_identity(1).if_index == 0x01000001);
}

TEST_CASE_FIXTURE(Ports, "Addresses are bound in host order, to numbers and to interfaces") {
  CHECK(reply(7884, hex("03 00 00 02 00 00") + zeros(4)) == hex("03 00 00 02 00 00") + zeros(4));
  CHECK(reply(7893, hex("aa 00 00 00") + host32(0x01000003) + zeros(4)) ==
        hex("aa 00 00 00") + host32(0x01000003) + zeros(4));
  CHECK(model.port_identity(0xaa).port_number == 3);
  CHECK(host32_at(reply(7884, hex("fe 00 01 00 00 00") + zeros(4)), 6) == 0x40890047);
}

TEST_CASE_FIXTURE(Ports, "An FCID is found by its port, and a port by its FCID") {
  const auto ask = [&](std::uint32_t type, std::uint32_t if_index, const char* keys,
                       std::uint32_t fcid) {
    return reply(7858,
                 one_tlv("00 09 00 82", be32(type) + zeros(108) + be32(if_index) + zeros(4) +
                                            hex(keys) + zeros(2) + host32(fcid)),
                 101, 0xfe000001);
  };
  const auto by_number = ask(1, 0, "02 00 00 02", 0);
  CHECK(at(by_number, 8 + 112, 8) == "01 00 00 02 00 00 00 00 ");
  CHECK(at(by_number, 8 + 120, 4) == "02 00 02 00 ");
  CHECK(by_number[8 + 125] == 1);  // failed
  CHECK(host32_at(by_number, 8 + 126) == 0x010200);
  CHECK(at(ask(1, 0, "00 02 00 02", 0x010200), 8 + 112, 8) == "01 00 00 02 00 00 00 00 ");
  CHECK(be32_at(ask(1, 0, "00 02 00 02", 0x020200), 8 + 116) == 0x4089008d);
  CHECK(at(ask(2, 0, "02 00 00 02", 0), 8 + 120, 4) == "03 00 03 00 ");
}

TEST_CASE_FIXTURE(Ports, "A walk over the port map ends with the last port number") {
  const auto step = [&](std::uint32_t type, const char* keys) {
    return reply(2, be32(type) + zeros(8) + hex(keys), 200);
  };
  CHECK(hex_of(step(2, "02 00 02 00")) == "00 00 00 00 01 00 00 00 00 00 00 00 ");
  CHECK(hex_of(step(2, "00 03 02 00")) == "00 00 00 00 00 00 00 00 00 f0 00 f0 ");
  CHECK(hex_of(step(2, "00 f9 02 00")).substr(0, 12) == "40 89 00 4e ");
  CHECK(hex_of(step(1, "02 00 00 02")) == "00 00 00 00 01 00 00 02 00 02 00 02 ");
}

TEST_CASE_FIXTURE(Ports, "Prohibit settings are read, set and refused") {
  const auto ask = [&](std::uint32_t operation, std::uint32_t value) {
    return reply(7895, zeros(112) + host32(value) + zeros(4) + host32(operation));
  };
  CHECK(host32_at(ask(1, 0), 112) == 0);
  CHECK(host32_at(ask(0, 1), 116) == 0);
  CHECK(host32_at(ask(1, 0), 112) == 1);
  CHECK(host32_at(ask(2, 1), 116) == 0);
  CHECK(host32_at(ask(3, 0), 112) == 1);
  CHECK(host32_at(ask(0, 2), 116) == 0x4089008f);
  CHECK(host32_at(reply(7896, zeros(112)), 8) == 0);
  CHECK(host32_at(ask(3, 0), 112) == 0);
}

TEST_CASE("Numbers, addresses and prohibit settings survive a restart") {
  const ScratchDirectory directory;
  const std::string path = directory.path("ficon.db");
  const auto small = emulator::hardware_from(kSmall, "small");
  const auto change = [&](Switch& model) {
    auto& plan = model.port_plan();
    REQUIRE(plan.reserve(1, {{20, 23}}).status == FcdStatus::kDone);
    REQUIRE(plan.bind_address(0xaa, 22) == FcdStatus::kPortNumberHasAddress);
    REQUIRE(plan.bind_address(22, 512) == FcdStatus::kDone);
    REQUIRE(plan.bind_address(0xaa, 22) == FcdStatus::kDone);
    model.restore_prohibit_settings({.prohibited_by_default = true, .acl_not_fcid = true});
    model.touched.object("ports");
    model.touched.object("prohibit-settings");
  };
  {
    emulator::Store store(path);
    Switch model({.hardware = small});
    store.load(model);
    change(model);
    store.commit(model);
  }
  emulator::Store store(path);
  Switch model({.hardware = small});
  store.load(model);
  CHECK(model.port_identity(0xaa).if_index == 0x01000002);
  CHECK(model.port_identity(22).port_number == 512);
  CHECK_FALSE(model.port_plan().owner_of(0));
  CHECK(model.prohibit_settings().prohibited_by_default);
  CHECK(model.prohibit_settings().acl_not_fcid);
}
