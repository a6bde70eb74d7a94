/** Host data, history and limits: bytes typed by hand, rules, and what a restart brings back. */
#include <doctest/doctest.h>
#include <sqlite3.h>

#include "client.h"
#include "daemon_process.h"
#include "handlers/routes.h"
#include "model/hardware.h"
#include "model/host_data.h"
#include "store/store.h"

using namespace ficon;
using namespace ficon::test;
using emulator::Asker;
using emulator::find_route;
using emulator::Request;
using emulator::Requester;
using emulator::Store;
using emulator::Switch;

namespace {

constexpr Asker kOperator{1, Requester::kOperator};

struct Director {
  Director() : Director({.history_capacity = 8}) {}
  explicit Director(emulator::SwitchOptions options) : model(std::move(options)) {
    model.enable_feature();
    REQUIRE(model.enable_ficon(0x114, kOperator) == FcdStatus::kDone);
  }

  emulator::Answer answer(std::uint32_t opcode, const test::Bytes& payload) {
    const Request request{1, 0xfe000000, 101, opcode, payload};
    const emulator::Route* route = find_route(request);
    REQUIRE(route != nullptr);
    return route->handle(request, model);
  }
  /** The reply, a refusal in its family's form. */
  test::Bytes reply(std::uint32_t opcode, const test::Bytes& payload) {
    const emulator::Answer given = answer(opcode, payload);
    if (const auto* status = std::get_if<FcdStatus>(&given)) {
      return find_route({1, 0xfe000000, 101, opcode, payload})->status_reply(payload, *status);
    }
    REQUIRE(std::holds_alternative<emulator::Bytes>(given));
    return std::get<emulator::Bytes>(given);
  }
  bool malformed(std::uint32_t opcode, const test::Bytes& payload) {
    return std::holds_alternative<emulator::Malformed>(answer(opcode, payload));
  }
  /** The outcome of a request that gets no reply. */
  FcdStatus silent(std::uint32_t opcode, const test::Bytes& payload) {
    const emulator::Answer given = answer(opcode, payload);
    REQUIRE(std::holds_alternative<emulator::NoReply>(given));
    return std::get<emulator::NoReply>(given).status;
  }

  Switch model;
};

test::Bytes host_data_write(std::uint32_t vsan, std::uint32_t offset, const test::Bytes& bytes) {
  return be32(vsan) + be32(offset) + be32(static_cast<std::uint32_t>(bytes.size())) + bytes;
}

test::Bytes history(std::uint32_t position, std::uint32_t operation, std::uint32_t most = 0,
                    std::uint32_t message_type = 1) {
  return hex("00 00 00 8c 00 13 00 84") + be32(message_type) + be32(20) + zeros(104) + be32(0) +
         be32(position) + be32(operation) + be32(most) + be32(0);
}

struct Walked {
  std::uint32_t status;
  std::uint32_t key;
  std::uint32_t count;
  std::uint32_t lost;
  std::vector<std::uint32_t> positions;
};

Walked walked(const test::Bytes& reply) {
  REQUIRE(reply.size() >= 4 + 4 + 132 + 4 + 12);
  Walked out{host32_at(reply, 8 + 112),
             be32_at(reply, 8 + 116),
             be32_at(reply, 144),
             be32_at(reply, 152),
             {}};
  for (std::uint32_t i = 0; i < out.count; ++i) {
    out.positions.push_back(be32_at(reply, 156 + i * 40 + 5));
  }
  return out;
}

test::Bytes limit(std::uint32_t message_type, std::uint32_t value) {
  return be32(message_type) + be32(8) + zeros(104) + host32(0) + host32(value);
}

test::Bytes mih(std::uint8_t operation, std::uint32_t vsan, std::uint32_t timeout) {
  return be32(timeout) + be32(vsan) + test::Bytes{operation} + zeros(4);
}

std::string mih_record(std::uint32_t timeout, std::uint32_t vsan, std::uint8_t operation,
                       std::uint32_t status) {
  return hex_of(be32(timeout) + be32(vsan) + test::Bytes{operation} + be32(status));
}

}  // namespace

TEST_CASE_FIXTURE(Director, "Host data reach as far as was written; what was skipped is zero") {
  CHECK(hex_of(reply(7875, be32(0x114))) == "00 00 00 00 00 00 01 14 00 00 00 00 ");
  CHECK(hex_of(reply(7876, host_data_write(0x114, 3, {0xaa, 0xbb}))) == "00 00 00 00 00 00 01 14 ");
  CHECK(hex_of(reply(7875, be32(0x114))) == "00 00 00 00 00 00 01 14 00 00 00 05 00 00 00 aa bb ");
  CHECK(hex_of(reply(7876, host_data_write(0x114, 1, {0xcc}))) == "00 00 00 00 00 00 01 14 ");
  CHECK(hex_of(reply(7875, be32(0x114))) == "00 00 00 00 00 00 01 14 00 00 00 05 00 cc 00 aa bb ");
}

TEST_CASE_FIXTURE(Director, "Host data end at 16384 bytes, whatever offset and length add up to") {
  CHECK(be32_at(reply(7876, host_data_write(0x114, 16000, test::Bytes(384, 1))), 0) == 0);
  CHECK(reply(7875, be32(0x114)).size() == 12 + 16384);
  for (const auto& request :
       {host_data_write(0x114, 16000, test::Bytes(385, 2)), host_data_write(0x114, 16385, {}),
        host_data_write(0x114, 0xffffffff, {2}), host_data_write(0x114, 0, zeros(16385))}) {
    CHECK(hex_of(reply(7876, request)) == "40 89 00 c0 00 00 01 14 ");
  }
  CHECK(reply(7875, be32(0x114))[12 + 16383] == 1);
}

TEST_CASE_FIXTURE(Director, "Host data are refused without FICON, and to others under the lock") {
  CHECK(hex_of(reply(7875, be32(21))) == "40 89 00 05 00 00 00 15 00 00 00 00 ");
  CHECK(hex_of(reply(7876, host_data_write(21, 0, {1}))) == "40 89 00 05 00 00 00 15 ");
  CHECK(hex_of(reply(7876, host_data_write(4094, 0, {1}))) == "40 89 00 04 00 00 0f fe ");
  REQUIRE(model.get_lock(0x114, {2, Requester::kHost}) == FcdStatus::kDone);
  CHECK(hex_of(reply(7876, host_data_write(0x114, 0, {1}))) == "40 89 00 29 00 00 01 14 ");
  CHECK(be32_at(reply(7875, be32(0x114)), 0) == 0);
}

TEST_CASE_FIXTURE(Director, "Host data requests that are not well-formed") {
  CHECK(malformed(7875, zeros(3)));
  CHECK(malformed(7875, zeros(5)));
  CHECK(malformed(7876, zeros(11)));
  test::Bytes cut = host_data_write(0x114, 0, {1, 2});
  cut.pop_back();
  CHECK(malformed(7876, cut));
  CHECK(malformed(7876, host_data_write(0x114, 0, {1, 2}) + zeros(1)));
}

TEST_CASE_FIXTURE(Director, "A write of host data is recorded once, and no key counter counts it") {
  const std::uint32_t before = model.history.last_position();
  CHECK(be32_at(reply(7876, host_data_write(0x114, 7, {1, 2})), 0) == 0);
  CHECK(be32_at(reply(7876, host_data_write(0x114, 7, {1, 2})), 0) == 0);
  CHECK(be32_at(reply(7876, host_data_write(0x114, 7, {})), 0) == 0);
  CHECK(model.history.last_position() == before + 1);
  CHECK(model.history.at(before + 1)->detail == "2 at 7");
  CHECK(model.find_vsan(0x114)->key_counter == 0);
}

TEST_CASE("The history shows who changed what, when, on which VSAN") {
  emulator::SwitchOptions options;
  options.clocks.seconds_since_1970 = [] { return 0x5a6b7c8d; };
  Switch model(options);
  model.enable_feature();
  REQUIRE(model.enable_ficon(0x114, {1, Requester::kAgent}) == FcdStatus::kDone);
  REQUIRE(model.set_codepage(0x114, {1, Requester::kHost}, 1047) == FcdStatus::kDone);
  const test::Bytes payload = history(0, 0);
  const Request request{1, 0xfe000000, 101, 7864, payload};
  const auto given = find_route(request)->handle(request, model);
  const auto& reply = std::get<emulator::Bytes>(given);
  REQUIRE(reply.size() == 156 + 3 * 40);
  CHECK(be32_at(reply, 0) == reply.size());
  CHECK(hex_of({reply.begin() + 140, reply.begin() + 156}) ==
        "00 12 00 84 00 00 00 03 00 00 00 00 00 00 00 00 ");
  CHECK(hex_of({reply.begin() + 156 + 80, reply.end()}) ==
        hex_of(be32(0x5a6b7c8d) + hex("05 00 00 00 03 01 14 03 00 31 30 34 37") + zeros(23)));
}

TEST_CASE_FIXTURE(Director, "A walk goes on where it was, in batches of any size") {
  for (std::uint32_t page : {37u, 500u, 1047u, 273u}) {
    REQUIRE(model.set_codepage(0x114, kOperator, page) == FcdStatus::kDone);
  }  // positions 1 to 5: the first of them was already so
  const Walked first = walked(reply(7864, history(0, 0, 2)));
  CHECK(first.status == 0);
  CHECK(first.positions == std::vector<std::uint32_t>{1, 2});
  CHECK(first.key == 2);
  REQUIRE(model.set_codepage(0x114, kOperator, 277) == FcdStatus::kDone);
  const Walked rest = walked(reply(7864, history(first.key, 0)));
  CHECK(rest.positions == std::vector<std::uint32_t>{3, 4, 5, 6});
  CHECK(rest.key == 6);
  CHECK(rest.lost == 0);
  const Walked end = walked(reply(7864, history(rest.key, 0)));
  CHECK(end.count == 0);
  CHECK(end.key == 6);
}

TEST_CASE_FIXTURE(Director, "An overwritten position is answered with the oldest, and the loss") {
  for (std::uint32_t i = 0; i < 10; ++i) {
    REQUIRE(model.set_fcid_last_byte(0x114, kOperator, static_cast<std::uint8_t>(i + 1)) ==
            FcdStatus::kDone);
  }  // twelve entries, eight of them still there: 5 to 12
  const Walked lost = walked(reply(7864, history(2, 0, 3)));
  CHECK(lost.positions == std::vector<std::uint32_t>{5, 6, 7});
  CHECK(lost.lost == 2);
  CHECK(walked(reply(7864, history(4, 0))).lost == 0);
  CHECK(walked(reply(7864, history(0, 0))).lost == 4);
  CHECK(walked(reply(7864, history(0, 1, 2))).positions == std::vector<std::uint32_t>{11, 12});
  CHECK(walked(reply(7864, history(0, 1))).positions.size() == 8);
  const Walked extent = walked(reply(7864, history(5, 2)));
  CHECK(extent.count == 0);
  CHECK(extent.key == 12);
}

TEST_CASE_FIXTURE(Director, "A history position that was never there, and other refusals") {
  CHECK(walked(reply(7864, history(3, 0))).status == 0x408900c2);
  CHECK(walked(reply(7864, history(0xffffffff, 0))).status == 0x408900c2);
  CHECK(walked(reply(7864, history(0, 3))).status == 0x40890002);
  CHECK(walked(reply(7864, history(0, 0, 0, 3))).status == 0x40890002);
  CHECK(malformed(7864, zeros(140)));
  test::Bytes cut = history(0, 0);
  cut.pop_back();
  CHECK(malformed(7864, cut));
}

TEST_CASE("A history begins empty") {
  Switch model;
  const test::Bytes payload = history(0, 0);
  const Request request{1, 0xfe000000, 101, 7864, payload};
  const auto given = find_route(request)->handle(request, model);
  CHECK(walked(std::get<emulator::Bytes>(given)).key == 0);
}

TEST_CASE("A batch is as long as a TLV has room for") {
  Switch model;
  model.enable_feature();
  for (std::uint32_t vsan = 1; vsan <= 2000; ++vsan) {
    REQUIRE(model.enable_ficon(vsan, kOperator) == FcdStatus::kDone);
  }
  const test::Bytes payload = history(0, 0, 0xffffffff);
  const Request request{1, 0xfe000000, 101, 7864, payload};
  const auto given = find_route(request)->handle(request, model);
  CHECK(walked(std::get<emulator::Bytes>(given)).count == 1638);
}

namespace {

test::Bytes pib(std::uint32_t key, std::uint8_t first, std::uint8_t last) {
  return hex("00 00 00 82 00 14 00 7a") + be32(1) + be32(10) + zeros(104) + be32(key) + be32(0) +
         test::Bytes{first, last};
}

emulator::SwitchOptions small_chassis() {
  emulator::SwitchOptions options;
  options.hardware = emulator::hardware_from(
      "name = \"box\"\nmodel = \"M7\"\nserial = \"S1122\"\nslots = 3\n"
      "[[module]]\nslot = 3\nnumber = 2\ntype = \"a-long-type-name\"\nports = 4\n",
      "test");
  return options;
}

}  // namespace

TEST_CASE("The identification block tells what the chassis is made of") {
  Director director{small_chassis()};
  const test::Bytes reply = director.reply(7877, pib(0, 0, 255));
  REQUIRE(reply.size() == 4 + 4 + 122 + 4 + 2 * 50);
  CHECK(host32_at(reply, 8 + 116) == 0);
  CHECK(reply[8 + 120] == 0);
  CHECK(reply[8 + 121] == 1);
  CHECK(hex_of({reply.begin() + 130, reply.begin() + 134}) == "00 15 00 64 ");
  CHECK(hex_of({reply.begin() + 134, reply.begin() + 184}) ==
        hex_of(hex("01 00 02 00 00 00 00 00 62 6f 78") + zeros(9) + hex("4d 37") + zeros(10) +
               hex("53 31 31 32 32") + zeros(7) + zeros(6)));
  CHECK(hex_of({reply.begin() + 184, reply.end()}) ==
        hex_of(hex("02 02 02 00 00 00 00 00 61 2d 6c 6f 6e 67 2d 74 79 70 65 2d 4d 37") +
               zeros(10) + hex("53 31 31 32 32 2d 30 33") + zeros(4) + zeros(6)));
}

TEST_CASE("The identification block names a module's ports, a range of them") {
  Director director{small_chassis()};
  const test::Bytes reply = director.reply(7877, pib(2, 3, 9));
  REQUIRE(reply.size() == 4 + 4 + 122 + 4 + 50);
  CHECK(reply[8 + 120] == 3);
  CHECK(reply[8 + 121] == 3);
  CHECK(hex_of({reply.begin() + 134, reply.begin() + 142}) == "03 02 00 03 01 00 20 03 ");
  CHECK(reply[134 + 44] == 3);
  for (const auto& request : {pib(2, 4, 4), pib(2, 1, 0), pib(1, 0, 0), pib(0xffffffff, 0, 0)}) {
    const test::Bytes refused = director.reply(7877, request);
    REQUIRE(refused.size() == 130);
    CHECK(host32_at(refused, 8 + 116) == 0x408900c1);
  }
  CHECK(director.malformed(7877, zeros(130)));
}

TEST_CASE_FIXTURE(Director, "Get-next type and maximum ports are read and set in host order") {
  CHECK(hex_of(reply(7883, limit(1, 0))) == hex_of(limit(1, 1)));
  CHECK(host32_at(reply(7883, limit(3, 2)), 112) == 0);
  CHECK(host32_at(reply(7883, limit(1, 0)), 116) == 2);
  for (const std::uint32_t type : {0u, 3u, 0x02000000u}) {
    CHECK(host32_at(reply(7883, limit(3, type)), 112) == 0x408900c3);
  }
  CHECK(host32_at(reply(7878, limit(1, 0)), 116) == 256);
  CHECK(host32_at(reply(7878, limit(3, 1280)), 112) == 0);
  CHECK(host32_at(reply(7878, limit(1, 0)), 116) == 1280);
  CHECK(host32_at(reply(7878, limit(3, 0)), 112) == 0x408900c4);
  CHECK(host32_at(reply(7878, limit(3, 1281)), 112) == 0x408900c4);
  CHECK(host32_at(reply(7878, limit(2, 1)), 112) == 0x40890002);
  CHECK(malformed(7883, zeros(119)));
  CHECK(malformed(7878, zeros(121)));
}

TEST_CASE_FIXTURE(Director, "A VSAN's MIH time-out is the switch's until it has its own") {
  CHECK(hex_of(reply(7897, mih(3, 9, 0))) == mih_record(0x52, 9, 3, 0));
  CHECK(silent(7897, mih(1, 9, 0xc1)) == FcdStatus::kDone);
  CHECK(hex_of(reply(7897, mih(2, 0x114, 0))) == mih_record(0xc1, 0x114, 2, 0));
  CHECK(silent(7897, mih(0, 0x114, 0x7f)) == FcdStatus::kDone);
  CHECK(hex_of(reply(7897, mih(2, 0x114, 0))) == mih_record(0x7f, 0x114, 2, 0));
  CHECK(hex_of(reply(7897, mih(3, 0, 0))) == mih_record(0xc1, 0, 3, 0));
  CHECK(model.find_vsan(0x114)->key_counter == 1);
  CHECK(silent(7897, mih(0, 0x114, 0)) == FcdStatus::kDone);
  CHECK(hex_of(reply(7897, mih(2, 0x114, 0))) == mih_record(0xc1, 0x114, 2, 0));
}

TEST_CASE_FIXTURE(Director, "What is wrong with a MIH time-out") {
  for (const std::uint32_t bad : {0x40u, 0xc0u, 0x100u, 0x52000000u}) {
    CHECK(silent(7897, mih(0, 0x114, bad)) == FcdStatus::kBadMihTimeout);
    CHECK(silent(7897, mih(1, 0, bad)) == FcdStatus::kBadMihTimeout);
  }
  CHECK(silent(7897, mih(1, 0, 0)) == FcdStatus::kBadMihTimeout);
  CHECK(silent(7897, mih(0, 21, 1)) == FcdStatus::kVsanWithoutFicon);
  CHECK(silent(7897, mih(4, 0x114, 1)) == FcdStatus::kUnknownOperation);
  CHECK(hex_of(reply(7897, mih(2, 21, 0))) == mih_record(0, 21, 2, 0x40890005));
  CHECK(malformed(7897, zeros(12)));
  REQUIRE(model.get_lock(0x114, {2, Requester::kHost}) == FcdStatus::kDone);
  CHECK(silent(7897, mih(0, 0x114, 1)) == FcdStatus::kLockBusy);
}

TEST_CASE("Host data, limits and time-outs are there again after a restart") {
  ScratchDirectory directory;
  {
    Store store(directory.path("ficon.db"));
    Switch model;
    model.enable_feature();
    REQUIRE(model.enable_ficon(20, kOperator) == FcdStatus::kDone);
    REQUIRE(model.enable_ficon(21, kOperator) == FcdStatus::kDone);
    const test::Bytes bytes{0x00, 0x9f, 0xff};
    CHECK(write_host_data(model, 20, kOperator, 2, bytes) == FcdStatus::kDone);
    CHECK(write_host_data(model, 21, kOperator, 0, bytes) == FcdStatus::kDone);
    CHECK(model.set_get_next_type(2) == FcdStatus::kDone);
    CHECK(model.set_max_ports(512) == FcdStatus::kDone);
    CHECK(model.set_default_mih_timeout(0x44) == FcdStatus::kDone);
    CHECK(model.set_mih_timeout(20, kOperator, 0x3f) == FcdStatus::kDone);
    store.commit(model);
    model.touched.clear();
    CHECK(model.disable_ficon(21, kOperator) == FcdStatus::kDone);
    CHECK(model.enable_ficon(21, kOperator) == FcdStatus::kDone);
    store.commit(model);
  }
  Store store(directory.path("ficon.db"));
  Switch model;
  store.load(model);
  CHECK(hex_of(model.find_vsan(20)->host_data) == "00 00 00 9f ff ");
  CHECK(model.find_vsan(21)->host_data.empty());
  CHECK(model.find_vsan(20)->mih_timeout.encoded == 0x3f);
  CHECK(model.limits().get_next_type == emulator::GetNextType::kInstalledPorts);
  CHECK(model.limits().max_ports == 512);
  CHECK(model.limits().default_mih_timeout.encoded == 0x44);

  sqlite3* database = nullptr;
  REQUIRE(sqlite3_open(directory.path("ficon.db").c_str(), &database) == SQLITE_OK);
  sqlite3_stmt* query = nullptr;
  sqlite3_prepare_v2(database,
                     "SELECT value FROM ficon_saved_config WHERE key = x'2600000000000000'", -1,
                     &query, nullptr);
  REQUIRE(sqlite3_step(query) == SQLITE_ROW);
  const auto* value = static_cast<const std::uint8_t*>(sqlite3_column_blob(query, 0));
  CHECK(hex_of({value, value + sqlite3_column_bytes(query, 0)}) == hex_of(host32(0x44)));
  sqlite3_finalize(query);
  sqlite3_close(database);
}

TEST_CASE("A ring that became smaller lets its oldest entries go with the next change") {
  ScratchDirectory directory;
  {
    Store store(directory.path("ficon.db"));
    Switch model;
    model.enable_feature();
    for (std::uint32_t vsan = 1; vsan <= 9; ++vsan) {
      REQUIRE(model.enable_ficon(vsan, kOperator) == FcdStatus::kDone);
    }
    store.commit(model);
  }
  {
    Store store(directory.path("ficon.db"));
    Switch model({.history_capacity = 3});
    store.load(model);
    REQUIRE(model.enable_ficon(10, kOperator) == FcdStatus::kDone);
    CHECK(model.history.first_position() == 9);
    store.commit(model);
  }
  Store store(directory.path("ficon.db"));
  Switch model;
  store.load(model);
  CHECK(model.history.entries().size() == 3);
  CHECK(model.history.last_position() == 11);
}
