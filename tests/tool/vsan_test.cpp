/** `ficonctl vsan` against the emulator inside the tool itself. */
#include <doctest/doctest.h>

#include "switches.h"

using namespace ficon::test;

TEST_CASE_FIXTURE(EmbeddedSwitch, "FICON on, settings changed and read back by later runs") {
  CHECK(contains(tool("vsan list").out, "FICON is enabled on no VSAN"));
  CHECK(tool("vsan enable 20").out == "FICON is enabled on VSAN 20\n");
  CHECK(tool("vsan set 20 user-alert-mode=on fcid-last-byte=0x1f codepage=1140").status == 0);

  const auto shown = tool("vsan show 20 --json").json();
  CHECK(shown["vsan"] == 20);
  CHECK(shown["state"] == "up");
  CHECK(shown["user-alert-mode"] == true);
  CHECK(shown["clock-alert-mode"] == false);
  CHECK(shown["fcid-last-byte"] == 31);
  CHECK(shown["codepage"] == 1140);
}

TEST_CASE_FIXTURE(EmbeddedSwitch, "every mode is set and read under one name") {
  REQUIRE(tool("vsan enable 20").status == 0);
  for (const char* mode : {"switch-offline", "host-control-switch-offline", "prohibit-host-control",
                           "clock-alert-mode", "user-alert-mode", "prohibit-snmp", "auto-save",
                           "host-clock-set-allowed"}) {
    CAPTURE(std::string(mode));
    for (const bool on : {true, false}) {
      const Result set =
          tool("vsan set 20 --yes --json " + std::string(mode) + (on ? "=on" : "=off"));
      REQUIRE(set.status == 0);
      CHECK(set.json()[mode] == on);
    }
  }
}

TEST_CASE_FIXTURE(EmbeddedSwitch, "the list has the VSANs in order") {
  for (const char* vsan : {"4093", "1", "20"}) {
    REQUIRE(tool(std::string("vsan enable ") + vsan).status == 0);
  }
  REQUIRE(tool("vsan disable 20").status == 0);
  const auto list = tool("--json vsan list").json();
  REQUIRE(list.size() == 2);
  CHECK(list[0]["vsan"] == 1);
  CHECK(list[1]["vsan"] == 4093);
  CHECK(tool("vsan list").out ==
        "VSAN  STATE  CODEPAGE  AUTO-SAVE  KEY-COUNTER\n"
        "1     up     37        off        0\n"
        "4093  up     37        off        0\n");
}

TEST_CASE_FIXTURE(EmbeddedSwitch, "a bad setting stops the others before any of them is sent") {
  REQUIRE(tool("vsan enable 20").status == 0);
  const Result refused = tool("vsan set 20 auto-save=on prohibit-snp=on");
  CHECK(refused.status == 2);
  CHECK(refused.err ==
        "ficonctl: a VSAN has no setting \"prohibit-snp\": did you mean \"prohibit-snmp\"?\n"
        "  try: ficonctl vsan set --help\n");
  CHECK(tool("vsan set 20 auto-save=on clock-alert-mode=2").status == 2);
  CHECK(tool("vsan show 20 --json").json()["auto-save"] == false);
}

TEST_CASE_FIXTURE(EmbeddedSwitch, "user alert mode wants a yes before what disrupts") {
  REQUIRE(tool("vsan enable 20").status == 0);
  REQUIRE(tool("vsan set 20 user-alert-mode=on").status == 0);
  const Result refused = tool("vsan set 20 auto-save=on switch-offline=on");
  CHECK(refused.status == 1);
  CHECK(contains(refused.err, "repeat the command with --yes"));
  CHECK(tool("vsan show 20 --json").json()["auto-save"] == false);
  CHECK(tool("vsan disable 20").status == 1);
  CHECK(tool("vsan disable 20 --yes").status == 0);
}

TEST_CASE_FIXTURE(EmbeddedSwitch, "a VSAN without FICON: what is wrong and what to try") {
  const Result absent = tool("vsan show 21");
  CHECK(absent.status == 1);
  CHECK(absent.out.empty());
  CHECK(absent.err ==
        "ficonctl: cannot read VSAN 21: FICON is not enabled on the VSAN (0x40890005, "
        "vsan-without-ficon)\n"
        "  try: enable FICON on the VSAN first\n");

  const auto error = tool("--json vsan show 21").json()["error"];
  CHECK(error["status"] == "0x40890005");
  CHECK(error["name"] == "vsan-without-ficon");
  CHECK(error["message"] == "cannot read VSAN 21: FICON is not enabled on the VSAN");
  CHECK(error["hint"] == "enable FICON on the VSAN first");
}

TEST_CASE_FIXTURE(EmbeddedSwitch, "the key counter is shown, incremented, and tested first") {
  REQUIRE(tool("vsan enable 20").status == 0);
  CHECK(tool("vsan key-counter 20").out == "0\n");
  CHECK(tool("vsan key-counter 20 --increment").out == "1\n");
  CHECK(tool("vsan key-counter 20 --test 1").out == "2\n");
  const Result stale = tool("--json vsan key-counter 20 --test 1");
  CHECK(stale.status == 1);
  CHECK(stale.json()["error"]["name"] == "key-counter-stale");
  CHECK(tool("vsan key-counter 20").out == "2\n");
}

TEST_CASE_FIXTURE(EmbeddedSwitch, "clock and code page are set and read back") {
  REQUIRE(tool("vsan enable 20").status == 0);
  CHECK(tool("vsan clock 20 --set 11223344:55667788").out == "0x11223344:0x55667788\n");
  CHECK(tool("vsan clock 20").out == "0x11223344:0x55667788\n");
  CHECK(tool("vsan clock 20 --clear").out == "0x00000000:0x00000000\n");
  CHECK(tool("vsan clock 20 --set 1").status == 2);
  CHECK(tool("vsan codepage 20 273").out == "273\n");
  CHECK(tool("vsan codepage 20").out == "273\n");
  CHECK(contains(tool("vsan codepage 20 5").err, "use 37, 273"));
}

TEST_CASE_FIXTURE(EmbeddedSwitch, "the requester decides what may be changed") {
  REQUIRE(tool("vsan enable 20").status == 0);
  REQUIRE(tool("vsan set 20 prohibit-host-control=on").status == 0);
  const Result refused = tool("--requester host vsan set 20 auto-save=on");
  CHECK(refused.status == 1);
  CHECK(contains(refused.err, "0x40890020, host-control-prohibited"));
  CHECK(tool("--requester operator vsan set 20 auto-save=on").status == 0);
}

TEST_CASE_FIXTURE(EmbeddedSwitch, "the box status counts what there is") {
  REQUIRE(tool("vsan enable 20").status == 0);
  const auto box = tool("box status --json").json();
  CHECK(box["ficon feature"] == 1);
  CHECK(box["ficon vsans"] == 1);
  CHECK(box["locks held"] == 0);
  CHECK(box["software version"] == "4.1.3");
}
