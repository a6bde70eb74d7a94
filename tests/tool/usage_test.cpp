/** What is typed wrong: exit status 2 and a sentence that helps; nothing is asked of any daemon. */
#include <doctest/doctest.h>

#include <vector>

#include "tool_process.h"

using namespace ficon::test;

namespace {

const Tool tool("unix:/nonexistent/socket");

void refuses(const std::string& words, const std::string& sentence) {
  CAPTURE(words);
  const Result result = tool(words);
  CHECK(result.status == 2);
  CHECK(result.out.empty());
  CHECK(contains(result.err, "ficonctl: " + sentence));
  CHECK(contains(result.err, "\n  try: ficonctl "));
}

}  // namespace

TEST_CASE("mistyped and missing words") {
  refuses("vsna list", "there is no object \"vsna\": did you mean \"vsan\"?");
  refuses("vsan shwo 20", "there is no action \"shwo\": did you mean \"show\"?");
  refuses("vsan list --jsn", "there is no option \"--jsn\" here: did you mean \"--json\"?");
  refuses("", "name an object: vsan, ");
  refuses("vsan", "name an action: list, show, ");
  refuses("vsan show", "VSAN is required");
  refuses("vsan show 20 21", "\"21\" is one word too many");
  refuses("-x vsan list", "there is no option \"-x\" here");
  refuses("--endpont x vsan list",
          "there is no option \"--endpont\" here: did you mean \"--endpoint\"?");
  refuses("--endpoint", "--endpoint needs a value");
  refuses("vsan key-counter 20 --test", "--test needs a value");
  refuses("vsan key-counter 20 --test 1 --test 2", "--test is given more than once");
}

TEST_CASE("bad values name the value and what it may be") {
  refuses("vsan show 0", "VSAN \"0\" is not a number from 1 to 4093");
  refuses("vsan show 4094", "VSAN \"4094\" is not a number from 1 to 4093");
  refuses("vsan set 20 auto-save=maybe", "auto-save \"maybe\" is not on or off");
  refuses("vsan set 20 auto-save", "\"auto-save\" is not FIELD=VALUE");
  refuses("vsan key-counter 20 --test x", "key counter \"x\" is not a number from 0 to 4294967295");
  refuses("vsan key-counter 20 --test 1 --increment", "--increment excludes --test");
  refuses("lock get 20 --hold x", "--hold \"x\" is not a number from 1 to 604800");
  refuses("--wait soon vsan list", "--wait \"soon\" is not a number from 0 to 4294967295");
  refuses("--requester hots vsan list", "requester \"hots\" is not operator, agent or host");
  refuses("limits set getnext-type=some",
          "getnext-type \"some\" is not all, installed or a number");
  refuses("limits set foo=1", "there is no limit \"foo\": use getnext-type or max-ports");
  refuses("hostdata write 20 --hex xyz", "\"xyz\" is not hexadecimal: two digits a byte");
  refuses("hostdata write 20 --hex abc", "\"abc\" is an odd number of digits: a byte has two");
  refuses("config diff running saved", "SECOND: \"saved\" is not running or startup");
}

TEST_CASE("an empty word is refused rather than taken for one that is not there") {
  const std::vector<std::vector<std::string>> commands = {
      {"vsan", "codepage", "20", ""},      {"vsan", "clock", "20", "--set", ""},
      {"file", "show", "20", ""},          {"portnumber", "release", "--module", "3", ""},
      {"config", "running", "--vsan", ""}, {"--endpoint", "", "vsan", "list"},
  };
  for (const auto& words : commands) {
    CAPTURE(words[0] + " " + words[1]);
    const Result result = tool.run(words);
    CHECK(result.status == 2);
    CHECK(contains(result.err, ": an empty word is no value\n"));
  }
}

TEST_CASE("a file that cannot be read is told with the reason") {
  for (const char* words :
       {"hostdata write 20 /tmp", "file import 20 prod /tmp", "config apply /tmp"}) {
    CAPTURE(words);
    const Result result = tool(words);
    CHECK(result.status == 1);
    CHECK(contains(result.err, "ficonctl: cannot read /tmp: Is a directory\n  try: "));
  }
}

TEST_CASE("usage errors are JSON too, where JSON is wanted") {
  const Result result = tool("vsan shwo 20 --json");
  CHECK(result.status == 2);
  CHECK(result.err.empty());
  const auto error = result.json()["error"];
  CHECK(error["name"] == "usage");
  CHECK(error["status"] == "0x00000000");
  CHECK(error["message"] == "there is no action \"shwo\": did you mean \"show\"?");
  CHECK(error["hint"] == "ficonctl vsan --help");
}

TEST_CASE("bytes that are no text are replaced where JSON is wanted") {
  const Result result = tool.run({"--json", "vsan", "show", "\xff"});
  CHECK(result.status == 2);
  CHECK(result.json()["error"]["message"] ==
        "VSAN \"\xef\xbf\xbd\" is not a number from 1 to 4093");
}

TEST_CASE("help, version and completion need no daemon") {
  CHECK(contains(tool("--help").out, "vsan "));
  CHECK(contains(tool("vsan clock --help").out, "--set HI:LO"));
  CHECK(tool("--version").out == tool("version").out);
  CHECK(tool("version --json").json().contains("version"));
  CHECK(tool("complete -- vsan en").out == "enable\n");
  CHECK(tool("complete -- nothing like it").out.empty());
}

TEST_CASE("an endpoint that is none is named") {
  const Result result = tool("--endpoint tcp:1 vsan list");
  CHECK(result.status == 1);
  CHECK(contains(result.err, "\"tcp:1\" is no endpoint: use embedded:DIR or unix:PATH"));
}
