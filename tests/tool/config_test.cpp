/** `ficonctl config`: configuration as text, printed, compared, saved and applied. */
#include <doctest/doctest.h>

#include <filesystem>
#include <fstream>

#include "chassis_daemon.h"
#include "switches.h"

using namespace ficon::test;

namespace {

struct Workbench : EmbeddedSwitch {
  ScratchDirectory files;

  Result apply(const std::string& text, const std::string& options = "") const {
    std::ofstream(files.path("lines")) << text;
    return tool("config apply " + files.path("lines") + " " + options);
  }
  std::string running(const std::string& options = "") const {
    return tool("config running " + options).out;
  }
};

/** Text typed by hand: a complete running configuration. */
std::string golden_text(const std::string& name) {
  std::ifstream file(std::string(FICON_GOLDEN_DIR) + "/" + name);
  return {std::istreambuf_iterator<char>(file), {}};
}

const std::string kWhole = golden_text("config_director.txt");

constexpr const char* kSoAlready = "the running configuration is so already: nothing was changed\n";

}  // namespace

TEST_CASE_FIXTURE(Workbench, "every kind of line is applied and printed again") {
  CHECK(running() == "! the running configuration is empty\n");
  CHECK(apply(running()).out == kSoAlready);
  REQUIRE(apply(kWhole).status == 0);
  CHECK(running() == kWhole);
  CHECK(tool("vsan list --json").json().size() == 3);
  CHECK(tool("mihpto get --json").json()["seconds"] == 40);
  CHECK(tool("port find --if fc1/3 --json").json()["port-address"] == 3);
  CHECK(tool("port find --if fc1/3 --json").json()["port-number"] == 202);
  CHECK(tool("config running --json").json()["running"].size() == 24);
}

TEST_CASE("the same on a switch of one module, whose ports stand out of order") {
  ScratchDirectory directory;
  DaemonProcess daemon(directory,
                       {"--chassis", std::string(FICON_CHASSIS_EXAMPLES) + "/small-switch.toml"});
  REQUIRE(daemon.running());
  const Tool tool("unix:" + daemon.socket());
  const std::string file = std::string(FICON_GOLDEN_DIR) + "/config_small-switch.txt";
  REQUIRE(tool("config apply " + file).status == 0);
  CHECK(tool("config running").out == golden_text("config_small-switch.txt"));
  CHECK(tool("config apply " + file).out == kSoAlready);
}

TEST_CASE_FIXTURE(Workbench, "applying again changes nothing and says so") {
  REQUIRE(apply(kWhole).status == 0);
  const auto history = [&] { return tool("history show --json").out; };
  const std::string before = history();
  CHECK(apply(kWhole).out == kSoAlready);
  CHECK(apply(kWhole, "--json").json()["applied"].empty());
  CHECK(history() == before);
}

TEST_CASE_FIXTURE(Workbench, "what is so by default is no change, though no text shows it") {
  CHECK(apply("ficon default mihpto 180\n"
              "ficon slot 1 assign port-numbers 0-47 force\n"
              "interface fc1/3\n  ficon portaddress 2\n")
            .out == kSoAlready);
  CHECK(apply("logging level ficon 2\n").out == "applied:\n  logging level ficon 2\n");
  CHECK(apply("logging level ficon 2\n").out == kSoAlready);
  CHECK(running() == "! the running configuration is empty\n");
}

TEST_CASE_FIXTURE(Workbench, "a plan is shown and nothing done") {
  REQUIRE(apply("feature ficon\nficon vsan 10\n").status == 0);
  const Result plan = apply("feature ficon\nficon vsan 10\nficon vsan 0xb\n", "--dry-run");
  CHECK(plan.out == "would apply:\n  ficon vsan 11\n");
  CHECK(running() == "feature ficon\nficon vsan 10\n");
}

TEST_CASE_FIXTURE(Workbench, "lines take effect in their own order, wherever they stand") {
  CHECK(apply("logging level ficon 1\n"
              "interface fcip 3\n  ficon portnumber 240\n"
              "ficon slot 2 assign port-numbers 0-1\n"
              "ficon slot 1 assign port-numbers 48-49\n"
              "ficon vsan 3\n"
              "feature ficon\n")
            .status == 0);
  CHECK(running() ==
        "feature ficon\n"
        "ficon slot 1 assign port-numbers 48-49 force\n"
        "ficon slot 2 assign port-numbers 0-1 force\n"
        "ficon vsan 3\n"
        "interface fcip 3\n  ficon portnumber 0xf0\n"
        "logging level ficon 1\n");
}

TEST_CASE_FIXTURE(Workbench, "lines that cannot be are all named before anything is changed") {
  const Result refused = apply(
      "ficon vsan 10\n"
      "ficon slot 4 assign port-numbers 1-3\n"
      "ficon slot 1 assign port-numbers 48-95\n"
      "ficon default mihpto 40\n"
      "ficon default mihpto 50\n"
      "interface fc5/1\n  ficon portaddress 3\n"
      "interface fc1/1\n  ficon portnumber 7\n"
      "interface port-channel 13\n  ficon portnumber 240\n"
      "interface fcip 3\n  ficon portnumber 17\n  ficon portaddress 9\n"
      "logging level ficon 2\n"
      "ficon logical-port assign port-numbers 254\n"
      "ficon slot 2 assign port-numbers 0-64\n");
  CHECK(refused.status == 2);
  CHECK(contains(refused.err,
                 "nothing was applied:\n"
                 "  line 1: \"feature ficon\" is missing: the feature is off\n"
                 "  line 2: there is no module in slot 4\n"
                 "  line 3: port number 48 is reserved for module 2\n"
                 "  line 4: another line says otherwise\n"
                 "  line 7: this switch has no fc5/1\n"
                 "  line 9: fc1/1 has its port number from its slot\n"
                 "  line 11: port-channel 13 was made by the system and gets no port number\n"
                 "  line 13: port number 17 is not reserved for the logical ports\n"
                 "  line 14: fcip 3 has no port number\n"
                 "  line 16: port number 254 belongs to the control unit port\n"
                 "  line 17: 65 port numbers are more than the 64 positions of module 2\n"));
  CHECK(running() == "! the running configuration is empty\n");
  CHECK(tool("config apply /nonexistent").status == 1);
  CHECK(tool("config apply").status == 2);
  CHECK(tool("config apply -").out == kSoAlready);  // of nothing
}

TEST_CASE_FIXTURE(Workbench, "a logical number is not taken from its interface unasked") {
  REQUIRE(apply("interface fcip 3\n  ficon portnumber 240\n").status == 0);
  const Result refused = apply("interface port-channel 12\n  ficon portnumber 240\n");
  CHECK(contains(refused.err, "line 2: port number 240 belongs to fcip 3"));
  CHECK(apply("interface port-channel 12\n  ficon portnumber 240\n"
              "interface fcip 3\n  ficon portnumber 241\n")
            .status == 0);
  CHECK(apply("interface port-channel 12\n  ficon portnumber 241\n"
              "interface fcip 3\n  ficon portnumber 240\n")
            .status == 0);
  CHECK(running() ==
        "interface port-channel 12\n  ficon portnumber 0xf1\n"
        "interface fcip 3\n  ficon portnumber 0xf0\n");
}

TEST_CASE_FIXTURE(Workbench, "text of some VSANs and interfaces") {
  REQUIRE(apply(kWhole).status == 0);
  const std::string some = running("--vsan 1-20,4001 --interface fc1/4,fcip3");
  CHECK(contains(some, "ficon vsan 10\n"));
  CHECK_FALSE(contains(some, "ficon vsan 4093\n"));
  CHECK(contains(some, "interface fc1/4\n"));
  CHECK(contains(some, "interface fcip 3\n"));
  CHECK_FALSE(contains(some, "interface fc1/3\n"));
  CHECK(tool("config running --vsan 0").status == 2);
  CHECK(tool("config running --interface fc9/1").status == 2);
  CHECK(tool("config startup --interface nonsense").status == 2);
}

TEST_CASE_FIXTURE(Workbench, "running and startup configuration, compared and saved") {
  const Result none = tool("config startup");
  CHECK(none.status == 1);
  CHECK(contains(none.err, "ficonctl config save"));
  REQUIRE(apply("feature ficon\nficon vsan 10\n").status == 0);
  REQUIRE(tool("config save").status == 0);
  CHECK(tool("config startup").out == running());
  CHECK(tool("config diff").out == "running and startup configuration are the same\n");
  REQUIRE(tool("vsan enable 11").status == 0);
  REQUIRE(tool("vsan disable 10 --yes").status == 0);
  REQUIRE(tool("port swap fc1/1 fc1/2").status == 0);
  CHECK(tool("config diff running startup").out ==
        "--- running\n+++ startup\n"
        "- ficon vsan 11\n"
        "- interface fc1/1: ficon portaddress 0x1\n"
        "- interface fc1/2: ficon portaddress 0\n"
        "+ ficon vsan 10\n");
  auto reversed = tool("config diff startup running --json").json();
  CHECK(reversed["only-startup"] == nlohmann::json{"ficon vsan 10"});
  CHECK(reversed["only-running"].size() == 3);
  CHECK(tool("config diff yesterday").status == 2);
  REQUIRE(tool("config save").status == 0);
  CHECK(tool("config startup").out == running());
}

TEST_CASE_FIXTURE(Workbench, "a damaged startup configuration is reported") {
  REQUIRE(apply(kWhole).status == 0);
  REQUIRE(tool("config save").status == 0);
  const std::string startup = directory.path("ficon.db.startup");
  REQUIRE(std::filesystem::exists(startup));
  std::ofstream(startup) << "this was a store";
  const Result shown = tool("config startup");
  CHECK(shown.status == 1);
  CHECK(shown.out.empty());
  CHECK(contains(shown.err, "cannot be read"));
  CHECK(tool("config diff").status == 1);
  CHECK(running() == kWhole);
}

TEST_CASE("a slot is that of the chassis, whatever number its module has") {
  const ScratchDirectory directory;
  const ChassisDaemon daemon(
      "slots = 6\n"
      "[[module]]\nslot = 5\nnumber = 2\nports = 4\n"
      "[[module]]\nslot = 2\nnumber = 7\nports = 4\n");
  const Tool tool("unix:" + daemon.socket());
  std::ofstream(directory.path("lines")) << "feature ficon\n"
                                            "ficon slot 5 assign port-numbers 0x20-0x23 force\n"
                                            "no ficon slot 2 assign port-numbers\n";
  REQUIRE(tool("config apply " + directory.path("lines")).status == 0);
  CHECK(tool("config running").out ==
        "feature ficon\n"
        "no ficon slot 2 assign port-numbers\n"
        "ficon slot 5 assign port-numbers 32-35 force\n");
  CHECK(tool("port find --if fc5/1 --json").json()["port-number"] == 32);
}

TEST_CASE_FIXTURE(Workbench, "the logging level, the units, the event history") {
  CHECK(tool("debug level 4").out == "the logging level is 4\n");
  CHECK(running() == "logging level ficon 4\n");
  for (const char* wrong : {"debug level 8", "debug level", "debug level x"}) {
    CHECK(tool(wrong).status == 2);
  }
  CHECK(running() == "logging level ficon 4\n");

  auto units = tool("fru list --json").json();
  REQUIRE(units.size() == 31);
  CHECK(units[0] == nlohmann::json{{"row", 1}, {"name", "SLOT"}});
  CHECK(units[7]["name"] == "CTLPROC");
  CHECK(units[30] == nlohmann::json{{"row", 31}, {"name", "SLOT"}});

  unsetenv("FICON_EVENT_LOG");
  CHECK(tool("events show").status == 1);
  setenv("FICON_EVENT_LOG", files.path("events").c_str(), 1);
  CHECK(tool("events show").out == "no event was recorded\n");
  REQUIRE(tool("vsan enable 10").status == 0);
  REQUIRE(tool("matrix show 10").status == 0);  // reads port information, of which events tell
  CHECK(contains(tool("events show").out, "Start 0 End 253\n"));
  std::filesystem::rename(files.path("events"), files.path("events.1"));
  CHECK(contains(tool("events show --json").json().at(0).get<std::string>(), "Start 0 End 253"));
  unsetenv("FICON_EVENT_LOG");
}
