/** `ficonctl file` as operators use it. */
#include <doctest/doctest.h>

#include <fstream>

#include "client.h"
#include "switches.h"

using namespace ficon::test;

namespace {

struct Director : EmbeddedSwitch {
  Director() { REQUIRE(tool("vsan enable 20").status == 0); }

  nlohmann::json files() { return tool("file list 20 --json").json(); }
  nlohmann::json ports(const std::string& file) {
    return tool("file show 20 " + file + " --json").json()["ports"];
  }
  std::string text_file(const std::string& text) {
    std::string path = directory.path("file.json");
    std::ofstream(path) << text;
    return path;
  }
};

}  // namespace

TEST_CASE_FIXTURE(Director, "Files are created, described, copied, renamed and deleted") {
  CHECK(tool("file create 20 prod").out == "file PROD of VSAN 20 created\n");
  CHECK(tool.run({"file", "describe", "20", "prod", "Day shift"}).status == 0);
  CHECK(tool("file copy 20 prod test").out == "file PROD of VSAN 20 copied to TEST\n");
  CHECK(tool("file rename 20 test night").out == "file TEST of VSAN 20 renamed to NIGHT\n");
  CHECK(tool("file list 20").out ==
        "NAME   EQUALS ACTIVE  OPEN BY  DESCRIPTION\n"
        "IPL    yes            -\n"
        "NIGHT  no             -        Day shift\n"
        "PROD   no             -        Day shift\n");
  CHECK(tool("file delete 20 PROD").status == 0);
  CHECK(files().size() == 2);
}

TEST_CASE_FIXTURE(Director, "What is not there, is there already, or is reserved is refused") {
  REQUIRE(tool("file create 20 PROD").status == 0);
  const Result absent = tool("file show 20 NOSUCH");
  CHECK(absent.status == 1);
  CHECK(absent.err ==
        "ficonctl: cannot read file NOSUCH of VSAN 20: the VSAN has no configuration file of this "
        "name (0x40890040, no-such-file)\n"
        "  try: list the files for the names that there are\n");
  for (const char* words :
       {"file delete 20 NOSUCH", "file rename 20 NOSUCH OTHER", "file copy 20 NOSUCH OTHER",
        "file apply 20 NOSUCH", "file describe 20 NOSUCH x", "file export 20 NOSUCH"}) {
    CAPTURE(std::string(words));
    CHECK(contains(tool(words).err, "no-such-file"));
  }
  REQUIRE(tool("file copy 20 PROD OTHER").status == 0);
  CHECK(contains(tool("file create 20 PROD").err, "file-exists"));
  CHECK(contains(tool("file copy 20 PROD OTHER").err, "file-exists"));
  CHECK(contains(tool("file rename 20 PROD OTHER").err, "file-exists"));
  CHECK(contains(tool("file delete 20 ipl").err, "reserved-name"));
  CHECK(contains(tool("file rename 20 PROD ipl").err, "reserved-file"));
  CHECK(contains(tool("file save 20 IPL").err, "reserved-file"));
  CHECK(tool("file create 20 NINECHARS").status == 2);
  CHECK(contains(tool("file create 20 A.B").err, "name-character"));
  CHECK(files().size() == 3);
}

TEST_CASE_FIXTURE(Director, "A description has 1 to 24 characters") {
  REQUIRE(tool("file create 20 PROD").status == 0);
  const std::string longest = "twenty-four-characters-!";
  CHECK(tool("file describe 20 PROD " + longest).status == 0);
  CHECK(files()[1]["description"] == longest);
  CHECK(tool("file describe 20 PROD " + longest + "x").status == 2);
  CHECK(tool.run({"file", "describe", "20", "PROD", ""}).status == 2);
  CHECK(files()[1]["description"] == longest);
}

TEST_CASE_FIXTURE(Director, "The host's names and descriptions are the operator's") {
  CHECK(tool("--requester host file create 20 PROD").status == 0);
  CHECK(tool("--requester host file describe 20 PROD host").status == 0);
  CHECK(tool("--requester host file copy 20 PROD HOSTS").status == 0);
  REQUIRE(files().size() == 3);
  CHECK(files()[0]["name"] == "HOSTS");
  CHECK(files()[0]["description"] == "host");
}

TEST_CASE_FIXTURE(Director, "A file is applied, and the active configuration saved") {
  REQUIRE(tool("file create 20 PROD").status == 0);
  REQUIRE(tool("port block 20 1a --file PROD").status == 0);
  CHECK(tool("file diff 20 active PROD").out == "1a: blocked\n");
  CHECK(tool("file apply 20 PROD").status == 0);
  CHECK(tool("file diff 20 active PROD").out == "no difference\n");
  CHECK(tool("file save 20 NIGHT").status == 0);
  CHECK(files()[1]["equals-active"] == true);
  REQUIRE(tool("port unblock 20 1a").status == 0);
  CHECK(files()[1]["equals-active"] == false);
  CHECK(tool("file diff 20 active NIGHT --json").json() == nlohmann::json{"1a: blocked"});
}

TEST_CASE_FIXTURE(Director, "In user alert mode applying wants a yes") {
  REQUIRE(tool("file create 20 PROD").status == 0);
  REQUIRE(tool("vsan set 20 user-alert-mode=on").status == 0);
  CHECK(contains(tool("file apply 20 PROD").err, "applying file PROD may disrupt traffic"));
  CHECK(tool("file apply 20 PROD --yes").status == 0);
}

TEST_CASE_FIXTURE(Director, "What is exported is imported again, on another VSAN too") {
  REQUIRE(tool("file create 20 PROD").status == 0);
  REQUIRE(tool("file describe 20 PROD source").status == 0);
  REQUIRE(tool("port block 20 1a-1c,40 --file PROD").status == 0);
  REQUIRE(tool.run({"port", "name", "20", "fd", "A & \"B\"", "--file", "PROD"}).status == 0);
  REQUIRE(tool("port prohibit 20 00-03 --with 02-05 --file PROD").status == 0);
  const Result exported = tool("file export 20 PROD");
  const std::string path = text_file(exported.out);
  REQUIRE(tool("vsan enable 21").status == 0);
  CHECK(tool("file import 21 COPY " + path).status == 0);
  CHECK(tool("file export 21 COPY").out == exported.out);
  CHECK(tool("file import 20 PROD " + path).status == 0);
  CHECK(tool("file export 20 PROD -o " + path + ".2").status == 0);
  CHECK(exported.json()["ports"][0]["prohibited"] == "02-05");
}

TEST_CASE_FIXTURE(Director, "An import with anything wrong changes nothing") {
  REQUIRE(tool("file create 20 PROD").status == 0);
  REQUIRE(tool("port block 20 77 --file PROD").status == 0);
  const auto import_of = [&](const std::string& members) {
    return tool(
        "file import 20 PROD " +
        text_file("{\"format\": \"ficon-configuration-file\", \"version\": 1" + members + "}"));
  };
  struct Row {
    const char* members;
    const char* why;
  };
  for (const Row& row : {
           Row{R"(, "ports": [{"address": "10", "blocked": true}, {"address": "fe"}])", "fe"},
           Row{R"(, "ports": [{"address": "10", "prohibited": "11"}])", "one side only"},
           Row{R"(, "ports": [{"address": "10", "prohibited": "10"}])", "to itself"},
           Row{R"(, "ports": [{"address": "10"}, {"address": "10"}])", "stands twice"},
           Row{R"(, "ports": [{"address": "10", "blocked": "yes"}])", "wrong type"},
           Row{R"(, "ports": [{"address": "10", "name": "a\u20acb"}])", "'\u20ac'"},
           Row{R"(, "ports": [{"address": "10", "blocked": true}], "descripton": "x")",
               "did you mean \"description\""},
           Row{R"(, "description": "more than twenty-four characters")", "24 characters"},
           Row{R"(, "ports": [{"address": "10", "blocked": true}], "description": "\u20ac")", ""},
       }) {
    CAPTURE(std::string(row.members));
    const Result refused = import_of(row.members);
    CHECK(refused.status != 0);
    CHECK(contains(refused.err, row.why));
    const auto exported = tool("file export 20 PROD").json();
    CHECK(exported["ports"].size() == 1);
    CHECK(exported["ports"][0]["address"] == "77");
  }
  CHECK(tool("file import 20 PROD " + text_file("{")).status == 2);
  CHECK(tool("file import 20 PROD " + directory.path("absent")).status == 1);
}

TEST_CASE_FIXTURE(Director, "The check names what an operator should look at") {
  REQUIRE(tool("file create 20 PROD").status == 0);
  REQUIRE(tool("port name 20 10 SAME --file PROD").status == 0);
  REQUIRE(tool("port name 20 12 SAME --file PROD").status == 0);
  REQUIRE(tool("port block 20 d0 --file PROD").status == 0);
  const std::string found = tool("file check 20 PROD").out;
  CHECK(contains(found, "the name \"SAME\" is given to 10,12\n"));
  CHECK(contains(found, "d0 has settings but is not installed\n"));
  CHECK(contains(found, "installed without a name: 00-0f,11,13-bf\n"));
}

TEST_CASE("A second editor is refused, and told who holds the file") {
  ScratchDirectory directory;
  DaemonProcess daemon(directory);
  const Tool tool("unix:" + daemon.socket());
  REQUIRE(tool("vsan enable 20").status == 0);
  REQUIRE(tool("file create 20 PROD").status == 0);
  {
    Client agent(daemon.socket());
    const auto opened =
        agent.call(7861, tlv_array(file_tlv({.operation = 1,
                                             .vsan = 20,
                                             .name = "d7 d9 d6 c4 40 40 40 40",  // PROD
                                             .requester = 2})));
    REQUIRE(opened.has_value());
    const Result refused = tool("port block 20 1a --file PROD");
    CHECK(refused.status == 1);
    CHECK(refused.err ==
          "ficonctl: cannot edit file PROD of VSAN 20, open by agent: somebody else has the file "
          "open (0x40890042, file-being-edited)\n"
          "  try: wait until it is kept or discarded; an edit ends with its editor's connection\n");
    CHECK(tool("file list 20 --json").json()[1]["open-by"] == "agent");
  }
  CHECK(tool("port block 20 1a --file PROD").status == 0);
}
