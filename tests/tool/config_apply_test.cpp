/** Bringing settings about: all of them, or those before. The library in the test's own process. */
#include "config_apply.h"

#include <doctest/doctest.h>

#include "daemon_process.h"
#include "failure.h"
#include "server/embedded.h"
#include "transport/endpoint.h"

using namespace ficon::ctl;
using ficon::test::ScratchDirectory;

namespace {

struct OwnSwitch {
  OwnSwitch() { ficon_embedded_register(ficon::emulator::connect_embedded); }

  ScratchDirectory directory;
  SessionOptions options{.endpoint = "embedded:" + directory.path()};
  Session session{options};

  ConfigState state() { return read_state(session); }
  void apply(const std::string& lines) {
    session.handle();
    const ConfigState now = state();
    bring_about(session, now, with_lines(now, parse_config(lines, 255)));
  }
  /** Asks for everything in `lines` and for one thing more, which the daemon refuses last. */
  std::string refusal(const std::string& lines) {
    const ConfigState now = state();
    ConfigState wanted = with_lines(now, parse_config(lines, 255));
    wanted.vsans.insert(4094);
    try {
      bring_about(session, now, wanted);
      return "";
    } catch (const Failure& failure) {
      return failure.what();
    }
  }
};

const std::string kLines =
    "feature ficon\n"
    "ficon vsan 10\n"
    "no ficon slot 7 assign port-numbers\n"
    "ficon slot 1 assign port-numbers 0-47, 144-147\n"
    "ficon logical-port assign port-numbers 250-251, 240\n"
    "interface fc1/3\n  ficon portaddress 3\n"
    "interface fc1/4\n  ficon portaddress 2\n"
    "interface fcip 3\n  ficon portnumber 250\n";

const std::string kOtherLines =
    "ficon slot 1 assign port-numbers 0-9\n"
    "ficon slot 2 assign port-numbers 10-47\n"
    "no ficon slot 3 assign port-numbers\n"
    "ficon slot 7 assign port-numbers 96-143\n"
    "no ficon logical-port assign port-numbers 250\n"
    "ficon logical-port assign port-numbers 200, 251\n"
    "interface fc1/3\n  ficon portaddress 0x70\n"
    "interface fc1/5\n  ficon portaddress 0x200\n"
    "interface port-channel 12\n  ficon portnumber 251\n"
    "interface fcip 3\n  ficon portnumber 200\n"
    "ficon vsan 11\n";

}  // namespace

TEST_CASE_FIXTURE(OwnSwitch, "settings are read back as they were asked for") {
  apply(kLines);
  const ConfigState first = state();
  CHECK(first.vsans == std::set<std::uint32_t>{10});
  CHECK(first.ports.logical == std::map<std::uint32_t, if_index_t>{{250, 0x0a000003}});
  CHECK(first.ports.address_of(2) == 3);
  CHECK(first.ports.shown_numbers(0) == std::vector<std::uint32_t>{250, 251, 240});
  apply(kOtherLines);
  CHECK(state() == with_lines(first, parse_config(kOtherLines, 255)));
}

TEST_CASE_FIXTURE(OwnSwitch, "after a refusal everything is as it was") {
  apply(kLines);
  const ConfigState before = state();
  CHECK(refusal(kOtherLines).starts_with("cannot enable FICON on VSAN 4094"));
  CHECK(state() == before);
}

TEST_CASE_FIXTURE(OwnSwitch,
                  "ports out of the order of their positions come back where they were") {
  apply(kLines);
  ConfigState before = state();
  // fc1/1 takes a spare number, whose place stays empty; fc1/2 has none.
  before.ports.number_at[0] = 144;
  before.ports.number_at[1] = before.ports.number_at[48] = 512;
  REQUIRE(ficon_cmi_set_portnum(session.handle(), 2, 0x01000001, 512, 0) == 0);
  REQUIRE(ficon_cmi_set_portnum(session.handle(), 1, 0x01000000, 144, 0) == 0);
  REQUIRE(state().ports.number_at == before.ports.number_at);
  CHECK_FALSE(refusal(kOtherLines).empty());
  const ConfigState after = state();
  for (std::uint32_t position = 0; position < 48; ++position) {  // those that are ports
    CAPTURE(position);
    CHECK(after.ports.number_at[position] == before.ports.number_at[position]);
  }
  CHECK(after.ports.reserved == before.ports.reserved);
  CHECK(after.ports.number_of_address == before.ports.number_of_address);
}
