/** File requests with bytes typed by hand, and requests that no library would send. */
#include <doctest/doctest.h>

#include <algorithm>
#include <cstring>

#include "client.h"
#include "handlers/routes.h"

using namespace ficon;
using namespace ficon::test;
using emulator::Answer;
using emulator::find_route;
using emulator::Malformed;
using emulator::Request;
using emulator::Requester;
using emulator::Switch;

namespace {

constexpr std::uint32_t kVsan = 0x114;
constexpr std::uint32_t kOperation = 7861;
constexpr std::uint32_t kChange = 7866;
constexpr std::uint32_t kInfo = 7857;
constexpr std::uint32_t kPortInfo = 7856;
constexpr std::uint32_t kReadSaved = 7862;
constexpr std::uint32_t kWriteSaved = 7863;
constexpr const char* kProd = "d7 d9 d6 c4 40 40 40 40";
constexpr const char* kTest = "e3 c5 e2 e3 40 40 40 40";
constexpr std::size_t kStatusAt = 4 + 4 + 141;  // of the record in a reply that begins with it

test::Bytes port_info(std::uint32_t selector, std::uint32_t first, std::uint32_t last,
                      std::uint32_t message_type = 1, std::uint32_t vsan = kVsan) {
  return tlv_array(hex("00 0d 00 91") + be32(message_type) + be32(33) + zeros(104) +
                   be32(selector) + be32(vsan) + host32(0) + host32(1) + hex(kProd) + zeros(9) +
                   (selector == 2 ? hex("00 20 00 08") : hex("00 08 00 08")) + be32(first) +
                   be32(last));
}

/** A port blocked or freed: its address in the order of the machine. */
test::Bytes blocked_tlv(std::uint16_t address, std::uint8_t value) {
  test::Bytes in_host_order(2);
  std::memcpy(in_host_order.data(), &address, 2);
  return hex("00 16 00 03") + in_host_order + test::Bytes{value};
}

/** A switch with FICON on VSAN 0x114 and a file PROD. */
struct Files {
  Files() {
    model.enable_feature();
    REQUIRE(model.enable_ficon(kVsan, {1, Requester::kOperator}) == FcdStatus::kDone);
    REQUIRE(status(kOperation,
                   tlv_array(file_tlv({.operation = 10, .vsan = kVsan, .name = kProd}))) == 0);
  }

  Answer answer(std::uint32_t opcode, const test::Bytes& payload, std::uint32_t connection = 1) {
    const Request request{connection, 0xfe000000, 101, opcode, payload};
    const emulator::Route* route = find_route(request);
    REQUIRE(route != nullptr);
    return route->handle(request, model);
  }
  /** The reply, a refusal in its family's form. */
  test::Bytes reply(std::uint32_t opcode, const test::Bytes& payload,
                    std::uint32_t connection = 1) {
    const Answer given = answer(opcode, payload, connection);
    if (const auto* status = std::get_if<FcdStatus>(&given)) {
      return find_route({1, 0xfe000000, 101, opcode, payload})->status_reply(payload, *status);
    }
    REQUIRE(std::holds_alternative<emulator::Bytes>(given));
    return std::get<emulator::Bytes>(given);
  }
  std::uint32_t status(std::uint32_t opcode, const test::Bytes& payload,
                       std::uint32_t connection = 1) {
    const test::Bytes bytes = reply(opcode, payload, connection);
    REQUIRE(bytes.size() >= kStatusAt + 4);
    return host32_at(bytes, kStatusAt);
  }
  bool malformed(std::uint32_t opcode, const test::Bytes& payload) {
    return std::holds_alternative<Malformed>(answer(opcode, payload));
  }
  /** Cut at every length and with a byte too many, no request is taken for a whole one. */
  bool malformed_when_cut(std::uint32_t opcode, const test::Bytes& good) {
    for (std::size_t length = 0; length < good.size(); ++length) {
      if (!malformed(opcode, {good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length)})) {
        return false;
      }
    }
    return malformed(opcode, good + zeros(1));
  }
  bool blocked(std::uint32_t address) {
    const test::Bytes info = reply(kPortInfo, port_info(0, address, address));
    REQUIRE(info.size() == 4 + 4 + 145 + 4 + 107);
    return info[4 + 4 + 145 + 4 + 12] == 1;
  }

  Switch model;
};

test::Bytes change(const test::Bytes& entries, std::uint32_t operation, std::uint32_t key = 0) {
  return tlv_array(file_tlv({.operation = operation, .vsan = kVsan, .name = kProd, .key = key}) +
                   entries);
}

}  // namespace

TEST_CASE_FIXTURE(Files, "An open tells its key in host order; a refused one who is in the way") {
  const FileAsked asked{.operation = 1, .vsan = kVsan, .name = kTest, .requester = 2};
  const test::Bytes opened = reply(kOperation, tlv_array(file_tlv(asked)));
  REQUIRE(opened.size() == 4 + 4 + 158);
  CHECK(hex_of({opened.begin(), opened.begin() + 8}) == "00 00 00 a6 00 06 00 9e ");
  CHECK(host32_at(opened, 8 + 133) == 1);
  CHECK(host32_at(opened, 8 + 141) == 0);
  CHECK(opened[8 + 145] == 1);  // a new file
  const test::Bytes refused =
      reply(kOperation, tlv_array(file_tlv({.operation = 1, .vsan = kVsan, .name = kTest})), 2);
  CHECK(host32_at(refused, 8 + 141) == 0x40890042);
  CHECK(host32_at(refused, 8 + 133) == 0);
  CHECK(refused[8 + 145] == 2);
}

TEST_CASE_FIXTURE(Files, "A file's information carries its places and orders") {
  const test::Bytes header = hex("00 19 00 80") + zeros(32) + test::Bytes(24, 0xc1) + zeros(72);
  CHECK(status(kChange, change(header, 11)) == 0);
  const FileAsked open{.operation = 1, .vsan = kVsan, .name = kProd, .requester = 3};
  CHECK(status(kOperation, tlv_array(file_tlv(open)), 7) == 0);
  const test::Bytes info =
      reply(kInfo, tlv_array(file_tlv({.vsan = kVsan, .name = kProd, .message_type = 1})));
  REQUIRE(info.size() == 4 + 4 + 158 + 4 + 196);
  const test::Bytes file(info.begin() + 166, info.end());
  CHECK(hex_of({file.begin(), file.begin() + 12}) == "00 0b 00 c4 00 00 01 14 00 03 00 00 ");
  CHECK(hex_of({file.begin() + 4 + 33, file.begin() + 4 + 42}) == "d7 d9 d6 c4 40 40 40 40 00 ");
  CHECK(hex_of({file.begin() + 4 + 91, file.begin() + 4 + 93}) == "c1 c1 ");
}

TEST_CASE_FIXTURE(Files, "File information is listed in order, or walked") {
  const auto walk = [&](const char* name, std::uint32_t type, std::uint32_t vsan = kVsan) {
    return reply(kInfo, tlv_array(file_tlv({.vsan = vsan, .name = name, .message_type = type})));
  };
  const char* const nobody = "00 00 00 00 00 00 00 00";
  CHECK(walk(nobody, 1).size() == 4 + 4 + 158 + 2 * (4 + 196));
  const test::Bytes first = walk(nobody, 2, 0);
  CHECK(be32_at(first, 8 + 120) == kVsan);
  CHECK(first[166 + 4 + 33] == 0xc9);  // IPL
  CHECK(first[166 + 4 + 4] == 1);
  CHECK(walk("c9 d7 d3 40 40 40 40 40", 2)[166 + 4 + 33] == 0xd7);
  CHECK(host32_at(walk(kProd, 2), kStatusAt) == 0x40890040);
  CHECK(host32_at(walk(kTest, 1), kStatusAt) == 0x40890040);
  CHECK(host32_at(walk(nobody, 1, 21), kStatusAt) == 0x40890005);
}

TEST_CASE_FIXTURE(Files, "Blocked, named and prohibited ports are taken in host order") {
  const test::Bytes address = host32(0x1a);
  CHECK(status(kChange, change(blocked_tlv(0x1a, 1), 8)) == 0);
  CHECK(status(kChange,
               change(hex("00 07 00 1d") + address + test::Bytes(24, 0xc2) + hex("00"), 7)) == 0);
  test::Bytes mask = zeros(32);
  mask[0x21 / 8] = 0x80 >> (0x21 % 8);
  CHECK(status(kChange, change(hex("00 17 00 28") + address + host32(0) + mask, 9)) == 0);
  const test::Bytes info = reply(kPortInfo, port_info(0, 0x1a, 0x1a));
  REQUIRE(info.size() == 4 + 4 + 145 + 4 + 107);
  const test::Bytes port(info.begin() + 157, info.end());
  CHECK(host32_at(port, 0) == 0x1a);
  CHECK(host32_at(port, 4) == 0x1a);
  CHECK(host32_at(port, 8) == 0x0100001a);
  CHECK(hex_of({port.begin() + 12, port.begin() + 20}) == "01 01 00 00 00 00 c2 c2 ");
  CHECK(hex_of({port.begin() + 43 + 3, port.begin() + 43 + 6}) == "00 40 00 ");
  const test::Bytes other = reply(kPortInfo, port_info(0, 0x21, 0x21));
  CHECK(other[157 + 43 + 3] == 0x20);  // the other side
}

TEST_CASE_FIXTURE(Files, "Of a batch with one bad entry nothing is applied") {
  CHECK(status(kChange, change(blocked_tlv(1, 1) + blocked_tlv(0xfe, 1), 8)) != 0);
  CHECK(status(kChange, change(blocked_tlv(1, 1) + blocked_tlv(0xff, 1), 8)) != 0);
  CHECK(status(kChange, change(blocked_tlv(1, 1) + blocked_tlv(2, 2), 8)) != 0);
  CHECK(malformed(kChange, change(blocked_tlv(1, 1) + hex("00 07 00 03 02 00 01"), 8)));
  CHECK(malformed(kChange, change(blocked_tlv(1, 1) + hex("00 16 00 02 02 00"), 8)));
  CHECK_FALSE(blocked(1));
  CHECK(status(kChange, change({}, 8)) == 0);  // no entry: nothing to change
  test::Bytes many;
  for (int i = 0; i < 5000; ++i) many = many + blocked_tlv(static_cast<std::uint16_t>(i % 254), 1);
  CHECK(status(kChange, change(many, 8)) == 0);
  CHECK(blocked(0xfd));
}

TEST_CASE_FIXTURE(Files, "Keys that name no edit of the connection are refused") {
  for (const std::uint32_t key : {1U, 2U, 0x7fffffffU, 0xffffffffU}) {
    CAPTURE(key);
    for (const std::uint32_t operation : {3U, 4U, 5U}) {
      CHECK(status(kOperation,
                   tlv_array(file_tlv(
                       {.operation = operation, .vsan = kVsan, .name = kTest, .key = key}))) ==
            0x40890043);
    }
    CHECK(status(kChange, change({}, 8, key)) == 0x40890043);
    CHECK(status(kWriteSaved, change(hex("00 11 00 01 00"), 0, key)) == 0x40890043);
    test::Bytes with_key = port_info(0, 0, 1);
    const test::Bytes bytes = host32(key);
    std::ranges::copy(bytes, with_key.begin() + 8 + 137);
    CHECK(status(kPortInfo, with_key) == 0x40890043);
  }
  const FileAsked open{.operation = 1, .vsan = kVsan, .name = kTest};
  REQUIRE(status(kOperation, tlv_array(file_tlv(open)), 5) == 0);
  CHECK(status(kChange, change({}, 8, 1), 6) == 0x40890043);  // another connection's
}

TEST_CASE_FIXTURE(Files, "Operations that are none, and VSANs without FICON, are refused") {
  for (const std::uint32_t operation : {0U, 7U, 8U, 9U, 11U, 12U, 13U, 0xffffffffU}) {
    CAPTURE(operation);
    CHECK(status(kOperation,
                 tlv_array(file_tlv({.operation = operation, .vsan = kVsan, .name = kTest}))) ==
          status(kChange, change({}, 1)));
  }
  for (const std::uint32_t operation : {1U, 2U, 6U, 10U}) {
    CAPTURE(operation);
    const FileAsked asked{.operation = operation, .vsan = 0xfffffff1, .name = kTest};
    CHECK(status(kOperation, tlv_array(file_tlv(asked))) != 0);
  }
  const FileAsked unknown{.operation = 1, .vsan = kVsan, .name = kTest, .requester = 9};
  CHECK(status(kOperation, tlv_array(file_tlv(unknown))) != 0);
  CHECK(model.find_vsan(kVsan)->files.named.size() == 2);
}

TEST_CASE_FIXTURE(Files, "File requests that are not well-formed") {
  const test::Bytes file = tlv_array(file_tlv({.vsan = kVsan, .name = kProd, .message_type = 1}));
  for (const std::uint32_t opcode : {kOperation, kInfo, kReadSaved}) {
    CAPTURE(opcode);
    CHECK(malformed_when_cut(opcode, file));
    CHECK(malformed(opcode, tlv_array(file_tlv({}) + file_tlv({}))));  // which of them?
    CHECK(malformed(opcode, tlv_array(hex("00 06 00 9d") + zeros(157))));
    CHECK(malformed(opcode, tlv_array(hex("00 0c 00 9e") + zeros(158))));
    CHECK(malformed(opcode, tlv_array({})));
    CHECK(malformed(opcode, hex("ff ff ff ff 00 06 ff ff")));
  }
  CHECK(malformed_when_cut(kChange, change(hex("00 16 00 03 00 00 01"), 8)));
  CHECK(malformed_when_cut(kWriteSaved, change(hex("00 11 00 02 01 02"), 0)));
  CHECK(malformed(kWriteSaved, file));
  CHECK(malformed(kChange, change({}, 11)));  // a header request without header
  CHECK(malformed(kChange, change(hex("00 19 00 7f") + zeros(127), 11)));
}

TEST_CASE_FIXTURE(Files, "Port information: ranges of any size, and requests that make no sense") {
  constexpr std::size_t kNone = 4 + 4 + 145;
  CHECK(reply(kPortInfo, port_info(0, 0, 0xffffffff)).size() == kNone + 254 * (4 + 107));
  CHECK(reply(kPortInfo, port_info(0, 0xfd, 0)).size() == kNone);
  CHECK(reply(kPortInfo, port_info(0, 0xfe, 0xff)).size() == kNone);
  CHECK(reply(kPortInfo, port_info(2, 0, 0xffffffff)).size() > kNone);
  CHECK(reply(kPortInfo, port_info(0, 512, 0, 2)).size() == kNone + 4 + 107);
  CHECK(status(kPortInfo, port_info(0, 0xfd, 0, 2)) != 0);
  CHECK(status(kPortInfo, port_info(2, 0xffffffff, 0, 2)) != 0);
  CHECK(status(kPortInfo, port_info(0, 0, 1, 1, 21)) == 0x40890005);
  CHECK(status(kPortInfo, port_info(7, 0, 1)) != 0);
  CHECK(malformed_when_cut(kPortInfo, port_info(0, 0, 1)));
  test::Bytes other_range = port_info(0, 0, 1);
  other_range[kNone + 1] = 0x20;  // interfaces, where addresses are asked for
  CHECK(malformed(kPortInfo, other_range));
  CHECK(malformed(kPortInfo, port_info(0, 0, 1) + hex("00 08 00 08") + zeros(8)));
}

TEST_CASE_FIXTURE(Files, "Saved files: slices beyond the end, and offsets beyond any file") {
  const auto read = [&](std::uint32_t slice) {
    return reply(kReadSaved, tlv_array(file_tlv({.vsan = kVsan, .name = kProd, .key = slice})));
  };
  const test::Bytes first = read(0);
  REQUIRE(first.size() == 4 + 4 + 14622 + 4 + 158);
  CHECK(hex_of({first.begin() + 4, first.begin() + 20}) ==
        "00 11 39 1e 46 43 46 47 00 01 00 fe 00 00 39 1e ");
  for (const std::uint32_t slice : {1U, 2U, 65536U, 0xffffffffU}) {
    CAPTURE(slice);
    const test::Bytes empty = read(slice);
    REQUIRE(empty.size() == 4 + 4 + 4 + 158);
    CHECK(host32_at(empty, 4 + 4 + 4 + 141) == 0);
  }
  const FileAsked open{.operation = 1, .vsan = kVsan, .name = kProd};
  const std::uint32_t key = host32_at(reply(kOperation, tlv_array(file_tlv(open))), 8 + 133);
  for (const std::uint32_t offset : {0xffffffffU, 0xfffffffeU, 0x80000000U, 0x100000U}) {
    CAPTURE(offset);
    const FileAsked asked{
        .vsan = kVsan, .name = kProd, .key = key, .data_offset = offset, .requester = 1};
    CHECK(status(kWriteSaved, tlv_array(file_tlv(asked) + hex("00 11 00 02 01 02"))) == 0x4089004d);
  }
  const FileAsked last{.vsan = kVsan, .name = kProd, .key = key, .data_offset = 0xffffe};
  CHECK(status(kWriteSaved, tlv_array(file_tlv(last) + hex("00 11 00 02 01 02"))) == 0);
}
