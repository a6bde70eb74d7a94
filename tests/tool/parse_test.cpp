#include "parse.h"

#include <doctest/doctest.h>

using namespace ficon::ctl;

namespace {

/** What the refusal says. */
template <class Parse>
std::string refusal(Parse parse) {
  try {
    parse();
  } catch (const UsageError& error) {
    return error.what();
  }
  return "accepted";
}

std::vector<std::uint32_t> vsans(const std::string& text) {
  return expand(parse_ranges(text, "VSAN list", parse_vsan));
}

}  // namespace

TEST_CASE("numbers are decimal, or hexadecimal behind 0x") {
  CHECK(parse_number("19", 0, 255, "byte") == 19);
  CHECK(parse_number("0x1f", 0, 255, "byte") == 31);
  CHECK(parse_number("0XFF", 0, 255, "byte") == 255);
  CHECK(parse_number("007", 0, 255, "byte") == 7);
}

TEST_CASE("a number that is none, or out of bounds, is named with the bounds") {
  for (const char* bad : {"", "x", "1x", "-1", " 1", "1 ", "0x", "256", "4294967296", "1.0"}) {
    CAPTURE(std::string(bad));
    CHECK(refusal([&] { parse_number(bad, 1, 255, "byte"); }) ==
          "byte \"" + std::string(bad) + "\" is not a number from 1 to 255");
  }
}

TEST_CASE("port addresses and clock words are hexadecimal with or without 0x") {
  CHECK(parse_hex("fd", 0xff, "port address") == 0xfd);
  CHECK(parse_hex("0x10", 0xff, "port address") == 0x10);
  CHECK(refusal([] { parse_hex("100", 0xff, "port address"); }) ==
        "port address \"100\" is not hexadecimal from 0 to ff");
}

TEST_CASE("VSANs go from 1 to 4093") {
  CHECK(parse_vsan("1") == 1);
  CHECK(parse_vsan("4093") == 4093);
  CHECK(refusal([] { parse_vsan("0"); }) == "VSAN \"0\" is not a number from 1 to 4093");
  CHECK(refusal([] { parse_vsan("4094"); }) == "VSAN \"4094\" is not a number from 1 to 4093");
}

TEST_CASE("a list is numbers and ranges; it comes ascending, each number once") {
  CHECK(vsans("10,20-23") == std::vector<std::uint32_t>{10, 20, 21, 22, 23});
  CHECK(vsans("7,5-6,6-7") == std::vector<std::uint32_t>{5, 6, 7});
  CHECK(vsans("4093") == std::vector<std::uint32_t>{4093});
}

TEST_CASE("a bad part of a list is named") {
  CHECK(refusal([] { vsans("10,20-x"); }) == "VSAN \"x\" is not a number from 1 to 4093");
  CHECK(refusal([] { vsans("23-20"); }) == "range \"23-20\" runs backwards");
  CHECK(refusal([] { vsans("10,,20"); }) == "VSAN list \"10,,20\" has an empty part");
  CHECK(refusal([] { vsans("10,"); }) == "VSAN list \"10,\" has an empty part");
  CHECK(refusal([] { vsans("1-2-3"); }) == "VSAN \"2-3\" is not a number from 1 to 4093");
}

TEST_CASE("switches are on or off in three spellings") {
  for (const char* on : {"on", "1", "true"}) CHECK(parse_switch(on, "auto-save"));
  for (const char* off : {"off", "0", "false"}) CHECK_FALSE(parse_switch(off, "auto-save"));
  CHECK(refusal([] { parse_switch("2", "auto-save"); }) == "auto-save \"2\" is not on or off");
}

TEST_CASE("an assignment has a field and a value; the value may hold more equals signs") {
  CHECK(parse_assignment("auto-save=on") == std::pair<std::string, std::string>{"auto-save", "on"});
  CHECK(parse_assignment("a=b=c").second == "b=c");
  for (const char* bad : {"auto-save", "=on", "auto-save=", ""}) {
    CHECK(refusal([&] { parse_assignment(bad); }) ==
          "\"" + std::string(bad) + "\" is not FIELD=VALUE");
  }
}

TEST_CASE("what was meant: near words and begun words, and nothing where nothing is near") {
  const std::vector<std::string> actions{"list", "show", "enable", "disable"};
  CHECK(nearest("shwo", actions) == "show");
  CHECK(nearest("dis", actions) == "disable");
  CHECK(nearest("enabel", actions) == "enable");
  CHECK(nearest("reboot", actions).empty());
  CHECK(did_you_mean("lst", actions) == ": did you mean \"list\"?");
  CHECK(did_you_mean("reboot", actions).empty());
}
