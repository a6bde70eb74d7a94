/** Two processes and one lock. */
#include <doctest/doctest.h>
#include <signal.h>

#include "switches.h"

using namespace ficon::test;

TEST_CASE_FIXTURE(SharedSwitch, "a lock that is held stops others, who are told by whom") {
  ToolProcess holder = tool.start("--requester agent lock get 20 --hold 60");
  REQUIRE(holder.line() == "the lock of VSAN 20 is held for 60 s\n");

  const auto status = tool("--json lock status 20").json();
  CHECK(status["held"] == true);
  CHECK(status["holder"] == "agent");

  const Result get = tool("--requester host lock get 20");
  CHECK(get.status == 1);
  CHECK(contains(get.err, "cannot take the lock of VSAN 20: it is held by the agent for "));
  CHECK(contains(get.err, "(0x40890029, lock-busy)\n  try: "));

  const Result set = tool("--requester host vsan set 20 auto-save=on");
  CHECK(set.status == 1);
  CHECK(contains(set.err, "(0x40850012, lock-unavailable)"));

  const Result free = tool("--requester agent lock free 20");
  CHECK(free.status == 1);
  CHECK(contains(free.err, "(0x4089002a, not-lock-owner)"));
}

TEST_CASE_FIXTURE(SharedSwitch, "a stuck lock is reset; then others go on") {
  ToolProcess holder = tool.start("lock get 20 --hold 60");
  holder.line();
  CHECK(tool("lock reset 20").out == "the lock of VSAN 20 is reset\n");
  CHECK(tool("lock status 20").out == "the lock of VSAN 20 is free\n");
  CHECK(tool("vsan set 20 auto-save=on").status == 0);
}

TEST_CASE_FIXTURE(SharedSwitch, "Ctrl-C gives the lock back, and so does the holder's death") {
  for (const int signal : {SIGINT, SIGTERM, SIGKILL}) {
    CAPTURE(signal);
    ToolProcess holder = tool.start("lock get 20 --hold 60");
    holder.line();
    REQUIRE(tool("lock status 20 --json").json()["held"] == true);
    holder.signal(signal);
    CHECK(holder.finish().status == (signal == SIGKILL ? -SIGKILL : 0));
    CHECK(tool("lock status 20 --json").json()["held"] == false);
  }
}

TEST_CASE_FIXTURE(SharedSwitch, "a lock is held as long as was asked for") {
  CHECK(tool("lock get 20 --hold 1").status == 0);
  CHECK(tool("lock get 20").status == 0);
  CHECK(tool("lock status 20").out == "the lock of VSAN 20 is free\n");
}

TEST_CASE_FIXTURE(SharedSwitch, "a VSAN without FICON has no lock") {
  for (const char* command : {"lock get 21", "lock status 21", "lock free 21", "lock reset 21"}) {
    CAPTURE(std::string(command));
    const Result result = tool(command);
    CHECK(result.status == 1);
    CHECK(contains(result.err, "enable FICON on the VSAN first"));
  }
}
