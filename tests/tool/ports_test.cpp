#include <doctest/doctest.h>

#include <filesystem>

#include "switches.h"

using namespace ficon::test;

TEST_CASE_FIXTURE(EmbeddedSwitch,
                  "the port map is shown by port number, module and logical ports") {
  const auto range = tool("portmap show --range 45-46,300 --json");
  CHECK(range.status == 2);  // this switch has 256 port numbers
  CHECK(tool("portmap show --range 45-46").out ==
        "NUMBER  ADDRESS  INTERFACE  IF-INDEX    STATE\n"
        "45      2d       fc1/46     0x0100002d  failed\n"
        "46      2e       fc1/47     0x0100002e  inter-switch\n");
  const auto module = tool("portmap show --module 2 --json").json();
  REQUIRE(module.size() == 48);
  CHECK(module[36]["position"] == 100);  // of the second request
  CHECK(module[36]["port-number"] == 84);
  CHECK(module[36]["interface"] == "fc2/37");
  CHECK(module[36]["state"] == "shut down");
  CHECK(tool("portmap show --logical --json").json().size() == 10);
  CHECK(tool("portmap show --json").json().size() == 4 * 48);
  const Result empty = tool("portmap show --module 4");
  CHECK(empty.status == 1);
  CHECK(contains(empty.err, "port map of module 4: the chassis has no such module"));
}

TEST_CASE_FIXTURE(EmbeddedSwitch, "a module is drawn, and one without ports is refused") {
  const Result grid = tool("portmap grid 1");
  CHECK(contains(grid.out, "fc1/1   + 00 0"));
  CHECK(contains(grid.out, "! 2d 45"));
  const Result svg = tool("portmap svg 1");
  CHECK(svg.out.starts_with("<svg "));
  CHECK(contains(svg.out, "number 47"));
  CHECK(contains(svg.out, "fc1/48: inter-switch"));
  CHECK(tool("portmap grid 4").status == 1);
}

TEST_CASE_FIXTURE(EmbeddedSwitch, "a port is found by whatever is known of it") {
  REQUIRE(tool("vsan enable 10").status == 0);
  REQUIRE(tool("vsan set 10 fcid-last-byte=0x1f").status == 0);
  const auto found = tool("port find --if fc1/4 --json").json();
  CHECK(found["port-number"] == 3);
  CHECK(found["port-address"] == 3);
  CHECK(found["fcid"] == "0x01031f");
  CHECK(tool("port find --fcid 01031f --json").json() == found);
  CHECK(tool("port find --address 03 --json").json() == found);
  CHECK(tool("port find --number 3 --json").json() == found);
  CHECK(tool("port find --fcid 010300").status == 1);
  CHECK(tool("port find").status == 2);
}

TEST_CASE_FIXTURE(EmbeddedSwitch, "a swap is shown, made, and undone by the same swap") {
  const auto interface_at_01 = [&] {
    return tool("port find --address 01 --json").json()["interface"];
  };
  CHECK(contains(tool("port swap 1 60 --dry-run").out,
                 "port address 01 would move from fc1/2 (port number 1) to fc2/13"));
  CHECK(interface_at_01() == "fc1/2");
  CHECK(tool("port swap 1 60").status == 0);
  CHECK(interface_at_01() == "fc2/13");
  CHECK(tool("port swap fc1/2 fc2/13").status == 0);
  CHECK(interface_at_01() == "fc1/2");
}

TEST_CASE_FIXTURE(EmbeddedSwitch, "a swap is refused with its reason, and so is its dry run") {
  REQUIRE(tool("port bind 2a --number none").status == 0);
  struct Case {
    const char* ports;
    const char* name;
  };
  for (const Case& refused :
       {Case{"1 1", "same-port"}, Case{"fc1/2 1", "same-port"}, Case{"1 240", "port-not-installed"},
        Case{"250 1", "port-not-installed"}, Case{"fc4/1 1", "port-not-installed"},
        Case{"1 254", "control-unit-port"}, Case{"42 1", "port-without-address"}}) {
    for (const char* how : {" --json", " --dry-run --json"}) {
      const Result result = tool(std::string("port swap ") + refused.ports + how);
      CHECK(result.status == 1);
      CHECK_MESSAGE(contains(result.out, std::string("\"name\": \"") + refused.name + '"'),
                    std::string(refused.ports), std::string(how), result.out);
    }
  }
  CHECK(tool("port find --address 01 --json").json()["interface"] == "fc1/2");
}

TEST_CASE_FIXTURE(EmbeddedSwitch, "a refused reservation names the number that collides") {
  const Result refused = tool("portnumber reserve --module 2 40-47");
  CHECK(refused.status == 1);
  CHECK(contains(refused.err, "port number 40 is reserved for module 1"));
  CHECK(tool("portnumber release --module 7").status == 0);
  CHECK(tool("portnumber reserve --module 2 144-191").status == 0);
  CHECK(contains(tool("portnumber show").out, "module 2           144-191       48\n"));
  CHECK(tool("port find --number 144 --json").json()["interface"] == "fc2/1");
  CHECK(tool("portnumber reserve 10").status == 2);
}

TEST_CASE_FIXTURE(EmbeddedSwitch, "a logical interface gets its number and its port address") {
  CHECK(tool("port bind f5").err ==
        "ficonctl: say what to bind the port address to: --if or --number\n"
        "  try: ficonctl port bind --help\n");
  const auto freed = tool("portmap show --range 245 --json").json()[0];
  CHECK(freed["port-address"] == 0xf5);
  CHECK(contains(tool("portnumber assign fc4/1 3").err, "no-such-"));
  CHECK(tool("portnumber assign fcip3 245").status == 0);
  CHECK(tool("port bind f5 --number none").status == 0);
  CHECK(tool("portmap show --range 245 --json").json()[0]["port-address"].is_null());
  CHECK(tool("port bind aa --if fcip3").status == 0);
  CHECK(tool("port find --address aa --json").json()["port-number"] == 245);
  CHECK(tool("port bind f5 --if fcip3").status == 1);  // a number has one address at most
  CHECK(tool("portnumber assign fcip3 none").status == 0);
  CHECK(tool("port bind f5 --if fcip3").status == 1);
}

TEST_CASE_FIXTURE(EmbeddedSwitch, "prohibit settings are kept") {
  CHECK(tool("prohibit-default get").out == "default prohibit: off\n");
  CHECK(tool("prohibit-default set on").status == 0);
  CHECK(tool("prohibit-default get").out == "default prohibit: on\n");
  CHECK(tool("acl set on").status == 0);
  CHECK(tool("acl get").out == "acl-not-fcid: on\n");
  CHECK(tool("acl downgrade").out == "acl-not-fcid: off\n");
}

TEST_CASE_FIXTURE(EmbeddedSwitch, "the largest chassis: port numbers to 1279, every module whole") {
  std::filesystem::copy_file(FICON_CHASSIS_EXAMPLES "/full-director.toml",
                             directory.path("chassis.toml"));
  CHECK(tool("portnumber reserve --module 16 960-1023").status == 0);
  const auto module = tool("portmap show --module 16 --json").json();
  REQUIRE(module.size() == 64);
  CHECK(module[63]["position"] == 1023);
  const auto numbers = tool("portmap show --range 959-961,1279 --json").json();
  REQUIRE(numbers.size() == 4);
  CHECK(numbers[0]["interface"].is_null());
  CHECK(numbers[1]["port-number"] == 960);
  CHECK(numbers[1]["interface"].is_null());  // a number without a port address is not in the map
  CHECK(tool("port bind f0 --number none").status == 0);
  CHECK(tool("port bind f0 --number 960").status == 0);
  CHECK(tool("portmap show --range 960 --json").json()[0]["interface"] == "fc16/1");
  CHECK(tool("portmap show --range 1280").status == 2);
}
