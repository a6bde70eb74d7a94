/** ficonctl and a daemon of its own: absent, killed and started again, silent. */
#include <doctest/doctest.h>
#include <signal.h>

#include "daemon_process.h"
#include "tool_process.h"

using namespace ficon::test;

TEST_CASE("without a daemon no command claims success") {
  const ScratchDirectory directory;
  const Tool tool("unix:" + directory.path("socket"));
  for (const char* command : {"vsan list",
                              "vsan show 20",
                              "vsan enable 20",
                              "vsan disable 20",
                              "vsan disable 20 --yes",
                              "vsan set 20 auto-save=on",
                              "vsan key-counter 20 --increment",
                              "vsan codepage 20 37",
                              "vsan clock 20 --clear",
                              "lock status 20",
                              "lock get 20",
                              "lock free 20",
                              "lock reset 20",
                              "box status",
                              "pib show",
                              "portmap show",
                              "portmap show --module 1",
                              "portmap show --logical",
                              "portmap show --range 0-7",
                              "portmap grid 1",
                              "portmap svg 1",
                              "port find --address 40",
                              "port swap 0 1",
                              "port swap 0 1 --dry-run",
                              "port bind f1 --number none",
                              "port bind f1 --if fc1/1",
                              "portnumber show",
                              "portnumber reserve --module 1 0-7",
                              "portnumber release --logical",
                              "portnumber assign fc1/1 none",
                              "prohibit-default get",
                              "prohibit-default set on",
                              "acl get",
                              "acl set on",
                              "acl downgrade"}) {
    CAPTURE(std::string(command));
    const Result result = tool(command);
    CHECK(result.status == 1);
    CHECK(result.out.empty());
    CHECK(contains(result.err, "no daemon answers at unix:" + directory.path("socket")));
    CHECK(contains(result.err, "(0x00000020, daemon-absent)\n  try: start fcd-emulator there"));
  }
}

TEST_CASE("after kill -9 and a restart everything acknowledged is there") {
  const ScratchDirectory directory;
  const Tool tool("unix:" + directory.path("socket"));
  nlohmann::json before;
  {
    DaemonProcess daemon(directory);
    REQUIRE(tool("vsan enable 20").status == 0);
    before = tool("--json vsan set 20 auto-save=on clock-alert-mode=on").json();
    daemon.signal(SIGKILL);
    REQUIRE(daemon.wait() == -SIGKILL);
  }
  CHECK(tool("vsan show 20").status == 1);
  const DaemonProcess again(directory);
  CHECK(tool("--json vsan show 20").json() == before);
}

TEST_CASE("a silent daemon: the wait runs out and is called so") {
  const ScratchDirectory directory;
  const DaemonProcess daemon(directory);
  const Tool tool("unix:" + directory.path("socket"));
  REQUIRE(tool("vsan enable 20").status == 0);
  daemon.signal(SIGSTOP);
  for (const char* command : {"vsan list", "vsan show 20", "lock status 20", "lock reset 20"}) {
    CAPTURE(std::string(command));
    CHECK(contains(tool(std::string("--wait 100 ") + command).err, "(0x40850043, timed-out)"));
  }
  daemon.signal(SIGCONT);
}

TEST_CASE("--verbose shows each exchange with opcode, lengths, status and time") {
  const ScratchDirectory directory;
  const DaemonProcess daemon(directory);
  const Tool tool("unix:" + directory.path("socket"));
  const Result result = tool("--verbose vsan show 21");
  CHECK(contains(result.err, "-> opcode 7855 SAP 101, 136 bytes\n"));
  CHECK(contains(result.err, "<- opcode 7855 SAP 101, 136 bytes, status 0x40890005, "));
  CHECK(contains(result.err, " us\n"));
}
