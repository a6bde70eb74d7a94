/** Character conversion, every byte of every page, against the C library's own tables. */
#include <doctest/doctest.h>
#include <iconv.h>
#include <platform/ficon_base.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr std::uint32_t kAscii = 1;
constexpr std::uint32_t kPages[] = {37,   273,  277,  278,  280,  284,  285,  297,  500,  871, 1047,
                                    1140, 1141, 1142, 1143, 1144, 1145, 1146, 1147, 1148, 1149};

using Bytes = std::vector<std::uint8_t>;
/** The Unicode character of each byte; none where the page has none. */
using Table = std::array<std::optional<char32_t>, 256>;

std::optional<char32_t> character_of(iconv_t converter, char byte) {
  char out[8];
  char* in = &byte;
  char* cursor = out;
  std::size_t in_left = 1, room = sizeof out;
  iconv(converter, nullptr, nullptr, nullptr, nullptr);
  if (iconv(converter, &in, &in_left, &cursor, &room) == static_cast<std::size_t>(-1)) {
    return std::nullopt;
  }
  REQUIRE(cursor - out == 4);
  char32_t character = 0;
  for (int i = 0; i < 4; ++i) character = character << 8 | static_cast<std::uint8_t>(out[i]);
  return character;
}

/**
 * Bytes at which the C library's table of a national page is at odds with its own table of the same
 * page with the euro sign, which agrees with the published one. These are as published.
 */
struct Correction {
  std::uint32_t page;
  std::uint8_t byte;
  char32_t character;
  std::uint32_t euro_page;
};
constexpr Correction kCorrections[] = {
    {278, 0x71, U'\\', 1143}, {278, 0xe0, 0xc9, 1143},  // backslash and E acute
    {285, 0xa1, 0xaf, 1146},                            // macron, for which overline stands there
    {871, 0x4a, 0xde, 1149},  {871, 0xc0, 0xfe, 1149},  // capital and small thorn
};

Table table_of(std::uint32_t page) {
  Table table;
  if (page == kAscii) {
    for (std::size_t byte = 0; byte < 128; ++byte) table[byte] = static_cast<char32_t>(byte);
    return table;
  }
  const std::string number = std::to_string(page);
  const std::string name =
      "IBM" + std::string(number.size() < 3 ? 3 - number.size() : 0, '0') + number;
  const iconv_t converter = iconv_open("UCS-4BE", name.c_str());
  REQUIRE(converter != reinterpret_cast<iconv_t>(-1));
  for (std::size_t byte = 0; byte < table.size(); ++byte) {
    table[byte] = character_of(converter, static_cast<char>(byte));
  }
  iconv_close(converter);
  for (const Correction& c : kCorrections) {
    if (c.page == page) table[c.byte] = c.character;
  }
  return table;
}

/** What a byte of one table is in the other. */
std::optional<std::uint8_t> expected(const Table& from, const Table& to, std::size_t byte) {
  for (std::size_t i = 0; from[byte] && i < to.size(); ++i) {
    if (to[i] == from[byte]) return static_cast<std::uint8_t>(i);
  }
  return std::nullopt;
}

struct Outcome {
  bool converted;
  Bytes output;
};

Outcome convert(const Bytes& input, std::uint32_t from, std::uint32_t to,
                std::uint32_t room = 100) {
  Bytes buffer(room + 1, 0x5a);
  std::uint8_t* cursor = buffer.data();
  std::uint32_t count = 0, space = room;
  const bool converted =
      ficon_get_convert_fn_ptr()(input.data(), static_cast<std::uint32_t>(input.size()), from,
                                 &cursor, &count, &space, to) != 0;
  CHECK(count <= room);
  CHECK(cursor == buffer.data() + count);
  CHECK(space == room - count);
  CHECK(buffer[room] == 0x5a);
  buffer.resize(count);
  return {converted, buffer};
}

/** Every byte from one code set to another, one at a time. */
void check_all_bytes(std::uint32_t from, std::uint32_t to) {
  CAPTURE(from);
  CAPTURE(to);
  const Table source = table_of(from), target = table_of(to);
  for (std::size_t byte = 0; byte < 256; ++byte) {
    CAPTURE(byte);
    const auto wanted = expected(source, target, byte);
    const auto [converted, output] = convert({static_cast<std::uint8_t>(byte)}, from, to);
    CHECK(converted == wanted.has_value());
    if (wanted && converted) CHECK(int{output.at(0)} == int{*wanted});
  }
}

}  // namespace

TEST_CASE("conversion: every byte of every page to ASCII, and every ASCII byte to every page") {
  for (const std::uint32_t page : kPages) {
    check_all_bytes(page, kAscii);
    check_all_bytes(kAscii, page);
  }
}

TEST_CASE(
    "conversion: every byte of every page to and from another page, letters beyond ASCII too") {
  for (const std::uint32_t page : kPages) {
    for (const std::uint32_t other : {500U, 1148U}) {
      check_all_bytes(page, other);
      check_all_bytes(other, page);
    }
  }
}

TEST_CASE("conversion: what is corrected in the second source is so on the sibling page") {
  for (const Correction& c : kCorrections) {
    CAPTURE(c.page);
    CHECK(table_of(c.euro_page)[c.byte] == c.character);
  }
}

TEST_CASE("conversion: the letters and digits that every page shares") {
  for (const std::uint32_t page : kPages) {
    CAPTURE(page);
    CHECK(convert({'A', 'I', 'J', 'R', 'S', 'Z', '0', '9', ' ', '-', '_'}, kAscii, page).output ==
          Bytes{0xc1, 0xc9, 0xd1, 0xd9, 0xe2, 0xe9, 0xf0, 0xf9, 0x40, 0x60, 0x6d});
    CHECK(convert({0x81, 0x89, 0x91, 0x99, 0xa2, 0xa9}, page, kAscii).output ==
          Bytes{'a', 'i', 'j', 'r', 's', 'z'});
  }
}

TEST_CASE("conversion: pages that do not exist, from and to, and texts that are empty") {
  for (const std::uint32_t missing : {0U, 2U, 38U, 999U, 65535U, 0xffffffffU}) {
    CAPTURE(missing);
    CHECK_FALSE(convert({'A'}, kAscii, missing).converted);
    CHECK_FALSE(convert({0xc1}, missing, kAscii).converted);
    std::uint8_t text[1] = {'A'};
    CHECK(convert_codepage(kAscii, missing, text, 1) != 0);
    CHECK(convert_codepage(missing, kAscii, text, 1) != 0);
    CHECK(text[0] == 'A');
  }
  CHECK(convert({}, kAscii, 37).converted);
  CHECK(convert({}, kAscii, 37).output.empty());
}

TEST_CASE("conversion: pages of more than one byte a character are none") {
  for (const std::uint32_t page : {930U, 935U, 939U, 1200U, 1208U}) {
    CAPTURE(page);
    CHECK_FALSE(convert({0x41}, page, kAscii).converted);
  }
}

TEST_CASE("conversion: a character that the page lacks fails the whole text") {
  // e acute is in 037 and not in ASCII; the euro is in 1140 and not in 037
  CHECK_FALSE(convert({0xc1, 0x51, 0xc2}, 37, kAscii).converted);
  CHECK(convert({0x9f}, 1140, 1148).output == Bytes{0x9f});
  CHECK_FALSE(convert({0x9f}, 1140, 37).converted);
  CHECK_FALSE(convert({'A', 0x80, 'B'}, kAscii, 37).converted);
}

TEST_CASE("conversion: the room is the caller's, to the byte") {
  CHECK(convert(Bytes(100, 'A'), kAscii, 37).output == Bytes(100, 0xc1));
  CHECK_FALSE(convert(Bytes(101, 'A'), kAscii, 37).converted);
  CHECK(convert(Bytes(3, 'A'), kAscii, 37, 3).output == Bytes(3, 0xc1));
  CHECK_FALSE(convert(Bytes(4, 'A'), kAscii, 37, 3).converted);
}

TEST_CASE("conversion in place: every page and back, and nothing changed where one byte fails") {
  for (const std::uint32_t page : kPages) {
    CAPTURE(page);
    Bytes text;
    for (int c = 0x20; c < 0x7f; ++c) text.push_back(static_cast<std::uint8_t>(c));
    const Bytes before = text;
    const auto length = static_cast<std::uint32_t>(text.size());
    CHECK(convert_codepage(kAscii, page, text.data(), length) == 0);
    CHECK(text == convert(before, kAscii, page).output);
    CHECK(convert_codepage(page, kAscii, text.data(), length) == 0);
    CHECK(text == before);
  }
  Bytes text = {'A', 'B', 0x80};
  CHECK(convert_codepage(kAscii, 37, text.data(), 3) != 0);
  CHECK(text == Bytes{'A', 'B', 0x80});
}
