/** Lines of configuration: spellings, order, and what is said of those that make no sense. */
#include "config_line.h"

#include <doctest/doctest.h>

#include "failure.h"

using namespace ficon::ctl;

namespace {

using Numbers = std::vector<std::uint32_t>;

/** The lines as the generator would write them. */
std::vector<std::string> texts(const std::string& text) {
  std::vector<std::string> result;
  for (const ConfigLine& line : parse_config(text, 255)) result.push_back(line.text());
  return result;
}

std::string complaint(const std::string& text) {
  try {
    parse_config(text, 255);
    return "";
  } catch (const UsageError& error) {
    return error.what();
  }
}

}  // namespace

TEST_CASE("configuration lines: every kind of line reads as it is written") {
  const std::vector<std::string> lines = {"feature ficon",
                                          "ficon vsan 4093",
                                          "ficon port default-state prohibit-all",
                                          "ficon default mihpto 63000",
                                          "ficon slot 16 assign port-numbers 1-3, 5 force",
                                          "no ficon slot 2 assign port-numbers",
                                          "ficon logical-port assign port-numbers 240 force",
                                          "no ficon logical-port assign port-numbers 241-249",
                                          "logging level ficon 7"};
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  CHECK(texts(text) == lines);
}

TEST_CASE("configuration lines: spellings of the same numbers") {
  for (const char* list : {"1-3, 5", "1,2,3,5", "0x1-0x3,0x5", "1 - 3 ,5 force", "1-2,3-3,5"}) {
    CAPTURE(std::string(list));
    const auto lines = parse_config("ficon slot 0x1 assign port-numbers " + std::string(list), 255);
    REQUIRE(lines.size() == 1);
    CHECK(lines[0].numbers == Numbers{1, 2, 3, 5});
    CHECK(lines[0].value == 1);
  }
  CHECK(texts("ficon vsan 0x0a\n\tficon   vsan\t11 \r\n") ==
        std::vector<std::string>{"ficon vsan 10", "ficon vsan 11"});
}

TEST_CASE("configuration lines: port numbers keep their order, which is that of the positions") {
  const auto lines = parse_config("ficon slot 1 assign port-numbers 200-201, 1-3\n", 255);
  CHECK(lines.at(0).numbers == Numbers{200, 201, 1, 2, 3});
  CHECK(lines.at(0).text() == "ficon slot 1 assign port-numbers 200-201, 1-3 force");
}

TEST_CASE("configuration lines: what belongs to an interface, comments and empty lines") {
  const auto lines = parse_config(
      "! saved yesterday\n"
      "interface fc1/3\n"
      "  ficon portaddress 0x77\n"
      "\n"
      "ficon portaddress 512\n"
      "# the logical ports\n"
      "interface port-channel12\n"
      "    ficon portnumber 240\n"
      "ficon vsan 3\n",
      255);
  REQUIRE(lines.size() == 4);
  CHECK(lines[0].text() == "interface fc1/3: ficon portaddress 0x77");
  CHECK(lines[0].line == 3);
  CHECK(lines[1].text() == "interface fc1/3: ficon portaddress 0x200");
  CHECK(lines[2].text() == "interface port-channel 12: ficon portnumber 0xf0");
  CHECK(lines[3].line == 9);
}

TEST_CASE("configuration lines: every line that makes no sense is named, with the reason") {
  CHECK(complaint("feature ficon\n"
                  "feature fcip\n"
                  "ficon vsan 4094\n"
                  "ficon vsan\n"
                  "ficon slot 17 assign port-numbers 1\n"
                  "ficon slot 1 assign port-numbers\n"
                  "ficon slot 1 assign port-numbers 1,2-4,3 force\n"
                  "ficon slot 1 assign port-numbers 1,,2\n"
                  "ficon slot 1 assign port-numbers 3-1\n"
                  "no ficon slot 1 assign port-numbers 3\n"
                  "ficon slot 1 assign port-numbers 256\n"
                  "ficon default mihpto 641\n"
                  "logging level ficon 8\n") ==
        "nothing was applied:"
        "\n  line 2: this is no line of FICON's configuration"
        "\n  line 3: VSAN \"4094\" is not a number from 1 to 4093"
        "\n  line 4: expected one VSAN"
        "\n  line 5: slot \"17\" is not a number from 1 to 16"
        "\n  line 6: expected port numbers"
        "\n  line 7: port number 3 stands twice"
        "\n  line 8: port numbers \"1,,2\" has an empty part"
        "\n  line 9: range \"3-1\" runs backwards"
        "\n  line 10: a slot loses all of its port numbers: none are named"
        "\n  line 11: port number \"256\" is not a number from 0 to 255"
        "\n  line 12: time-out \"641\" is not 1 to 63 times 1, 10, 100 or 1000 seconds"
        "\n  line 13: logging level \"8\" is not a number from 0 to 7");
}

TEST_CASE("configuration lines: wrong ones of interfaces") {
  CHECK(
      complaint("ficon portnumber 240\n"
                "interface fc77/1\n"
                "  ficon portnumber 240\n"
                "interface fc1/1\n"
                "  ficon portaddress 0xfe\n"
                "  ficon portnumber 512\n"
                "  shutdown\n") ==
      "nothing was applied:"
      "\n  line 1: this line belongs below an interface"
      "\n  line 2: \"fc77/1\" is no interface: fc1/1 to fc16/64, port-channel1 to port-channel256, "
      "fcip1 to fcip256"
      "\n  line 5: port address \"0xfe\" is not a number from 0 to 253"
      "\n  line 6: port number \"512\" is not a number from 0 to 255"
      "\n  line 7: this is no line of FICON's configuration");
}
