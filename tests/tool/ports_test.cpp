#include <doctest/doctest.h>

#include "daemon_process.h"
#include "tool_process.h"

using namespace ficon::test;

namespace {

struct EmbeddedSwitch {
  ScratchDirectory directory;
  Tool tool{"embedded:" + directory.path()};
};

}  // namespace

TEST_CASE_FIXTURE(EmbeddedSwitch,
                  "the port map is shown by port number, module and logical ports") {
  const auto range = tool("portmap show --range 45-46,300 --json");
  CHECK(range.status == 2);  // this switch has 256 port numbers
  CHECK(tool("portmap show --range 45-46").out ==
        "POSITION  NUMBER  ADDRESS  INTERFACE  IF-INDEX    STATE\n"
        "-         45      2d       fc1/46     0x0100002d  failed\n"
        "-         46      2e       fc1/47     0x0100002e  inter-switch\n");
  const auto module = tool("portmap show --module 2 --json").json();
  REQUIRE(module.size() == 48);
  CHECK(module[36]["position"] == 100);  // of the second request
  CHECK(module[36]["port-number"] == 84);
  CHECK(module[36]["interface"] == "fc2/37");
  CHECK(module[36]["state"] == "shut down");
  CHECK(tool("portmap show --logical --json").json().size() == 10);
  CHECK(tool("portmap show --json").json().size() == 4 * 48);
  CHECK(tool("portmap show --module 4").status == 1);  // an empty slot
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
  CHECK(tool("port swap 1 240").status == 1);  // no interface
  CHECK(interface_at_01() == "fc1/2");
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
  CHECK(tool("portnumber assign fcip3 245").status == 0);
  CHECK(tool("port bind f5 --number none").status == 0);
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
