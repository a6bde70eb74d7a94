/** Names between ASCII and EBCDIC: widths, blanks, upper case, marks, and what is refused. */
#include <doctest/doctest.h>

#include "unit/file_world.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kFailed = 0x40850020;
const std::string kUnlinked = "unable to link to char_convert library\n";

void without_converter(ScriptedPlatform& platform) {
  platform.on.ficon_get_convert_fn_ptr = [] { return ficon_convert_fn_t{nullptr}; };
}

std::uint32_t check_name(const Bytes& name) {
  return validate_ebcidic_filename(name.data(), static_cast<std::int32_t>(name.size()));
}

std::uint32_t check_description(const Bytes& text) {
  return validate_ebcidic_filedesc(text.data(), static_cast<std::int32_t>(text.size()));
}

const Bytes kPortName = Bytes(24, 0xc1);  // 24 times A

struct PortName {
  std::uint32_t status;
  std::string text;
};

/** Converts `kPortName` where the converter gives `ascii` for it. */
PortName port_name_from(const Bytes& ascii, std::uint32_t port_address) {
  ScriptedPlatform platform;
  play_converter(platform, [&](const Bytes& input, std::uint32_t from, std::uint32_t to) {
    CHECK(input == kPortName);
    CHECK(from == 37);
    CHECK(to == 1);
    return std::optional(ascii);
  });
  char out[25];
  std::memset(out, 'x', sizeof out);
  const auto status = convert_ebcdic_portname_to_ascii(37, kPortName.data(), out, port_address);
  CHECK(out[24] == 'x');
  CHECK(platform.printed().empty());
  return {status, std::string(out, 24)};
}

}  // namespace

TEST_CASE("the conversion has a name") {
  CHECK(std::string(program_name) == "ascii_ebcdic_convert");
}

TEST_CASE("file name rules: exactly capital letters, digits, hyphen, underscore, inner blanks") {
  for (int value = 0; value < 256; ++value) {
    const auto c = static_cast<std::uint8_t>(value);
    const bool letter =
        (c >= 0xc1 && c <= 0xc9) || (c >= 0xd1 && c <= 0xd9) || (c >= 0xe2 && c <= 0xe9);
    const bool allowed = letter || (c >= 0xf0 && c <= 0xf9) || c == 0x60 || c == 0x6d || c == 0x40;
    CAPTURE(value);
    CHECK(check_name({0xc1, c}) == (allowed ? 0 : 0x4085001e));
    CHECK(check_name({0xc1, 0xc1, 0xc1, 0xc1, 0xc1, 0xc1, 0xc1, c}) == (allowed ? 0 : 0x4085001e));
    CHECK(check_name({c}) == (c == 0x40 ? 0x4085001d : allowed ? 0 : 0x4085001e));
  }
}

TEST_CASE("file name rules: A, blank, B is a name, blank first is not, whatever the length") {
  CHECK(check_name({0xc1, 0x40, 0xc2}) == 0);
  CHECK(check_name({0x40, 0xc1}) == 0x4085001d);
  const std::uint8_t blank = 0x40, bad = 0x81;
  CHECK(validate_ebcidic_filename(&blank, 0) == 0x4085001d);
  CHECK(validate_ebcidic_filename(&blank, -1) == 0x4085001d);
  CHECK(validate_ebcidic_filename(&bad, 0) == 0);
  CHECK(validate_ebcidic_filename(&bad, -1) == 0);
}

TEST_CASE("file name rules: the length is looked at before the characters") {
  CHECK(check_name(Bytes(8, 0xc1)) == 0);
  CHECK(check_name(Bytes(9, 0xc1)) == 0x4085001f);
  CHECK(check_name(Bytes(9, 0x40)) == 0x4085001f);
}

TEST_CASE("description rules: every byte from 0x40 to 0xfe, nothing else") {
  for (int value = 0; value < 256; ++value) {
    CAPTURE(value);
    const bool allowed = value >= 0x40 && value <= 0xfe;
    CHECK(check_description({0x40, static_cast<std::uint8_t>(value)}) ==
          (allowed ? 0 : 0x4085002c));
  }
  const std::uint8_t bad = 0x3f;
  CHECK(validate_ebcidic_filedesc(&bad, 0) == 0);
  CHECK(validate_ebcidic_filedesc(&bad, -5) == 0);
}

TEST_CASE("file name to EBCDIC: names of every length, upper case, blanks behind") {
  const std::string name = "ab1_-z9q";
  const Bytes upper = {0xc1, 0xc2, 0xf1, 0x6d, 0x60, 0xe9, 0xf9, 0xd8};
  for (std::size_t length = 0; length <= 8; ++length) {
    CAPTURE(length);
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    Name ascii(name.substr(0, length));
    Bytes out(9, 0x77);
    CHECK(convert_ascii_filename_to_ebcdic(37, ascii, out.data()) == 0);
    Bytes expected(upper.begin(), upper.begin() + static_cast<std::ptrdiff_t>(length));
    expected.resize(8, 0x40);
    expected.push_back(0x77);
    CHECK(difference(expected, out) == "");
    CHECK(std::string(ascii.text) == std::string("AB1_-Z9Q").substr(0, length));
    CHECK(platform.lines({"convert"}) ==
          "convert from=1 to=37 length=" + std::to_string(length) + "\n");
  }
}

TEST_CASE("file name to EBCDIC: nine characters are too many, with and without a converter") {
  for (const bool linked : {false, true}) {
    ScriptedPlatform platform;
    linked ? play_converter(platform, ebcdic) : without_converter(platform);
    Name ascii("abcdefghi");
    Bytes out(8, 0x77);
    CHECK(convert_ascii_filename_to_ebcdic(37, ascii, out.data()) == 0x4085001f);
    CHECK(std::string(ascii.text) == "abcdefghi");
    CHECK(out == Bytes(8, 0x77));
    CHECK(platform.printed().empty());
  }
}

TEST_CASE("file name to EBCDIC: what fails leaves zeros for the name's length alone") {
  const auto with = [](const Conversion& conversion) {
    ScriptedPlatform platform;
    play_converter(platform, conversion);
    Name ascii("abc");
    Bytes out(8, 0x77);
    CHECK(convert_ascii_filename_to_ebcdic(37, ascii, out.data()) == kFailed);
    CHECK(out == Bytes{0, 0, 0, 0x77, 0x77, 0x77, 0x77, 0x77});
    CHECK(std::string(ascii.text) == "ABC");
    CHECK(platform.printed().empty());
  };
  with([](auto&&...) { return std::nullopt; });
  with([](auto&&...) { return std::optional(Bytes(2, 0xc1)); });
  with([](auto&&...) { return std::optional(Bytes(4, 0xc1)); });
}

TEST_CASE("file name to ASCII: eight bytes as they come, blanks kept, no terminator") {
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  const Bytes name = {0xc1, 0xc2, 0xf1, 0x40, 0x81, 0x40, 0x40, 0x40};
  char out[9] = {0, 0, 0, 0, 0, 0, 0, 0, 'x'};
  CHECK(convert_ebcdic_filename_to_ascii(37, name.data(), out) == 0);
  CHECK(std::string(out, 9) == "AB1 a   x");
  CHECK(platform.lines({"convert"}) == "convert from=37 to=1 length=8\n");
}

TEST_CASE("file name to ASCII: a conversion that fails or gives another length leaves zeros") {
  const auto with = [](const Conversion& conversion) {
    ScriptedPlatform platform;
    play_converter(platform, conversion);
    Bytes out(9, 0x77);
    CHECK(convert_ebcdic_filename_to_ascii(37, kPortName.data(),
                                           reinterpret_cast<char*>(out.data())) == kFailed);
    CHECK(out == Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0x77});
  };
  with([](auto&&...) { return std::nullopt; });
  with([](auto&&...) { return std::optional(text("SEVEN77")); });
  with([](auto&&...) { return std::optional(text("NINE99999")); });
}

TEST_CASE("without a converter every conversion says so and fails; outputs stay") {
  ScriptedPlatform platform;
  without_converter(platform);
  Name ascii("ab");
  Bytes out(24, 0x77);
  auto* characters = reinterpret_cast<char*>(out.data());
  CHECK(convert_ebcdic_filename_to_ascii(37, kPortName.data(), characters) == kFailed);
  CHECK(convert_ascii_filename_to_ebcdic(37, ascii, out.data()) == kFailed);
  CHECK(std::string(ascii.text) == "ab");  // not even upper-cased
  CHECK(convert_ebcdic_portname_to_ascii(37, kPortName.data(), characters, 1) == kFailed);
  CHECK(convert_codepage_and_copy(1, 37, kPortName.data(), out.data(), 24) == kFailed);
  CHECK(out == Bytes(24, 0x77));
  CHECK(platform.printed() == kUnlinked + kUnlinked + kUnlinked + kUnlinked);
  CHECK(convert_ascii_portname_to_ebcdic(37, ascii, out.data()) == kFailed);
  CHECK(Bytes(out.begin(), out.begin() + 3) == Bytes{0, 0, 0x77});  // the name's length is zeroed
  CHECK(platform.count("free") == 0);
}

TEST_CASE("port name to EBCDIC: names of every length, as they are, blanks behind") {
  const std::string name = "aB1_-z9qaB1_-z9qaB1_-z9qXY";
  const Bytes unit = {0x81, 0xc2, 0xf1, 0x6d, 0x60, 0xa9, 0xf9, 0x98};
  const Bytes whole = unit + unit + unit;
  for (std::size_t length = 0; length <= name.size(); ++length) {
    CAPTURE(length);
    const std::size_t taken = std::min<std::size_t>(length, 24);
    ScriptedPlatform platform;
    play_converter(platform, ebcdic);
    const std::string ascii = name.substr(0, length);
    Bytes out(25, 0x77);
    CHECK(convert_ascii_portname_to_ebcdic(37, ascii.c_str(), out.data()) == 0);
    Bytes expected(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(taken));
    expected.resize(24, 0x40);
    expected.push_back(0x77);
    CHECK(difference(expected, out) == "");
    CHECK(platform.lines({"convert"}) ==
          "convert from=1 to=37 length=" + std::to_string(taken) + "\n");
  }
}

TEST_CASE("port name to EBCDIC: a conversion that fails or gives another length") {
  for (const auto& result :
       {std::optional<Bytes>(), std::optional(Bytes(2, 0xc1)), std::optional(Bytes(4, 0xc1))}) {
    ScriptedPlatform platform;
    play_converter(platform, [&](auto&&...) { return result; });
    Bytes out(24, 0x77);
    CHECK(convert_ascii_portname_to_ebcdic(37, "abc", out.data()) == kFailed);
    CHECK(Bytes(out.begin(), out.begin() + 4) == Bytes{0, 0, 0, 0x77});
  }
}

TEST_CASE("port name to ASCII: printable bytes stay, without a mark, whatever the port address") {
  const std::string name = "Port \"7\" of~the-director";
  CHECK(port_name_from(text(name), 0x1a).status == 0);
  CHECK(port_name_from(text(name), 0x1a).text == name);
  CHECK(port_name_from(text(name), 300).status == 0);
  CHECK(port_name_from(text(name), 300).text == name);
}

TEST_CASE("port name to ASCII: a control byte becomes a quote, and the name is marked") {
  Bytes ascii = text("ABCDEFGHIJKLMNOPQRSTUVWX");
  ascii[4] = 0x07;
  using namespace std::string_literals;
  const PortName marked = port_name_from(ascii, 0x1a);
  CHECK(marked.status == 0);
  CHECK(marked.text == "ABCD\"FGHIJKLMNOPQRSTU~1\0"s);
  CHECK(port_name_from(ascii, 0x0a).text == "ABCD\"FGHIJKLMNOPQRSTU~0\0"s);
  CHECK(port_name_from(ascii, 0xff).text == "ABCD\"FGHIJKLMNOPQRSTU~F\0"s);
  CHECK(port_name_from(ascii, 255).status == 0);
  for (const std::uint32_t beyond : {256U, 300U, 0xffffffffU}) {
    CHECK(port_name_from(ascii, beyond).status == 0x40850018);
    CHECK(port_name_from(ascii, beyond).text == "ABCD\"FGHIJKLMNOPQRSTUVWX");
  }
}

TEST_CASE("port name to ASCII: which bytes count as unprintable") {
  for (int value = 0; value < 256; ++value) {
    CAPTURE(value);
    Bytes ascii = text("ABCDEFGHIJKLMNOPQRSTUVWX");
    ascii[0] = static_cast<std::uint8_t>(value);
    const bool printable = value >= 0x20 && value <= 0x7e;
    const PortName name = port_name_from(ascii, 300);
    CHECK(name.status == (printable ? 0 : 0x40850018));
    CHECK(name.text[0] == (printable ? static_cast<char>(value) : '"'));
  }
}

TEST_CASE("port name to ASCII: a conversion that fails or gives another length leaves zeros") {
  for (const auto& result :
       {std::optional<Bytes>(), std::optional(Bytes(23, 'A')), std::optional(Bytes(25, 'A'))}) {
    ScriptedPlatform platform;
    play_converter(platform, [&](auto&&...) { return result; });
    Bytes out(24, 0x77);
    CHECK(convert_ebcdic_portname_to_ascii(37, kPortName.data(),
                                           reinterpret_cast<char*>(out.data()), 1) == kFailed);
    CHECK(out == zeros(24));
  }
}

TEST_CASE("any text: up to 100 bytes, whatever number comes out") {
  for (const std::uint32_t length : {0U, 1U, 99U, 100U}) {
    for (const std::size_t produced : {0U, 1U, 100U}) {
      ScriptedPlatform platform;
      play_converter(platform, [&](const Bytes& input, std::uint32_t from, std::uint32_t to) {
        CHECK(input == Bytes(length, 0x5a));
        CHECK(from == 500);
        CHECK(to == 1047);
        return std::optional(Bytes(produced, 0xa5));
      });
      const Bytes input(100, 0x5a);
      Bytes out(101, 0x77);
      CHECK(convert_codepage_and_copy(500, 1047, input.data(), out.data(), length) == 0);
      Bytes expected(produced, 0xa5);
      expected.resize(101, 0x77);
      CHECK(difference(expected, out) == "");
    }
  }
}

TEST_CASE("any text: more than 100 bytes are refused before the converter is missed") {
  ScriptedPlatform platform;
  without_converter(platform);
  const Bytes input(101, 0x5a);
  Bytes out(101, 0x77);
  CHECK(convert_codepage_and_copy(1, 37, input.data(), out.data(), 101) == 0x40850003);
  CHECK(convert_codepage_and_copy(1, 37, input.data(), out.data(), 0xffffffff) == 0x40850003);
  CHECK(platform.printed().empty());
  play_converter(platform, [](auto&&...) { return std::nullopt; });
  CHECK(convert_codepage_and_copy(1, 37, input.data(), out.data(), 100) == kFailed);
  CHECK(out == Bytes(101, 0x77));
}
