/** Saved files: slices read at offsets, blocks written at offsets, of every size. */
#include <doctest/doctest.h>

#include "unit/file_world.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kRequester = 0x01020304;
constexpr std::uint32_t kKey = 0xa1b2c3d4;
constexpr std::size_t kNameAt = 8 + 124, kKeyAt = 8 + 133, kOffsetAt = 8 + 137;

Bytes contents(std::size_t size) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
  return bytes;
}

Bytes with_data(const Bytes& data, std::uint32_t status = 0) {
  return tlvs().add(17, data).add(6, record(158).host32(141, status));
}

struct Slice {
  std::uint32_t status;
  std::uint32_t copied;
  Bytes buffer;
};

/** Parses a reply into a buffer of `room` bytes 0x77. */
Slice slice(const Bytes& reply, std::int32_t offset, std::int32_t room,
            const std::string& printed = "") {
  ScriptedPlatform platform;
  Slice result{0, 0x99, Bytes(room < 0 ? 8 : static_cast<std::size_t>(room) + 1, 0x77)};
  result.status = ficon_cmi_parse_get_saved_file(platform.received(reply), offset,
                                                 result.buffer.data(), room, &result.copied);
  CHECK(platform.printed() == printed);
  CHECK(result.buffer.back() == 0x77);
  if (room >= 0) result.buffer.pop_back();
  return result;
}

std::uint32_t send_get(ScriptedPlatform& platform, char* name, const std::uint32_t* key,
                       std::uint32_t convert) {
  mts_msg_ref_t msg{};
  const auto status = ficon_cmi_get_saved_file_nonblock(
      kRequester, platform.handle(), "VSH", "UNKNOWN", 5, kFileVsan, name, key, convert, 37, &msg);
  if (status == 0) mts_drop(platform.handle(), &msg);
  return status;
}

std::uint32_t send_set(ScriptedPlatform& platform, char* name, const std::uint32_t* key,
                       std::int32_t offset, const Bytes& data, std::uint32_t convert) {
  mts_msg_ref_t msg{};
  const auto status = ficon_cmi_set_saved_file_nonblock(
      kRequester, platform.handle(), "VSH", "UNKNOWN", 5, kFileVsan, name, key, offset, data.data(),
      static_cast<std::uint32_t>(data.size()), convert, 37, &msg);
  if (status == 0) mts_drop(platform.handle(), &msg);
  return status;
}

std::uint32_t set(ScriptedPlatform& platform, const char* name, std::int32_t offset = 0x71727374) {
  Name its(name);
  const Bytes data = {0x91, 0x92, 0x93, 0x94, 0x95};
  return ficon_cmi_set_saved_file(kRequester, platform.handle(), "VSH", "UNKNOWN", 5, kFileVsan,
                                  its, &kKey, offset, data.data(), 5);
}

/** Up to the request of `set`. */
void prepare_set(ScriptedPlatform& platform) {
  platform.ficon_enabled_on({kFileVsan}).lock_granted();
  play_converter(platform, ebcdic);
  expect_codepage(platform);
}

const std::string kNoData = "invalid cmi payload: file data tlv not found\n";
const std::string kNoRecord = "invalid cmi payload: file ops tlv not found\n";

}  // namespace

TEST_CASE("reading: the record, with a name converted or raw, with a key or without") {
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  const Golden request = golden("saved_file_get.hex");
  platform.expect_send(7862, request);
  platform.expect_send(7862,
                       request.with(kNameAt, {'a', 0, 1, 2, 3, 4, 5, 6}).with(kKeyAt, zeros(4)));
  Name name("name_1-b");
  char raw[8] = {'a', 0, 1, 2, 3, 4, 5, 6};
  CHECK(send_get(platform, name, &kKey, 1) == 0);
  CHECK(send_get(platform, raw, nullptr, 0) == 0);
  CHECK(platform.calls({"tlv_aligned_array_add_tlv"}).at(0) ==
        "tlv_aligned_array_add_tlv capacity=2048 type=6 length=158");
  CHECK(platform.finished());
}

TEST_CASE("reading: saved files of every size, by offset and room") {
  for (const std::size_t size : {0U, 1U, 300U, 65535U}) {
    const Bytes data = contents(size);
    const Bytes reply = with_data(data);
    const auto length = static_cast<std::int32_t>(size);
    for (const std::int32_t offset : {0, 1, length / 2, length - 1, length}) {
      if (offset < 0 || offset > length) continue;
      for (const std::int32_t room : {0, 1, length - offset, length + 10}) {
        CAPTURE(size);
        CAPTURE(offset);
        CAPTURE(room);
        const Slice got = slice(reply, offset, room);
        CHECK(got.status == 0);
        const std::int32_t copied = std::min(room, length - offset);
        CHECK(got.copied == static_cast<std::uint32_t>(copied));
        Bytes expected(data.begin() + offset, data.begin() + offset + copied);
        expected.resize(static_cast<std::size_t>(room), 0x77);
        CHECK(difference(expected, got.buffer) == "");
      }
    }
  }
}

TEST_CASE("reading: from the end there is nothing, beyond it and before 0 it is refused") {
  const Bytes reply = golden("saved_file_answer.hex").bytes();
  CHECK(slice(reply, 6, 10).status == 0);
  CHECK(slice(reply, 6, 10).copied == 0);
  for (const std::int32_t offset : {7, 0x7fffffff, -1, static_cast<std::int32_t>(0x80000000)}) {
    const Slice got = slice(reply, offset, 10);
    CHECK(got.status == 0x40850003);
    CHECK(got.copied == 0);
    CHECK(got.buffer == Bytes(10, 0x77));
  }
  CHECK(slice(reply, 2, 3).buffer == Bytes{0x93, 0x94, 0x95});
}

TEST_CASE("reading: less than no room is refused") {
  const Slice got = slice(golden("saved_file_answer.hex").bytes(), 0, -1);
  CHECK(got.status == 0x40850003);
  CHECK(got.copied == 0);
  CHECK(got.buffer == Bytes(8, 0x77));
}

TEST_CASE("reading: the data has to come first, and the record second") {
  const Bytes good = record(158), refused = record(158).host32(141, 0x40890066);
  struct Case {
    Bytes reply;
    std::uint32_t status;
    std::string printed;
  };
  for (const Case& c :
       {Case{tlvs(), 0x40850003, "invalid cmi payload: no tlvs present\n"},
        Case{tlvs().add(6, good).add(17, {1, 2}), 0x40850003, kNoData},
        Case{tlvs().add(6, refused).add(17, {1, 2}), 0x40890066, ""},
        Case{tlvs().add(6, refused), 0x40890066, ""}, Case{tlvs().add(6, {}), 0x40850003, kNoData},
        Case{tlvs().add(18, {1, 2}).add(6, good), 0x40850003, kNoData},
        Case{tlvs().add(17, {1, 2}).add(17, {1, 2}), 0x40850003, kNoRecord},
        Case{tlvs().add(17, {1, 2}), 0x40aa0102, ""},  // the walk's own answer at the end
        Case{tlvs().add(17, {1, 2}).add(6, refused), 0x40890066, ""},
        Case{tlvs().add_claiming(17, 60000, {1, 2}), 0x40aa0100, ""},
        Case{tlvs().add(17, {1, 2}).add_claiming(6, 60000, {1}), 0x40aa0100, ""}}) {
    const Slice got = slice(c.reply, 0, 4, c.printed);
    CHECK(got.status == c.status);
    CHECK(got.copied == 0);
    CHECK(got.buffer == Bytes(4, 0x77));
  }
}

TEST_CASE("reading: an offset beyond the data is refused before the record is looked at") {
  CHECK(slice(with_data({1, 2}, 0x40890066), 3, 4).status == 0x40850003);
}

TEST_CASE("reading: no payload is no TLVs, and no one has to be told how much was copied") {
  ScriptedPlatform platform;
  std::uint8_t buffer[8] = {};
  CHECK(ficon_cmi_parse_get_saved_file(platform.received_without_payload(), 0, buffer, 8,
                                       nullptr) == 0x40850003);
  CHECK(platform.printed() == "invalid cmi payload: no tlvs present\n");
  CHECK(ficon_cmi_parse_get_saved_file(platform.received(golden("saved_file_answer.hex").bytes()),
                                       4, buffer, 8, nullptr) == 0);
  CHECK(bytes_of(buffer) == Bytes{0x95, 0x96, 0, 0, 0, 0, 0, 0});
}

TEST_CASE("reading, blocking: code page and query, with neither check nor lock") {
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  expect_codepage(platform);
  platform.expect_send(7862, golden("saved_file_get.hex"))
      .reply(golden("saved_file_answer.hex").bytes());
  Name name("name_1-b");
  std::uint8_t buffer[8] = {};
  std::uint32_t copied = 0;
  CHECK(ficon_cmi_get_saved_file(kRequester, platform.handle(), "VSH", "UNKNOWN", 5, kFileVsan,
                                 name, &kKey, 1, buffer, 8, &copied) == 0);
  CHECK(copied == 5);
  CHECK(bytes_of(buffer) == Bytes{0x92, 0x93, 0x94, 0x95, 0x96, 0, 0, 0});
  CHECK(platform.order() ==
        kCodepageExchange + ", ficon_get_convert_fn_ptr, convert, " + exchange_of(7862));
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("reading, blocking: no code page, a refused name, a failed send, a time-out") {
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  const auto get = [&](const char* name) {
    Name its(name);
    std::uint8_t buffer[8];
    return ficon_cmi_get_saved_file(1, platform.handle(), "A", "B", 5, kFileVsan, its, nullptr, 0,
                                    buffer, 8, nullptr);
  };
  const std::string told = "ficon_cmi_get_saved_file(N):ficon_cmi_get_saved_file_nonblock failed:";
  expect_codepage(platform, 0);
  CHECK(get("A") == 0x40850004);
  CHECK(platform.printed().empty());
  expect_codepage(platform);
  CHECK(get(" A") == 0x4085001d);
  expect_codepage(platform);
  platform.expect_send(7862).fails(32);
  CHECK(get("A") == 0xffffffff);
  CHECK(without_lines(platform.printed()) == told + "1082458141\n" + told + "-1\n");
  expect_codepage(platform);
  platform.expect_send(7862).recv_errors({62});
  CHECK(get("A") == 0x40850043);
  CHECK(platform.finished());
}

TEST_CASE("writing: record and data, with a name converted or raw, with a key or without") {
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  const Golden request = golden("saved_file_set.hex");
  platform.expect_send(7863, request);
  platform.expect_send(7863, request.with(kNameAt, {'a', 0, 1, 2, 3, 4, 5, 6})
                                 .with(kKeyAt, zeros(4))
                                 .with(kOffsetAt, zeros(4)));
  const Bytes data = {0x91, 0x92, 0x93, 0x94, 0x95};
  Name name("name_1-b");
  char raw[8] = {'a', 0, 1, 2, 3, 4, 5, 6};
  CHECK(send_set(platform, name, &kKey, 0x71727374, data, 1) == 0);
  CHECK(send_set(platform, raw, nullptr, 0, data, 2) == 0);
  CHECK(platform.finished());
}

TEST_CASE("writing: blocks of every size; the length field keeps sixteen bits of it") {
  struct Case {
    std::size_t size;
    std::uint16_t length;
  };
  for (const Case& c : {Case{0, 0}, Case{1, 1}, Case{65535, 65535}, Case{65536, 0},
                        Case{70000, 4464}, Case{200000, 3392}}) {
    CAPTURE(c.size);
    ScriptedPlatform platform;
    platform.expect_send(7863);
    char raw[8] = {};
    const Bytes data = contents(c.size);
    CHECK(send_set(platform, raw, nullptr, 0, data, 0) == 0);
    const Bytes sent = platform.sent(7863).at(0);
    REQUIRE(sent.size() == 170U + c.length);
    CHECK(Bytes(&sent[166], &sent[166] + 4) == Bytes{0, 17} + be16(c.length));
    CHECK(difference(Bytes(data.begin(), data.begin() + c.length),
                     Bytes(sent.begin() + 170, sent.end())) == "");
    const std::string size = std::to_string(c.size + 1024);
    const std::string block = "mtrack_alloc module=205 type=2 size=" + size;
    CHECK(platform.lines({"mtrack_alloc", "mtrack_free", "free"}) ==
          block + "\nfree block=" + block + "\n");
    CHECK(platform.calls({"tlv_aligned_array_add_tlv"}).at(1) ==
          "tlv_aligned_array_add_tlv capacity=" + size +
              " type=17 length=" + std::to_string(c.length));
    CHECK(platform.finished());
  }
}

TEST_CASE("writing: without memory, or with a size that wraps, a warning and its own status") {
  for (const std::uint32_t size : {5U, 0xfffffc00U, 0xffffffffU}) {
    ScriptedPlatform platform;
    platform.fail_allocation(1);
    mts_msg_ref_t msg{};
    char raw[8] = {};
    const std::uint8_t data[5] = {};
    CHECK(ficon_cmi_set_saved_file_nonblock(1, platform.handle(), "A", "B", 5, 1, raw, nullptr, 0,
                                            data, size, 0, 37, &msg) == 0x40850010);
    const std::string asked = size == 5 ? "1029" : "-1";  // what wraps is more than anyone has
    CHECK(without_lines(platform.printed()) ==
          "Warning! Malloc Failure in feature/ficon/cmi/tevrak.cpp[N] for size " + asked + "\n");
    CHECK(platform.finished());
  }
}

TEST_CASE("writing: before 0, or under a name that is refused, the buffer is kept") {
  const auto kept = [](const char* name, std::int32_t offset, std::uint32_t status) {
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    Name its(name);
    CHECK(send_set(platform, its, nullptr, offset, Bytes(5), 1) == status);
    CHECK(platform.sent(7863).empty());
    CHECK(platform.leaks() == std::vector<std::string>{"mtrack_alloc module=205 type=2 size=1029"});
    platform.release_leaks();
  };
  kept("A", -1, 0x40850003);
  kept(" A", -1, 0x40850003);  // the offset is looked at first
  kept(" A", 0, 0x4085001d);
  kept("NINECHARS", 0, 0x4085001f);
}

TEST_CASE("writing: arrays that are full and sends that fail release the buffer") {
  for (const int call : {1, 2, 3}) {
    ScriptedPlatform platform;
    platform.expect_send(7863);
    platform.fail_call(call + 1);  // the allocation is the first that can fail
    char raw[8] = {};
    CHECK(send_set(platform, raw, nullptr, 0, Bytes(5), 0) == (call == 3 ? 0xffffffff : kInjected));
    CHECK(platform.leaks().empty());
  }
}

TEST_CASE("writing, blocking: check, lock, code page, request, drop, free") {
  ScriptedPlatform platform;
  prepare_set(platform);
  platform.expect_send(7863, golden("saved_file_set.hex")).reply(file_answer(0x40890066));
  CHECK(set(platform, "name_1-b") == 0x40890066);
  const std::string order = platform.order();
  CHECK(order.starts_with(kEnabledCheck + ", " + kLockExchange + ", " + kCodepageExchange));
  CHECK(order.ends_with("recv, drop reply, " + kLockExchange));
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("writing, blocking: without a code page the lock stays taken") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({kFileVsan}).lock_granted().lock_may_stay();
  expect_codepage(platform, 0);
  CHECK(set(platform, "A") == 0x40850004);
  CHECK(platform.sent(7874).size() == 1);
  CHECK_FALSE(platform.lock_balanced());
  CHECK(platform.finished());
}

TEST_CASE("writing, blocking: a refused lock, a failed send, a reply that does not come") {
  {
    ScriptedPlatform platform;
    platform.ficon_enabled_on({kFileVsan}).lock_answers({0x40890055});
    CHECK(set(platform, "A") == 0x40850012);
    CHECK(platform.finished());
  }
  {
    ScriptedPlatform platform;
    prepare_set(platform);
    platform.expect_send(7863).fails(32);
    CHECK(set(platform, "A") == 0xffffffff);
    CHECK(without_lines(platform.printed()) ==
          "ficon_cmi_set_saved_file(N):ficon_cmi_set_saved_file_nonblock failed:-1\n");
    CHECK(platform.finished());
  }
  ScriptedPlatform platform;
  prepare_set(platform);
  platform.expect_send(7863).recv_errors({4, 62});
  CHECK(set(platform, "A") == 0x40850043);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("writing, blocking: replies without TLVs, without payload, without the record") {
  struct Case {
    Bytes reply;
    std::uint32_t status;
    std::string printed;
  };
  for (const Case& c : {Case{tlvs(), 0x40850003, "invalid cmi payload: no tlvs present\n"},
                        Case{{}, 0x40850003, "invalid cmi payload: no tlvs present\n"},
                        Case{tlvs().add(17, {1}), 3, ""}, Case{file_answer(0), 0, ""}}) {
    ScriptedPlatform platform;
    prepare_set(platform);
    auto& request = platform.expect_send(7863);
    c.reply.empty() ? request.reply_without_payload() : request.reply(c.reply);
    CHECK(set(platform, "A") == c.status);
    CHECK(platform.printed() == c.printed);
    CHECK(platform.finished());
  }
}
