/** The switches that ficonctl's tests run it on. */
#pragma once

#include <doctest/doctest.h>

#include "daemon_process.h"
#include "tool_process.h"

namespace ficon::test {

/** The tool's own emulator, as it is at first. */
struct EmbeddedSwitch {
  ScratchDirectory directory;
  Tool tool{"embedded:" + directory.path()};
};

/** A daemon, with FICON on VSAN 20. */
struct SharedSwitch {
  SharedSwitch() { REQUIRE(tool("vsan enable 20").status == 0); }

  ScratchDirectory directory;
  DaemonProcess daemon{directory};
  Tool tool{"unix:" + directory.path("socket")};
};

}  // namespace ficon::test
