/** A file's header and description: what is converted, what passes through, what is refused. */
#include <doctest/doctest.h>

#include "unit/file_world.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kKey = 0xa1b2c3d4;
constexpr std::size_t kRequesterAt = 8 + 112, kNameAt = 8 + 124, kKeyAt = 8 + 133,
                      kHeaderAt = 8 + 158 + 4, kDescriptionAt = kHeaderAt + 32;

/** The header of the golden request before its description is converted. */
ficon_cmi_file_hdr_t ascii_header() {
  Record bytes = record(128).text(32, "Tape pool               ").u8(127, 0x80);
  for (std::size_t i = 0; i < 32; ++i) bytes.u8(i, static_cast<std::uint8_t>(i + 1));
  for (std::size_t i = 56; i < 64; ++i) bytes.u8(i, static_cast<std::uint8_t>(i + 1));
  ficon_cmi_file_hdr_t header;
  std::memcpy(&header, Bytes(bytes).data(), sizeof header);
  return header;
}

std::uint32_t send_header(ScriptedPlatform& platform, std::uint32_t requester, char* name,
                          const std::uint32_t* key, ficon_cmi_file_hdr_t* header) {
  mts_msg_ref_t msg{};
  const auto status = ficon_cmi_file_set_file_hdr_nonblock(
      requester, platform.handle(), "VSH", "UNKNOWN", 5, kFileVsan, name, key, header, &msg);
  if (status == 0) mts_drop(platform.handle(), &msg);
  return status;
}

std::uint32_t describe(ScriptedPlatform& platform, const char* text, std::uint8_t length,
                       char* name) {
  return ficon_cmi_file_set_file_desc(1, platform.handle(), "VSH", "UNKNOWN", 5, kFileVsan, name,
                                      text, length);
}

void script_change(ScriptedPlatform& platform, const Golden& request, std::uint32_t status) {
  play_converter(platform, ebcdic);
  platform.ficon_enabled_on({kFileVsan}).lock_granted();
  expect_codepage(platform);
  platform.expect_send(7866, request).reply(file_answer(status));
}

/** The request of a description: a header of zeros around it, without a key. */
Golden described(const Bytes& description) {
  return golden("file_header.hex")
      .with(kKeyAt, zeros(4), "no key")
      .with(kHeaderAt, zeros(128), "zeros outside the description")
      .with(kDescriptionAt, description, "description");
}

}  // namespace

TEST_CASE("header: name and description converted, the description in the caller's own header") {
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  expect_codepage(platform);
  platform.expect_send(7866, golden("file_header.hex"));
  Name name("name_1-b");
  ficon_cmi_file_hdr_t header = ascii_header();
  CHECK(send_header(platform, 1, name, &kKey, &header) == 0);
  CHECK(platform.lines({"convert", "convert_codepage", "tlv_aligned_array_add_tlv"}) ==
        "tlv_aligned_array_add_tlv capacity=2048 type=12 length=128\n"
        "convert from=1 to=16842807 length=8\n"
        "convert_codepage 1 0x1010037 * 24\n"
        "convert from=1 to=16842807 length=24\n"
        "tlv_aligned_array_add_tlv capacity=10240 type=6 length=158\n"
        "tlv_aligned_array_add_tlv capacity=10240 type=25 length=128\n");
  CHECK(bytes_of(header)[32] == 0xe3);
  CHECK(platform.finished());
}

TEST_CASE("header: without a name the description of operators and agents is still converted") {
  for (const std::uint32_t requester : {1U, 2U}) {
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    expect_codepage(platform);
    platform.expect_send(7866, golden("file_header.hex")
                                   .with(kRequesterAt, be32(requester), "requester")
                                   .with(kNameAt, zeros(8), "no name")
                                   .with(kKeyAt, zeros(4), "no key"));
    ficon_cmi_file_hdr_t header = ascii_header();
    CHECK(send_header(platform, requester, nullptr, nullptr, &header) == 0);
    CHECK(platform.finished());
  }
}

TEST_CASE("header: of all others name and header go as they are, with a name and without") {
  for (const std::uint32_t requester : {0U, 3U, 0xffffffffU}) {
    for (const bool named : {true, false}) {
      ScriptedPlatform platform;
      expect_codepage(platform);
      const Golden request =
          golden("file_header.hex")
              .with(kRequesterAt, be32(requester), "requester")
              .with(kNameAt, named ? Bytes{1, 2, 3, 0, 5, 6, 7, 8} : zeros(8), "name")
              .with(kDescriptionAt, text("Tape pool               "), "description");
      platform.expect_send(7866, request);
      char name[8] = {1, 2, 3, 0, 5, 6, 7, 8};
      ficon_cmi_file_hdr_t header = ascii_header();
      CHECK(send_header(platform, requester, named ? name : nullptr, &kKey, &header) == 0);
      CHECK(bytes_of(header) == bytes_of(ascii_header()));
      CHECK(platform.finished());
    }
  }
}

TEST_CASE("header: none is refused before the code page is asked for") {
  ScriptedPlatform platform;
  Name name("A");
  CHECK(send_header(platform, 1, name, &kKey, nullptr) == 0x40850003);
  CHECK(platform.sent(7855).empty());
  CHECK(platform.finished());
}

TEST_CASE("header: without a code page, or with what cannot be converted, nothing is sent") {
  {
    ScriptedPlatform platform;
    expect_codepage(platform, 0);
    ficon_cmi_file_hdr_t header = ascii_header();
    CHECK(send_header(platform, 3, nullptr, nullptr, &header) == 0x40850004);
    CHECK(platform.finished());
  }
  {
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    expect_codepage(platform);
    ficon_cmi_file_hdr_t header = ascii_header();
    Name name(" A");
    CHECK(send_header(platform, 1, name, nullptr, &header) == 0x4085001d);
    CHECK(bytes_of(header) == bytes_of(ascii_header()));
    CHECK(platform.finished());
  }
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  platform.on.convert_codepage = [](auto&&...) { return 0x40aa0055U; };
  expect_codepage(platform);
  ficon_cmi_file_hdr_t header = ascii_header();
  CHECK(send_header(platform, 1, nullptr, nullptr, &header) == 0x40aa0055);
  CHECK(platform.sent(7866).empty());
  CHECK(platform.finished());
}

TEST_CASE("header, blocking: under the lock, the record's status is the result") {
  ScriptedPlatform platform;
  script_change(platform, golden("file_header.hex"), 0x40890066);
  Name name("name_1-b");
  ficon_cmi_file_hdr_t header = ascii_header();
  CHECK(ficon_cmi_file_set_file_hdr(1, platform.handle(), "VSH", "UNKNOWN", 5, kFileVsan, name,
                                    &kKey, &header) == 0x40890066);
  CHECK(platform.order() == kEnabledCheck + ", " + kLockExchange + ", " + kCodepageExchange +
                                ", ficon_get_convert_fn_ptr, convert, convert_codepage, convert, " +
                                exchange_of(7866) + ", " + kLockExchange);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("description: every length, blanks behind, zeros around") {
  const std::string letters = "ABCDEFGHIJKLMNOPQRSTUVWX";
  const Bytes converted = {0xc1, 0xc2, 0xc3, 0xc4, 0xc5, 0xc6, 0xc7, 0xc8, 0xc9, 0xd1, 0xd2, 0xd3,
                           0xd4, 0xd5, 0xd6, 0xd7, 0xd8, 0xd9, 0xe2, 0xe3, 0xe4, 0xe5, 0xe6, 0xe7};
  for (std::uint8_t length = 1; length <= 24; ++length) {
    CAPTURE(int{length});
    ScriptedPlatform platform;
    Bytes expected(converted.begin(), converted.begin() + length);
    expected.resize(24, 0x40);
    script_change(platform, described(expected), 0);
    Name name("name_1-b");
    CHECK(describe(platform, letters.c_str(), length, name) == 0);
    CHECK(platform.finished());
  }
}

TEST_CASE("description: too short, too long, none, or for no file") {
  ScriptedPlatform platform;
  Name name("A");
  const char* text = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  CHECK(describe(platform, text, 0, name) == 0x40850003);
  CHECK(describe(platform, text, 25, name) == 0x40850003);
  CHECK(describe(platform, text, 255, name) == 0x40850003);
  CHECK(describe(platform, nullptr, 5, name) == 0x40850003);
  CHECK(describe(platform, text, 5, nullptr) == 0x40850003);
  CHECK(platform.calls().empty());
}

TEST_CASE("description: a buffer with zeros in it is taken byte for byte") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({});
  play_converter(platform, unchanged);
  expect_codepage(platform);
  Bytes description = {'A', 0, 'B'};
  description.resize(24, ' ');
  platform
      .expect_send(7866, described(description)
                             .with(kRequesterAt, be32(3), "requester")
                             .with(kNameAt, {1, 2, 3, 4, 5, 6, 7, 8}, "name"))
      .reply(file_answer(0));
  char name[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  const char text[3] = {'A', 0, 'B'};
  CHECK(ficon_cmi_file_set_file_desc(3, platform.handle(), "VSH", "UNKNOWN", 5, kFileVsan, name,
                                     text, 3) == 0);
  CHECK(platform.finished());
}
