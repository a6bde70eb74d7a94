#include <doctest/doctest.h>

#include "client.h"
#include "handlers/routes.h"

using namespace ficon;
using namespace ficon::test;
using emulator::Answer;
using emulator::Malformed;
using emulator::Request;
using emulator::Switch;

namespace {

struct Daemon {
  Daemon() {
    model.enable_feature();
    REQUIRE(model.enable_ficon(0x114, {1, emulator::Requester::kOperator}) == FcdStatus::kDone);
  }

  Answer answer(std::uint32_t opcode, const test::Bytes& payload, std::uint32_t sap = 101) {
    const Request request{1, 0xfe000000, sap, opcode, payload};
    const emulator::Route* route = find_route(request);
    REQUIRE(route != nullptr);
    return route->handle(request, model);
  }
  FcdStatus status(std::uint32_t opcode, const test::Bytes& payload, std::uint32_t sap = 101) {
    const Answer given = answer(opcode, payload, sap);
    REQUIRE(std::holds_alternative<FcdStatus>(given));
    return std::get<FcdStatus>(given);
  }
  test::Bytes reply(std::uint32_t opcode, const test::Bytes& payload, std::uint32_t sap = 101) {
    const Answer given = answer(opcode, payload, sap);
    REQUIRE(std::holds_alternative<emulator::Bytes>(given));
    return std::get<emulator::Bytes>(given);
  }
  bool malformed(std::uint32_t opcode, const test::Bytes& payload, std::uint32_t sap = 101) {
    return std::holds_alternative<Malformed>(answer(opcode, payload, sap));
  }

  Switch model;
};

}  // namespace

TEST_CASE_FIXTURE(Daemon, "The VSAN information carries each setting in its place and order") {
  CHECK(status(7865, vsan_config(1, 10, 0x114, 20, be32(1047))) == FcdStatus::kDone);
  CHECK(status(7865, vsan_config(1, 12, 0x114, 1320, host32(0x11223344) + host32(0x55667788))) ==
        FcdStatus::kDone);
  CHECK(status(7865, vsan_config(1, 13, 0x114, 1328, {0xab})) == FcdStatus::kDone);
  CHECK(status(7865, vsan_config(1, 5, 0x114, 12, {1})) == FcdStatus::kDone);
  const test::Bytes reply = this->reply(7855, vsan_info(1, 0x114));
  REQUIRE(reply.size() == 4 + 4 + 128 + 4 + 1347);
  CHECK(tlv_status(reply) == 0);
  const test::Bytes record(reply.begin() + 140, reply.end());
  CHECK(hex_of({record.begin(), record.begin() + 4}) == "00 00 01 14 ");
  CHECK(host32_at(record, 4) == 2);
  CHECK(hex_of({record.begin() + 8, record.begin() + 16}) == "00 01 00 00 01 00 00 00 ");
  CHECK(be32_at(record, 16) == 4);       // key counter: four changes
  CHECK(host32_at(record, 20) == 1047);  // code page: in host order, as its readers take it
  CHECK(host32_at(record, 1320) == 0x11223344);
  CHECK(host32_at(record, 1324) == 0x55667788);
  CHECK(record[1328] == 0xab);
  CHECK(record[1329] == 1);
}

TEST_CASE_FIXTURE(Daemon, "Every mode has its operation and its byte") {
  struct Row {
    std::uint32_t operation;
    std::size_t byte;
    std::uint8_t value;  // unlike the first setting
    std::uint32_t refusal;
  };
  constexpr Row kRows[] = {
      {2, 10, 1, 0x40890012}, {3, 9, 0, 0x40890011},     {4, 11, 1, 0x40890013},
      {5, 12, 1, 0x40890014}, {6, 13, 1, 0x40890015},    {7, 14, 1, 0x40890016},
      {11, 8, 1, 0x40890010}, {14, 1329, 0, 0x40890017},
  };
  for (const Row& row : kRows) {
    CAPTURE(row.operation);
    CHECK(status(7865, vsan_config(1, row.operation, 0x114, row.byte, {2})) ==
          FcdStatus{row.refusal});
    CHECK(status(7865, vsan_config(1, row.operation, 0x114, row.byte, {row.value})) ==
          FcdStatus::kDone);
    CHECK(reply(7855, vsan_info(1, 0x114))[140 + row.byte] == row.value);
  }
}

TEST_CASE_FIXTURE(Daemon, "The six modes come in the order of the record") {
  CHECK(status(7865, vsan_config(1, 1, 0x114, 9, hex("00 00 01 00 01 01"))) == FcdStatus::kDone);
  const test::Bytes info = reply(7855, vsan_info(1, 0x114));
  CHECK(hex_of({info.begin() + 148, info.begin() + 156}) == "00 00 00 01 00 01 01 00 ");
}

TEST_CASE_FIXTURE(Daemon, "The walk with get-next names the VSAN that it describes") {
  CHECK(be32_at(reply(7855, vsan_info(2, 0)), 140) == 0x114);
  CHECK(status(7855, vsan_info(2, 0x114)) == FcdStatus::kNoNextVsan);
  CHECK(status(7855, vsan_info(1, 21)) == FcdStatus::kVsanWithoutFicon);
  CHECK(status(7855, vsan_info(3, 0x114)) == FcdStatus::kUnknownOperation);
}

TEST_CASE_FIXTURE(Daemon, "FICON on and off by the state word") {
  CHECK(status(7853, ficon_state(0x222, 0xff, 1)) == FcdStatus::kDone);
  CHECK(hex_of(reply(1, {}, 200)) == "00 00 00 00 00 00 00 02 00 00 01 14 00 00 02 22 ");
  CHECK(status(7853, ficon_state(0x114, 0, 1)) == FcdStatus::kDone);
  CHECK(hex_of(reply(1, {}, 200)) == "00 00 00 00 00 00 00 01 00 00 02 22 ");
  CHECK(status(7853, ficon_state(0x333, 1, 9)) == FcdStatus::kUnknownRequester);
}

TEST_CASE_FIXTURE(Daemon, "The lock's status shows holder and age in the spare bytes") {
  const test::Bytes free = reply(7874, lock_record(0x114, 3, 0), 103);
  CHECK(hex_of({free.begin() + 13, free.end()}) == "00 00 00 00 00 ");
  CHECK(status(7874, lock_record(0x114, 1, 2), 103) == FcdStatus::kDone);
  const test::Bytes held = reply(7874, lock_record(0x114, 3, 0), 103);
  REQUIRE(held.size() == 18);
  CHECK(held[13] == 2);
  CHECK(host32_at(held, 14) < 60);
  CHECK(status(7874, lock_record(0x114, 4, 1), 103) == FcdStatus::kUnknownOperation);
}

TEST_CASE_FIXTURE(Daemon, "A feature by its name") {
  CHECK(hex_of(reply(1, hex("66 69 63 6f 6e") + zeros(27), 201)) == "40 aa 00 05 ");
  CHECK(status(1, hex("66 63 69 70") + zeros(28), 201) == FcdStatus::kUnknownFeature);
  CHECK(malformed(1, test::Bytes(32, 'f'), 201));
  CHECK(malformed(1, zeros(31), 201));
}

TEST_CASE_FIXTURE(Daemon, "The box status is a head and two groups of five") {
  const test::Bytes status = reply(7880, zeros(112));
  REQUIRE(status.size() == 8 + 10 * 28);
  CHECK(status[5] == 2);
  CHECK(hex_of({status.begin() + 8, status.begin() + 17}) == "00 00 00 01 66 69 63 6f 6e ");
}

TEST_CASE_FIXTURE(Daemon, "Requests that are not well-formed are told apart from refused ones") {
  const test::Bytes good = vsan_config(1, 5, 0x114, 12, {1});
  for (std::size_t length = 0; length < good.size(); ++length) {
    const test::Bytes cut(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length));
    REQUIRE(malformed(7865, cut));
  }
  CHECK(malformed(7865, good + zeros(1)));
  test::Bytes other_vsan = good;
  other_vsan[143] = 0x15;
  CHECK(malformed(7865, other_vsan));
  test::Bytes long_tlv = good;
  long_tlv[138] = 0xff;  // the record claims 65347 bytes
  CHECK(malformed(7865, long_tlv));
  test::Bytes no_header = good;
  no_header[5] = 0x0d;
  CHECK(malformed(7865, no_header));
  CHECK(malformed(7853, zeros(127)));
  CHECK(malformed(7853, zeros(129)));
  CHECK(malformed(7874, zeros(17), 103));
  CHECK(malformed(7880, zeros(128)));
  CHECK(malformed(1, zeros(1), 200));
  CHECK(model.find_vsan(0x114)->key_counter == 0);
}

TEST_CASE("Every family's status reply takes any payload") {
  for (const emulator::Route& route : emulator::routes()) {
    CAPTURE(route.name);
    for (const std::size_t length : {0u, 1u, 3u, 4u, 5u, 17u, 18u, 127u, 128u, 136u, 1487u}) {
      const test::Bytes payload(length, 0xff);
      CHECK_FALSE(route.status_reply(payload, FcdStatus::kMalformed).empty());
    }
  }
}
