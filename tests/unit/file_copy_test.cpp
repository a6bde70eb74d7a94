/** The copy of a file: whose names are converted, and what is needed for it. */
#include <doctest/doctest.h>

#include "unit/file_world.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kCopy = 12;

/** The record's fields in the golden request, behind the two heads. */
constexpr std::size_t kRequesterAt = 8 + 112, kOperationAt = 8 + 116, kNameAt = 8 + 124,
                      kKeyAt = 8 + 133, kSecondNameAt = 8 + 149;
const Bytes kEbcdicName = {0xd5, 0xc1, 0xd4, 0xc5, 0x6d, 0xf1, 0x60, 0xc2};

std::uint32_t send_copy(ScriptedPlatform& platform, std::uint32_t requester, char* source,
                        char* destination) {
  mts_msg_ref_t msg{};
  const auto status = ficon_cmi_file_copy_nonblock(requester, platform.handle(), "VSH", "UNKNOWN",
                                                   5, kFileVsan, source, destination, &msg);
  if (status == 0) mts_drop(platform.handle(), &msg);
  return status;
}

Golden copy_request(std::uint32_t requester, const Bytes& source, const Bytes& destination) {
  return golden("file_request.hex")
      .with(kOperationAt, be32(kCopy), "operation")
      .with(kNameAt, source, "file name")
      .with(kRequesterAt, be32(requester), "requester")
      .with(kKeyAt, zeros(4), "a copy has no key")
      .with(kSecondNameAt, destination, "destination");
}

const Bytes kDestination = {0xe9, 0xf9, 0x40, 0x40, 0x40, 0x40, 0x40, 0x40};  // Z9

}  // namespace

TEST_CASE("copy: operators and agents give ASCII names, which are converted, source first") {
  for (const std::uint32_t requester : {1U, 2U}) {
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    expect_codepage(platform);
    platform.expect_send(7866, copy_request(requester, kEbcdicName, kDestination));
    Name source("name_1-b"), destination("z9");
    CHECK(send_copy(platform, requester, source, destination) == 0);
    CHECK(platform.lines({"convert", "tlv_aligned_array_add_tlv"}) ==
          "tlv_aligned_array_add_tlv capacity=2048 type=12 length=128\n"
          "convert from=1 to=16842807 length=8\n"
          "convert from=1 to=16842807 length=2\n"
          "tlv_aligned_array_add_tlv capacity=10240 type=6 length=158\n");
    CHECK(std::string(destination.text) == "Z9");
    CHECK(platform.order() == kCodepageExchange + ", ficon_get_convert_fn_ptr, convert, " +
                                  "ficon_get_convert_fn_ptr, convert, send 7866, drop request");
    CHECK(platform.finished());
  }
}

TEST_CASE("copy: all others give raw names, and need the code page all the same") {
  for (const std::uint32_t requester : {0U, 3U, 0xffffffffU}) {
    char source[8] = {'a', 'b', 0, 0x7f, 1, 2, 3, 4}, destination[8] = {9, 8, 7, 6, 5, 4, 3, 2};
    {
      ScriptedPlatform platform;
      expect_codepage(platform);
      platform.expect_send(
          7866, copy_request(requester, {'a', 'b', 0, 0x7f, 1, 2, 3, 4}, {9, 8, 7, 6, 5, 4, 3, 2}));
      CHECK(send_copy(platform, requester, source, destination) == 0);
      CHECK(platform.finished());
    }
    ScriptedPlatform platform;
    expect_codepage(platform, 0);
    CHECK(send_copy(platform, requester, source, destination) == 0x40850004);
    CHECK(platform.finished());
  }
}

TEST_CASE("copy: a null name is refused before anything else") {
  ScriptedPlatform platform;
  Name name("A");
  CHECK(send_copy(platform, 1, nullptr, name) == 0x40850003);
  CHECK(send_copy(platform, 1, name, nullptr) == 0x40850003);
  CHECK(send_copy(platform, 1, nullptr, nullptr) == 0x40850003);
  CHECK(platform.calls().empty());
}

TEST_CASE("copy: either name can be refused") {
  for (const bool first : {true, false}) {
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    expect_codepage(platform);
    Name bad(" A"), good("B");
    CHECK(send_copy(platform, 1, first ? bad : good, first ? good : bad) == 0x4085001d);
    CHECK(platform.sent(7866).empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("copy, blocking: lock, code page, request, drop, free; the record's status") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({kFileVsan}).lock_granted();
  expect_codepage(platform);
  platform.expect_send(7866).reply(golden("file_answer.hex").bytes());
  char raw[8] = {};
  CHECK(ficon_cmi_file_copy(3, platform.handle(), "VSH", "UNKNOWN", 5, kFileVsan, raw, raw) ==
        0x71727374);
  CHECK(platform.order() == kEnabledCheck + ", " + kLockExchange + ", " + kCodepageExchange + ", " +
                                exchange_of(7866) + ", " + kLockExchange);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("copy, blocking: replies without TLVs or without the record") {
  struct Case {
    Bytes reply;
    std::uint32_t status;
    std::string printed;
  };
  for (const Case& c : {Case{tlvs(), 0x40850003, "invalid cmi payload: no tlvs present\n"},
                        Case{tlvs().add(25, zeros(158)), 3, ""}, Case{file_answer(0), 0, ""}}) {
    ScriptedPlatform platform;
    platform.ficon_enabled_on({kFileVsan}).lock_granted();
    expect_codepage(platform);
    platform.expect_send(7866).reply(c.reply);
    char raw[8] = {};
    CHECK(ficon_cmi_file_copy(3, platform.handle(), "A", "B", 5, kFileVsan, raw, raw) == c.status);
    CHECK(platform.printed() == c.printed);
    CHECK(platform.finished());
  }
}

TEST_CASE("copy, blocking: null names and a refused lock") {
  for (const std::uint32_t lock : {0U, 1U}) {
    ScriptedPlatform platform;
    platform.ficon_enabled_on({kFileVsan}).lock_answers({lock});
    CHECK(ficon_cmi_file_copy(3, platform.handle(), "A", "B", 5, kFileVsan, nullptr, nullptr) ==
          (lock == 0 ? 0x40850003 : 0x40850012));
    CHECK(platform.finished());
  }
}
