/** Field-replaceable units: identifiers, states, and the list of names in EBCDIC. */
#include <doctest/doctest.h>

#include <map>

#include "double/fakes.h"

using namespace ficon::test;

namespace {

Bytes fru_list(Conversion conversion) {
  ScriptedPlatform platform;
  play_converter(platform, std::move(conversion));
  Bytes buffer(258, 0x77);
  ficon_get_list_of_ficon_fru(buffer.data() + 1);
  CHECK(buffer.front() == 0x77);
  CHECK(buffer.back() == 0x77);
  CHECK(platform.finished());
  return {buffer.begin() + 1, buffer.end() - 1};
}

Bytes row(const Bytes& list, std::size_t number) {
  const auto first = list.begin() + static_cast<std::ptrdiff_t>(number * 8);
  return {first, first + 8};
}

}  // namespace

TEST_CASE("unit identifiers: card type 0 is a slot, from 1 to 6") {
  for (const std::uint32_t slot : {1U, 2U, 3U, 4U, 5U, 6U}) CHECK(get_fru_id(slot, 0) == 1);
  for (const std::uint32_t slot : {0U, 7U, 0xffffffffU, 0x80000001U}) {
    CHECK(get_fru_id(slot, 0) == -1);
  }
}

TEST_CASE("unit identifiers: every card type, whatever the slot") {
  const std::map<std::uint16_t, std::int32_t> known = {
      {1, 29},  {3, 8},   {4, 9},   {5, 10},  {6, 11},  {7, 12},  {8, 13},  {9, 14},
      {11, 15}, {12, 16}, {18, 17}, {21, 18}, {22, 19}, {24, 20}, {25, 21}, {28, 22},
      {29, 23}, {30, 24}, {31, 29}, {32, 25}, {33, 26}, {34, 27}, {35, 28}, {36, 29},
      {37, 28}, {38, 28}, {39, 27}, {41, 30}, {52, 32}, {53, 31}};
  REQUIRE(known.size() == 30);
  for (std::uint32_t type = 1; type <= 0xffff; ++type) {
    const auto found = known.find(static_cast<std::uint16_t>(type));
    const std::int32_t expected = found == known.end() ? -1 : found->second;
    if (get_fru_id(type, static_cast<std::uint16_t>(type)) == expected) continue;
    CAPTURE(type);
    CHECK(get_fru_id(type, static_cast<std::uint16_t>(type)) == expected);
  }
  CHECK(get_fru_id(0, 1) == 29);
  CHECK(get_fru_id(7, 53) == 31);
}

TEST_CASE("operational states") {
  CHECK(ficon_convert_pfm_oper_state(0) == 0);
  CHECK(ficon_convert_pfm_oper_state(1) == 3);
  CHECK(ficon_convert_pfm_oper_state(2) == 1);
  CHECK(ficon_convert_pfm_oper_state(3) == 5);
  CHECK(ficon_convert_pfm_oper_state(4) == 6);
  CHECK(ficon_convert_pfm_oper_state(0xffffffff) == 6);
}

TEST_CASE("list of units: a length and a name in EBCDIC, padded with its blank") {
  const Bytes list = fru_list(ebcdic);
  CHECK(row(list, 0) == zeros(8));
  CHECK(row(list, 1) == Bytes{4, 0xe2, 0xd3, 0xd6, 0xe3, 0x40, 0x40, 0x40});   // SLOT
  CHECK(row(list, 2) == Bytes{7, 0xc3, 0xc8, 0xc1, 0xe2, 0xe2, 0xc9, 0xe2});   // CHASSIS
  CHECK(row(list, 6) == Bytes{3, 0xc6, 0xc1, 0xd5, 0x40, 0x40, 0x40, 0x40});   // FAN
  CHECK(row(list, 8) == Bytes{7, 0xc3, 0xe3, 0xd3, 0xd7, 0xd9, 0xd6, 0xc3});   // CTLPROC2, cut
  CHECK(row(list, 30) == Bytes{7, 0xc6, 0xc3, 0xf6, 0xf4, 0x60, 0xf6, 0xf4});  // FC64-64G, cut
  CHECK(row(list, 31) == row(list, 1));
  for (std::size_t number = 1; number < 32; ++number) {
    CAPTURE(number);
    const Bytes name = row(list, number);
    REQUIRE(name[0] >= 1);
    REQUIRE(name[0] <= 7);
    for (std::size_t i = 1; i < 8; ++i) CHECK((name[i] == 0x40) == (i > name[0]));
  }
}

TEST_CASE("list of units: every name, cut to seven characters") {
  const std::string names[] = {
      "",        "SLOT",    "CHASSIS", "BACKPLN", "CLOCK",   "POWER",   "FAN",     "CTLPROC",
      "CTLPROC", "XBAR-A",  "XBAR-B",  "FC16-2G", "FC32-2G", "IPS8",    "IPS4",    "CACHE",
      "SERVICE", "FC12-4G", "FC24-4G", "FC48-4G", "FC4-10G", "MULTI18", "FC24-8G", "FC48-8G",
      "FC32-8G", "ENCRYPT", "FC32-16", "FC48-16", "FC48-32", "FABRIC",  "FC64-64", "SLOT"};
  const Bytes list = fru_list(unchanged);
  for (std::size_t number = 1; number < 32; ++number) {
    CAPTURE(number);
    Bytes expected{static_cast<std::uint8_t>(names[number].size())};
    expected.insert(expected.end(), names[number].begin(), names[number].end());
    expected.resize(8, 0x40);
    CHECK(row(list, number) == expected);
  }
}

TEST_CASE("list of units: 31 conversions from ASCII to code page 37") {
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  Bytes buffer(256);
  ficon_get_list_of_ficon_fru(buffer.data());
  const auto conversions = platform.calls({"convert"});
  REQUIRE(conversions.size() == 31);
  CHECK(conversions[0] == "convert from=1 to=37 length=4");
  CHECK(conversions[7] == "convert from=1 to=37 length=7");
  CHECK(conversions[30] == "convert from=1 to=37 length=4");
}

TEST_CASE("list of units: a name that cannot be converted leaves its length and blanks") {
  const Bytes list = fru_list([](auto...) { return std::nullopt; });
  CHECK(row(list, 1) == Bytes{4, 0x40, 0x40, 0x40, 0x40, 0x40, 0x40, 0x40});
  CHECK(row(list, 31) == row(list, 1));
}
