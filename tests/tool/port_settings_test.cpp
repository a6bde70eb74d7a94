/** `ficonctl port block`, `unblock`, `name`, `prohibit` and `allow`. */
#include <doctest/doctest.h>

#include "switches.h"

using namespace ficon::test;

namespace {

struct Director : EmbeddedSwitch {
  Director() {
    REQUIRE(tool("vsan enable 20").status == 0);
    REQUIRE(tool("file create 20 PROD").status == 0);
  }

  /** The file's ports that have settings, as `file export` lists them. */
  nlohmann::json settings(const std::string& file = "PROD") {
    return tool("file export 20 " + file).json()["ports"];
  }
};

}  // namespace

TEST_CASE_FIXTURE(Director, "Ranges and lists of ports are blocked and unblocked in a file") {
  CHECK(tool("port block 20 1a-1c,40 --file prod").out ==
        "file PROD of VSAN 20 changed:\n  1a: blocked\n  1b: blocked\n  1c: blocked\n"
        "  40: blocked\n");
  CHECK(settings().size() == 4);
  CHECK(settings("active").empty());
  CHECK(tool("port block 20 1a --file PROD").out == "file PROD of VSAN 20 is so already\n");
  CHECK(tool("port unblock 20 1b-40 --file PROD").status == 0);
  CHECK(settings() == nlohmann::json{{{"address", "1a"}, {"blocked", true}}});
}

TEST_CASE_FIXTURE(Director, "Without a file the active configuration changes") {
  CHECK(tool("port block 20 00,fd").out ==
        "the active configuration of VSAN 20 changed:\n  00: blocked\n  fd: blocked\n");
  CHECK(settings("active").size() == 2);
  CHECK(settings().empty());
  REQUIRE(tool("vsan set 20 user-alert-mode=on").status == 0);
  CHECK(contains(tool("port unblock 20 00").err, "may disrupt traffic"));
  CHECK(tool("port unblock 20 00 --dry-run").status == 0);
  CHECK(settings("active").size() == 2);
  CHECK(tool("port unblock 20 00 --yes").status == 0);
  CHECK(settings("active").size() == 1);
}

TEST_CASE_FIXTURE(Director, "A dry run shows the change and makes none") {
  const auto counter = [&] { return tool("vsan key-counter 20").out; };
  const std::string before = counter();
  CHECK(tool("port block 20 1a --file PROD --dry-run").out ==
        "file PROD of VSAN 20 would change:\n  1a: blocked\n");
  CHECK(tool("port prohibit 20 1a --with 20 --file PROD --dry-run --json").json()["changes"] ==
        nlohmann::json{"1a: prohibited to 20", "20: prohibited to 1a"});
  CHECK(settings().empty());
  CHECK(counter() == before);
  CHECK(tool("port block 20 1a --file PROD").status == 0);
  CHECK(counter() != before);
}

TEST_CASE_FIXTURE(Director, "A batch with one bad port changes nothing") {
  struct Row {
    const char* ports;
    const char* why;
  };
  for (const Row& row :
       {Row{"1a,fe", "fe is the control unit port"}, Row{"00-ff", "ff is no port"},
        Row{"1a,100", "100"}, Row{"2f-1a", "runs backwards"}, Row{"1a,,1b", "empty part"},
        Row{"1a-", "port address"}, Row{"xy", "xy"}}) {
    CAPTURE(std::string(row.ports));
    const Result refused = tool("port block 20 " + std::string(row.ports) + " --file PROD");
    CHECK(refused.status == 2);
    CHECK(contains(refused.err, row.why));
  }
  CHECK(tool("port prohibit 20 1a --with 20,fe --file PROD").status == 2);
  CHECK(settings().empty());
}

TEST_CASE_FIXTURE(Director, "A prohibit stands on both sides, and so does its end") {
  REQUIRE(tool("port prohibit 20 10-11 --with 11-12 --file PROD").status == 0);
  CHECK(settings() == nlohmann::json{{{"address", "10"}, {"prohibited", "11-12"}},
                                     {{"address", "11"}, {"prohibited", "10,12"}},
                                     {{"address", "12"}, {"prohibited", "10-11"}}});
  REQUIRE(tool("port allow 20 12 --with 00-fd --file PROD").status == 0);
  CHECK(settings() == nlohmann::json{{{"address", "10"}, {"prohibited", "11"}},
                                     {{"address", "11"}, {"prohibited", "10"}}});
}

TEST_CASE_FIXTURE(Director, "Every pair of a director prohibited, and allowed again") {
  REQUIRE(tool("port prohibit 20 00-fd --with 00-fd --file PROD").status == 0);
  const auto all = settings();
  REQUIRE(all.size() == 254);
  CHECK(all[0]["prohibited"] == "01-fd");
  CHECK(all[253]["prohibited"] == "00-fc");
  REQUIRE(tool("port allow 20 00-fd --with 00-fd --file PROD").status == 0);
  CHECK(settings().empty());
}

TEST_CASE_FIXTURE(Director, "Names are set, shown and taken away") {
  const std::string longest = "24 characters, no more..";
  CHECK(tool.run({"port", "name", "20", "1a", longest, "--file", "PROD"}).status == 0);
  CHECK(settings()[0]["name"] == longest);
  CHECK(tool.run({"port", "name", "20", "1a", longest + ".", "--file", "PROD"}).status == 2);
  CHECK(tool("port name 20 1a-1b TWO --file PROD").status == 2);
  CHECK(tool.run({"port", "name", "20", "1a", "", "--file", "PROD"}).status == 0);
  CHECK(settings().empty());
}

TEST_CASE_FIXTURE(Director, "A name that the code page cannot hold names the character") {
  const Result euro = tool.run({"port", "name", "20", "1a", "10 € a day", "--file", "PROD"});
  CHECK(euro.status == 2);
  CHECK(contains(euro.err,
                 "port name \"10 € a day\": code page 37 of VSAN 20 takes no character '€'"));
  CHECK(tool.run({"port", "name", "20", "1a", "a\tb", "--file", "PROD"}).status == 2);
  CHECK(settings().empty());
}

TEST_CASE_FIXTURE(Director, "A file that is not there is not made by a port's change") {
  CHECK(contains(tool("port block 20 1a --file NOSUCH").err, "no-such-file"));
  CHECK(contains(tool("port block 20 1a --file IPL").err, "reserved-file"));
  CHECK(tool("file list 20 --json").json().size() == 2);
}
