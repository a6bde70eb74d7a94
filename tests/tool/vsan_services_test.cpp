/** hostdata, history, limits and mihpto, as their users run them. */
#include <doctest/doctest.h>
#include <signal.h>

#include <fstream>
#include <iterator>

#include "chassis_daemon.h"
#include "switches.h"

using namespace ficon::test;

namespace {

std::string contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

TEST_CASE_FIXTURE(SharedSwitch, "host data are shown as hexadecimal and EBCDIC side by side") {
  CHECK(tool("hostdata dump 20").out == "VSAN 20 has no host data\n");
  CHECK(tool("hostdata write 20 --hex c8c5d3d3d64000ffc1c2 --offset 14").out ==
        "10 bytes written to the host data of VSAN 20, from offset 14 on\n");
  CHECK(tool("hostdata dump 20").out ==
        "0000  00 00 00 00 00 00 00 00  00 00 00 00 00 00 c8 c5  |..............HE|\n"
        "0010  d3 d3 d6 40 00 ff c1 c2                           |LLO ..AB|\n");
  CHECK(tool("hostdata read 20").out == std::string(28, '0') + "c8c5d3d3d64000ffc1c2\n");
  const auto json = tool("--json hostdata dump 20").json();
  CHECK(json["length"] == 24);
  CHECK(json["codepage"] == 37);
  CHECK(json["text"] == "..............HELLO ..AB");
}

TEST_CASE_FIXTURE(SharedSwitch, "host data go from file to file byte for byte") {
  std::string block(16384, '\0');
  for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<char>(i * 7 + i / 256);
  std::ofstream(directory.path("in"), std::ios::binary) << block;
  CHECK(tool("hostdata write 20 " + directory.path("in")).status == 0);
  CHECK(tool("hostdata read 20 " + directory.path("out")).status == 0);
  CHECK(contents(directory.path("out")) == block);
  CHECK(tool("hostdata write 20 " + directory.path("in") + " --offset 1").status == 2);
}

TEST_CASE_FIXTURE(SharedSwitch, "host data that cannot be read or written say why") {
  const Result off = tool("hostdata read 21");
  CHECK(off.status == 1);
  CHECK(contains(off.err, "(0x40890005, vsan-without-ficon)"));
  CHECK(tool("hostdata write 20").status == 2);
  CHECK(tool("hostdata write 20 --hex c8c").status == 2);
  CHECK(contains(tool("hostdata write 20 --hex zz").err, "\"zz\" is not hexadecimal"));
  const Result missing = tool("hostdata write 20 " + directory.path("none"));
  CHECK(missing.status == 1);
  CHECK(contains(missing.err, "cannot read "));
}

TEST_CASE_FIXTURE(SharedSwitch, "the history tells who changed what, from a position on") {
  REQUIRE(tool("--requester agent vsan codepage 20 1047").status == 0);
  const auto all = tool("--json history show").json();
  REQUIRE(all["entries"].size() == 3);
  CHECK(all["position"] == 3);
  CHECK(all["lost"] == 0);
  const auto& entry = all["entries"][2];
  CHECK(entry["position"] == 3);
  CHECK(entry["vsan"] == 20);
  CHECK(entry["requester"] == "agent");
  CHECK(entry["change"] == "code page");
  CHECK(entry["detail"] == "1047");
  CHECK(tool("--json history show --since 2").json()["entries"].size() == 1);
  CHECK(contains(tool("history show --since 3").out, "nothing was recorded behind position 3"));
  const Result never = tool("history show --since 4");
  CHECK(never.status == 1);
  CHECK(contains(never.err, "no-history-position"));
}

TEST_CASE_FIXTURE(SharedSwitch, "following the history prints what comes, and ends with Ctrl-C") {
  for (const int signal : {SIGINT, SIGTERM}) {
    CAPTURE(signal);
    const std::uint32_t last = tool("--json history show").json()["position"];
    ToolProcess follower =
        tool.start("--json history show --follow --since " + std::to_string(last - 1));
    CHECK(nlohmann::json::parse(follower.line())["position"] == last);
    REQUIRE(
        tool(std::string("vsan set 20 auto-save=") + (signal == SIGINT ? "on" : "off")).status ==
        0);
    const auto entry = nlohmann::json::parse(follower.line());
    CHECK(entry["position"] == last + 1);
    CHECK(entry["change"] == "modes");
    follower.signal(signal);
    const Result end = follower.finish();
    CHECK(end.status == 0);
    CHECK(end.out.empty());
  }
}

TEST_CASE_FIXTURE(SharedSwitch, "limits are set all or none, and shown") {
  CHECK(tool("limits show").out ==
        "LIMIT         VALUE\n"
        "getnext-type  all\n"
        "max-ports     256\n");
  const auto set = tool("--json limits set getnext-type=installed max-ports=300").json();
  CHECK(set["getnext-type"] == "installed");
  CHECK(set["max-ports"] == 300);
  CHECK(tool("limits set max-ports=7 getnext-typ=all").status == 2);
  CHECK(tool("--json limits show").json()["max-ports"] == 300);
  CHECK(contains(tool("limits set getnext-type=5").err, "bad-get-next-type"));
}

TEST_CASE_FIXTURE(SharedSwitch, "a MIH time-out is encoded, read back, and inherited") {
  CHECK(tool("mihpto get").out == "the default MIH time-out is 180 seconds (0x52)\n");
  CHECK(tool("mihpto set 40").out == "the default MIH time-out is 40 seconds (0x44)\n");
  CHECK(tool("--json mihpto get --vsan 20").json()["seconds"] == 40);
  CHECK(tool("mihpto set 63000 --vsan 20").out ==
        "the MIH time-out of VSAN 20 is 63000 seconds (0xff)\n");
  CHECK(tool("--json mihpto get").json()["seconds"] == 40);
  CHECK(tool("--json mihpto set default --vsan 20").json()["seconds"] == 40);
  CHECK(tool("mihpto set 64").status == 2);
  CHECK(tool("mihpto set default").status == 2);
  const Result off = tool("mihpto get --vsan 21");
  CHECK(off.status == 1);
  CHECK(contains(off.err, "vsan-without-ficon"));
}

TEST_CASE_FIXTURE(SharedSwitch, "a MIH time-out that was not taken is told") {
  ToolProcess holder = tool.start("--requester agent lock get 20 --hold 60");
  holder.line();
  const Result set = tool("mihpto set 40 --vsan 20");
  CHECK(set.status == 1);
  CHECK(contains(set.err, "was not taken: it is 180 seconds"));
  holder.signal(SIGINT);
  holder.finish();
}

TEST_CASE_FIXTURE(SharedSwitch, "the identification block shows switch, modules and ports") {
  const auto parts = tool("--json pib show").json();
  REQUIRE(parts.size() > 1);
  CHECK(parts[0]["what"] == "switch");
  CHECK(parts[0]["model"] == "D9");
  CHECK(parts[0]["serial"] == "D900001");
  CHECK(parts[1]["what"] == "module 1");
  CHECK(parts[1]["serial"] == "D900001-01");
  const auto ports = tool("--json pib show --module 1").json();
  REQUIRE(ports.size() == 48);
  CHECK(ports[47]["what"] == "fc1/48");
  CHECK(ports[47]["tag"] == 47);
  CHECK(contains(tool("pib show --module 16").err, "no-identification"));
}

TEST_CASE("the identification block says what the chassis file says") {
  const ChassisDaemon daemon(R"(
name = "hall-4-east"
model = "XQ-17"
serial = "ZK0815"
slots = 6
[[module]]
slot = 5
number = 2
type = "3-port"
ports = 3
)");
  const Tool tool("unix:" + daemon.socket());
  using Json = nlohmann::json;
  CHECK(tool("--json pib show").json() == Json::array({{{"what", "switch"},
                                                        {"type", "hall-4-east"},
                                                        {"model", "XQ-17"},
                                                        {"serial", "ZK0815"},
                                                        {"tag", nullptr}},
                                                       {{"what", "module 2"},
                                                        {"type", "3-port"},
                                                        {"model", "XQ-17"},
                                                        {"serial", "ZK0815-05"},
                                                        {"tag", nullptr}}}));
  const auto ports = tool("--json pib show --module 2").json();
  REQUIRE(ports.size() == 3);
  CHECK(ports[2] == Json{{"what", "fc5/3"},
                         {"type", "3-port"},
                         {"model", "XQ-17"},
                         {"serial", "ZK0815-05"},
                         {"tag", 2}});
}
