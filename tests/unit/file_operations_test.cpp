/** Operations on whole files: the record byte by byte, names, replies, lock and code page. */
#include <doctest/doctest.h>

#include "unit/file_world.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kRequester = 0x01020304;
constexpr std::uint32_t kOperation = 0x55667788;
constexpr std::uint32_t kKey = 0xa1b2c3d4;

/** The record's fields in the golden request, behind the two heads. */
constexpr std::size_t kOperationAt = 8 + 116, kNameAt = 8 + 124, kKeyAt = 8 + 133;
const Bytes kEbcdicName = {0xd5, 0xc1, 0xd4, 0xc5, 0x6d, 0xf1, 0x60, 0xc2};

std::uint32_t send_operation(ScriptedPlatform& platform, std::uint32_t operation, char* name,
                             std::uint32_t convert, const std::uint32_t* key = &kKey) {
  mts_msg_ref_t msg{};
  const auto status =
      ficon_cmi_file_ops_nonblock(kRequester, platform.handle(), "VSH", "UNKNOWN", 5, kFileVsan,
                                  operation, name, key, convert, 37, &msg);
  if (status == 0) mts_drop(platform.handle(), &msg);
  return status;
}

Golden request(std::uint32_t operation, const Bytes& name) {
  return golden("file_request.hex")
      .with(kOperationAt, be32(operation), "operation")
      .with(kNameAt, name, "file name");
}

struct Outputs {
  std::uint32_t key = 0x99;
  std::uint8_t flag = 0x88;
  std::uint32_t status = 0x77;
};

std::uint32_t parse(const Bytes& reply, Outputs& out) {
  ScriptedPlatform platform;
  return ficon_cmi_parse_file_ops(platform.received(reply), &out.key, &out.flag, &out.status);
}

Bytes answer_record(std::uint32_t key, std::uint8_t flag, std::uint32_t status) {
  return record(158).host32(133, key).u8(145, flag).host32(141, status);
}

std::uint32_t operate(ScriptedPlatform& platform, std::uint32_t operation, char* name,
                      Outputs& out) {
  return ficon_cmi_file_ops(kRequester, platform.handle(), "VSH", "UNKNOWN", 5, kFileVsan,
                            operation, name, &out.key, &out.flag, &out.status);
}

}  // namespace

TEST_CASE("file operation: the record, its name converted and upper-cased in the caller's buffer") {
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  platform.expect_send(7861, golden("file_request.hex"));
  Name name("name_1-b");
  CHECK(send_operation(platform, kOperation, name, 1) == 0);
  CHECK(std::string(name.text) == "NAME_1-B");
  CHECK(platform.lines({"ficon_init_cmi_hdr", "tlv_aligned_array_add_tlv", "mts_send"}) ==
        "ficon_init_cmi_hdr 3 \"VSH\" \"UNKNOWN\" 46\n"
        "tlv_aligned_array_add_tlv capacity=2048 type=6 length=158\n"
        "mts_send node=0xfe000000 sap=101 opcode=7861 length=166 options=1,1\n");
  CHECK(platform.finished());
}

TEST_CASE("file operation: names of every length are padded with EBCDIC blanks") {
  for (std::size_t length = 1; length <= 8; ++length) {
    CAPTURE(length);
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    Bytes field(kEbcdicName.begin(), kEbcdicName.begin() + static_cast<std::ptrdiff_t>(length));
    field.resize(8, 0x40);
    platform.expect_send(7861, request(1, field));
    Name name(std::string("name_1-b").substr(0, length));
    CHECK(send_operation(platform, 1, name, 1) == 0);
    CHECK(platform.finished());
  }
}

TEST_CASE("file operation: without conversion the eight bytes go as they are") {
  for (const std::uint32_t convert : {0U, 2U, 0xffffffffU}) {
    ScriptedPlatform platform;
    const Bytes raw = {0x00, 0xff, 'a', 0x40, 0, 1, 2, 3};
    platform.expect_send(7861, request(kOperation, raw));
    char name[8];
    std::memcpy(name, raw.data(), 8);
    CHECK(send_operation(platform, kOperation, name, convert) == 0);
    CHECK(platform.finished());
  }
}

TEST_CASE("file operation: no name is eight zero bytes, no key is zero") {
  ScriptedPlatform platform;
  platform.expect_send(7861, request(1, zeros(8)).with(kKeyAt, zeros(4), "no key"));
  CHECK(send_operation(platform, 1, nullptr, 1, nullptr) == 0);
  CHECK(platform.finished());
}

TEST_CASE("file operation: the key in host order beside an operation in big-endian") {
  ScriptedPlatform platform;
  platform.expect_send(7861);
  const std::uint32_t key = 1;
  CHECK(send_operation(platform, 1, nullptr, 1, &key) == 0);
  const Bytes sent = platform.sent(7861).at(0);
  CHECK(Bytes(&sent[kOperationAt], &sent[kOperationAt + 4]) == Bytes{0, 0, 0, 1});
  CHECK(Bytes(&sent[kKeyAt], &sent[kKeyAt + 4]) == host32(1));
}

TEST_CASE("file operation: a name that is not allowed is refused before anything is sent") {
  struct Case {
    std::string name;
    std::uint32_t status;
  };
  for (const Case& c : {Case{" A", 0x4085001d}, Case{"", 0x4085001d}, Case{"NINECHARS", 0x4085001f},
                        Case{"A*", 0x40850020}}) {
    CAPTURE(c.name);
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    Name name(c.name);
    CHECK(send_operation(platform, 1, name, 1) == c.status);
    CHECK(platform.count("mts_send") == 0);
  }
  ScriptedPlatform platform;
  play_converter(platform, [](auto&&...) { return std::optional(Bytes{0x81}); });
  Name name("a");
  CHECK(send_operation(platform, 1, name, 1) == 0x4085001e);
}

TEST_CASE("deleting: IPL is refused, however it is written, and the buffer holds it normalised") {
  for (const std::string written : {"IPL", "ipl", "ipl  ", "Ipl\t\n ", "iPL \v\f\r"}) {
    for (const std::uint32_t convert : {0U, 1U}) {
      CAPTURE(written);
      ScriptedPlatform platform;
      play_converter(platform, ebcdic);
      Name name(written);
      CHECK(send_operation(platform, 2, name, convert) == 0x40850017);
      CHECK(std::string(name.text) == "IPL");
      CHECK(platform.count("mts_send") == 0);
      CHECK(platform.count("convert") == 0);
    }
  }
}

TEST_CASE("deleting: names near IPL are sent, upper-cased and without what is behind them") {
  struct Case {
    std::string written, kept;
    Bytes field;
  };
  for (const Case& c :
       {Case{"ipla", "IPLA", {0xc9, 0xd7, 0xd3, 0xc1, 0x40, 0x40, 0x40, 0x40}},
        Case{"ip  ", "IP", {0xc9, 0xd7, 0x40, 0x40, 0x40, 0x40, 0x40, 0x40}},
        Case{"i pl \t", "I PL", {0xc9, 0x40, 0xd7, 0xd3, 0x40, 0x40, 0x40, 0x40}},
        Case{"a         ", "A", {0xc1, 0x40, 0x40, 0x40, 0x40, 0x40, 0x40, 0x40}}}) {
    CAPTURE(c.written);
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    platform.expect_send(7861, request(2, c.field));
    Name name(c.written);
    CHECK(send_operation(platform, 2, name, 1) == 0);
    CHECK(std::string(name.text) == c.kept);
    CHECK(platform.finished());
  }
}

TEST_CASE("deleting: blanks alone are no name") {
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  Name name("   ");
  CHECK(send_operation(platform, 2, name, 1) == 0x4085001d);
  CHECK(std::string(name.text).empty());
}

TEST_CASE("deleting: raw names are normalised too, as text") {
  ScriptedPlatform platform;
  platform.expect_send(7861, request(2, {'A', 'B', 0, 0, 0, 'x', 'y', 'z'}));
  char name[8] = {'a', 'b', ' ', ' ', 0, 'x', 'y', 'z'};
  CHECK(send_operation(platform, 2, name, 0) == 0);
  CHECK(platform.finished());
}

TEST_CASE("only deleting takes IPL and trailing blanks apart") {
  for (const std::uint32_t operation : {0U, 1U, 3U, 4U, 5U, 6U, 10U, 0xffffffffU}) {
    CAPTURE(operation);
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    platform.expect_send(7861,
                         request(operation, {0xc9, 0xd7, 0xd3, 0x40, 0x40, 0x40, 0x40, 0x40}));
    Name name("ipl ");
    CHECK(send_operation(platform, operation, name, 1) == 0);
    CHECK(std::string(name.text) == "IPL ");
    CHECK(platform.finished());
  }
}

TEST_CASE("file operation reply: key, flag and status as they stand, each only where wanted") {
  Outputs out;
  CHECK(parse(golden("file_answer.hex").bytes(), out) == 0x71727374);
  CHECK(out.key == 0xa1b2c3d4);
  CHECK(out.flag == 0x81);
  CHECK(out.status == 0x71727374);
  ScriptedPlatform platform;
  CHECK(ficon_cmi_parse_file_ops(platform.received(golden("file_answer.hex").bytes()), nullptr,
                                 nullptr, nullptr) == 0x71727374);
  CHECK(platform.printed().empty());
}

TEST_CASE("file operation reply: the last record counts, and the first refusal ends it") {
  Outputs out;
  CHECK(parse(tlvs().add(6, answer_record(1, 2, 0)).add(6, answer_record(3, 4, 7)), out) == 7);
  CHECK(out.key == 3);
  CHECK(out.flag == 4);
  CHECK(out.status == 7);
  CHECK(parse(tlvs().add(6, answer_record(1, 2, 8)).add(6, answer_record(3, 4, 0)), out) == 8);
  CHECK(out.key == 1);
  CHECK(parse(tlvs().add(25, zeros(9)).add(6, answer_record(5, 6, 0)), out) == 0);
  CHECK(out.key == 5);
  CHECK(out.status == 0);
}

TEST_CASE("file operation reply: without the record it is success, and nothing is told") {
  Outputs out;
  CHECK(parse(tlvs().add(12, record(128).host32(124, 9)), out) == 0);
  CHECK(out.key == 0x99);
  CHECK(out.flag == 0x88);
  CHECK(out.status == 0x77);
}

TEST_CASE("file operation reply: no TLVs or no payload is told on the console") {
  for (const bool empty : {true, false}) {
    ScriptedPlatform platform;
    mts_msg_ref_t* reply = empty ? platform.received(tlvs()) : platform.received_without_payload();
    CHECK(ficon_cmi_parse_file_ops(reply, nullptr, nullptr, nullptr) == 0x40850003);
    CHECK(platform.printed() == "invalid cmi payload: no tlvs present\n");
  }
}

TEST_CASE(
    "file operation reply: a short record reads as zeros, a lying length is the walk's error") {
  Outputs out;
  CHECK(parse(tlvs().add(6, Bytes(141, 0xff)), out) == 0);
  CHECK(parse(tlvs().add(6, {}), out) == 0);
  CHECK(parse(tlvs().add_claiming(6, 5000, zeros(158)), out) == 0x40aa0100);
}

TEST_CASE("file operation, blocking: check, lock, code page, request, reply dropped, lock free") {
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  platform.ficon_enabled_on({kFileVsan}).lock_granted();
  expect_codepage(platform);
  platform.expect_send(7861, golden("file_request.hex").with(kKeyAt, host32(0x99), "the key in"))
      .reply(golden("file_answer.hex").bytes());
  Outputs out;
  Name name("name_1-b");
  CHECK(operate(platform, kOperation, name, out) == 0x71727374);
  CHECK(out.key == 0xa1b2c3d4);  // in and out
  CHECK(out.flag == 0x81);
  CHECK(out.status == 0x71727374);
  CHECK(platform.lines({"convert"}) == "convert from=1 to=16842807 length=8\n");
  CHECK(platform.order() == kEnabledCheck + ", " + kLockExchange + ", " + kCodepageExchange +
                                ", ficon_get_convert_fn_ptr, convert, " + exchange_of(7861) + ", " +
                                kLockExchange);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("file operation, blocking: without FICON it goes unlocked") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({});
  expect_codepage(platform);
  platform.expect_send(7861, request(4, zeros(8)).with(kKeyAt, zeros(4)))
      .reply(tlvs().add(6, answer_record(0, 0, 0)));
  CHECK(ficon_cmi_file_ops(kRequester, platform.handle(), "VSH", "UNKNOWN", 5, kFileVsan, 4,
                           nullptr, nullptr, nullptr, nullptr) == 0);
  CHECK(platform.sent(7874).empty());
  CHECK(platform.finished());
}

TEST_CASE("file operation, blocking: without the lock nothing is asked") {
  ScriptedPlatform refused;
  refused.ficon_enabled_on({kFileVsan}).lock_answers({0x40890055});
  Outputs out;
  CHECK(operate(refused, 1, nullptr, out) == 0x40850012);
  CHECK(refused.sent(7855).empty());
  CHECK(refused.finished());
}

TEST_CASE("file operation, blocking: without a code page the lock is freed again") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({kFileVsan}).lock_granted();
  expect_codepage(platform, 0);
  Outputs out;
  CHECK(operate(platform, 1, nullptr, out) == 0x40850004);
  CHECK(platform.sent(7874).size() == 2);
  CHECK(platform.sent(7861).empty());
  CHECK(platform.finished());
}

TEST_CASE("file operation, blocking: a time-out, another receive error, a refused name") {
  for (const std::int32_t error : {62, 5}) {
    ScriptedPlatform platform;
    platform.ficon_enabled_on({kFileVsan}).lock_granted();
    expect_codepage(platform);
    platform.expect_send(7861).recv_errors({4, 4, error});
    Outputs out;
    CHECK(operate(platform, 1, nullptr, out) == (error == 62 ? 0x40850043 : 0x40850000));
    CHECK(out.key == 0x99);
    CHECK(platform.finished());
  }
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  platform.ficon_enabled_on({kFileVsan}).lock_granted();
  expect_codepage(platform);
  Outputs out;
  Name name("ipl");
  CHECK(operate(platform, 2, name, out) == 0x40850017);
  CHECK(platform.finished());
}
