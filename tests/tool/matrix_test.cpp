/** `ficonctl matrix`: what the terminal shows, and a picture that says the same. */
#include <doctest/doctest.h>

#include <fstream>
#include <sstream>

#include "switches.h"

using namespace ficon::test;

namespace {

struct Director : EmbeddedSwitch {
  Director() {
    REQUIRE(tool("vsan enable 20").status == 0);
    REQUIRE(tool("file create 20 PROD").status == 0);
    REQUIRE(tool("port prohibit 20 10 --with 11 --file PROD").status == 0);
    REQUIRE(tool("port block 20 12 --file PROD").status == 0);
    REQUIRE(tool.run({"port", "name", "20", "11", "A<B & \"C\"", "--file", "PROD"}).status == 0);
  }
};

/** Whether every element ends where it began, and no text holds a bare `<` or `&`. */
bool well_formed(const std::string& xml) {
  std::vector<std::string> open;
  std::size_t at = 0;
  while ((at = xml.find('<', at)) != std::string::npos) {
    const std::size_t end = xml.find('>', at);
    if (end == std::string::npos || xml.find('<', at + 1) < end) return false;
    std::string tag = xml.substr(at + 1, end - at - 1);
    at = end;
    if (tag.back() == '/') continue;
    const bool closes = tag.front() == '/';
    if (closes) tag.erase(0, 1);
    tag.resize(std::min(tag.find(' '), tag.size()));
    if (!closes) {
      open.push_back(tag);
    } else if (open.empty() || open.back() != tag) {
      return false;
    } else {
      open.pop_back();
    }
  }
  for (at = 0; (at = xml.find('&', at)) != std::string::npos; ++at) {
    if (xml.find(';', at) > at + 6) return false;
  }
  return open.empty();
}

}  // namespace

TEST_CASE_FIXTURE(Director, "The terminal's matrix tells every state by its symbol alone") {
  CHECK(tool("matrix show 20 --file PROD --ports 10-13,f9").out ==
        "file PROD of VSAN 20\n"
        "     1 1 1 1 f\n"
        "     0 1 2 3 9\n"
        "  10 \\ X # . -\n"
        "  11 X \\ # . -  A<B & \"C\"\n"
        "  12 # # \\ # #  (blocked)\n"
        "  13 . . # \\ -\n"
        "  f9 - - # - \\  (not installed)\n"
        "  . free   X prohibited   # blocked   - not installed   \\ the port itself\n");
}

TEST_CASE_FIXTURE(Director,
                  "By default the matrix has the installed ports and those with settings") {
  REQUIRE(tool("port block 20 d0 --file PROD").status == 0);
  const auto shown = tool("matrix show 20 --file PROD --json").json();
  REQUIRE(shown.size() == 193);
  CHECK(shown[192]["address"] == "d0");
  CHECK(tool("matrix show 20 --json").json().size() == 192);  // the active configuration
  CHECK(tool("matrix show 20 --ports 10-11 --json").json().size() == 2);
  CHECK(tool("matrix show 20 --ports fe").status == 2);
  CHECK(contains(tool("matrix show 20 --file NOSUCH").err, "no-such-file"));
}

TEST_CASE_FIXTURE(Director, "The picture labels rows and columns and is well-formed") {
  const std::string svg = tool("matrix svg 20 --file prod --ports 10-13,f9").out;
  CHECK(svg.starts_with("<svg xmlns=\"http://www.w3.org/2000/svg\""));
  CHECK(svg.ends_with("</svg>\n"));
  CHECK(well_formed(svg));
  CHECK_FALSE(well_formed("<a><b></a></b>"));
  CHECK_FALSE(well_formed("<a>A&B</a>"));
  const std::string row = "text-anchor=\"end\">11 A&lt;B &amp; &quot;C&quot;</text>";
  const std::string column = "rotate(-90)\">11 A&lt;B &amp; &quot;C&quot;</text>";
  CHECK(contains(svg, row));
  CHECK(contains(svg, column));
  CHECK(contains(svg, ">12 (blocked)</text>"));
  CHECK(contains(svg, "<title>10 with 11: prohibited</title>"));
  CHECK(contains(svg, "<title>11 with 10: prohibited</title>"));
  CHECK(contains(svg, "<title>10 with 12: blocked</title>"));
  CHECK(contains(svg, "<title>f9 with 13: not installed</title>"));
  CHECK(contains(svg, ">prohibited</text>"));  // the legend
  CHECK(contains(svg, "Prohibit matrix of file PROD of VSAN 20"));
}

TEST_CASE_FIXTURE(Director, "The picture is written where it is asked for") {
  const std::string path = directory.path("matrix.svg");
  CHECK(tool("matrix svg 20 --file PROD -o " + path).status == 0);
  std::stringstream written;
  written << std::ifstream(path).rdbuf();
  CHECK(well_formed(written.str()));
  const Result refused = tool("matrix svg 20 -o " + directory.path("no/such/place"));
  CHECK(refused.status == 1);
  CHECK(contains(refused.err, "cannot write"));
}
