#include "model/configuration_file.h"

#include <doctest/doctest.h>

#include <locale>
#include <sstream>

using namespace ficon;
using namespace ficon::emulator;

TEST_CASE("addresses 00 to fd are ports, fe is the control unit port, ff is none") {
  CHECK(check_port_address(0x00) == FcdStatus::kDone);
  CHECK(check_port_address(0xfd) == FcdStatus::kDone);
  CHECK(check_port_address(0xfe) == FcdStatus::kControlUnitPort);
  CHECK(check_port_address(0xff) == FcdStatus::kNotAPortAddress);
  CHECK(check_port_address(0x100) == FcdStatus::kNotAPortAddress);
}

TEST_CASE("neither the control unit port nor ff can be blocked, named or prohibited") {
  ConfigurationFile file;
  for (const std::uint32_t address : {0xfeU, 0xffU, 0x100U}) {
    CAPTURE(address);
    CHECK(file.set_blocked(address, 1) != FcdStatus::kDone);
    CHECK(file.set_name(address, no_port_name()) != FcdStatus::kDone);
    CHECK(file.change_prohibited(address, 0, {}) != FcdStatus::kDone);
  }
  CHECK(file.change_prohibited(1, 0, PortSet().set(0xfe)) == FcdStatus::kControlUnitPort);
  CHECK(file.change_prohibited(1, 0, PortSet().set(0xff)) == FcdStatus::kNotAPortAddress);
  CHECK(file == ConfigurationFile());
}

TEST_CASE("a blocked value other than 0 and 1 is refused") {
  ConfigurationFile file;
  CHECK(file.set_blocked(7, 2) == FcdStatus::kBadBlockedValue);
  CHECK_FALSE(file.port(7).blocked);
  CHECK(file.set_blocked(7, 1) == FcdStatus::kDone);
  CHECK(file.port(7).blocked);
}

TEST_CASE("a prohibit stands on both sides") {
  ConfigurationFile file;
  CHECK(file.change_prohibited(0x10, 0, PortSet().set(0x20).set(0x30)) == FcdStatus::kDone);
  CHECK(file.port(0x20).prohibited == PortSet().set(0x10));
  CHECK(file.port(0x30).prohibited == PortSet().set(0x10));
  CHECK(file.is_consistent());

  SUBCASE("replacing it from the other side lifts it on this one") {
    CHECK(file.change_prohibited(0x20, 0, {}) == FcdStatus::kDone);
    CHECK(file.port(0x10).prohibited == PortSet().set(0x30));
  }
  SUBCASE("adding leaves what is there") {
    CHECK(file.change_prohibited(0x10, 1, PortSet().set(0x40)) == FcdStatus::kDone);
    CHECK(file.port(0x10).prohibited == PortSet().set(0x20).set(0x30).set(0x40));
  }
  SUBCASE("removing takes only what is named") {
    CHECK(file.change_prohibited(0x10, 2, PortSet().set(0x20).set(0x99)) == FcdStatus::kDone);
    CHECK(file.port(0x10).prohibited == PortSet().set(0x30));
  }
  SUBCASE("any other way is refused") {
    CHECK(file.change_prohibited(0x10, 3, {}) == FcdStatus::kBadProhibitChange);
    CHECK(file.port(0x10).prohibited == PortSet().set(0x20).set(0x30));
  }
  CHECK(file.is_consistent());
}

TEST_CASE("a port cannot be prohibited to itself") {
  ConfigurationFile file;
  CHECK(file.change_prohibited(5, 0, PortSet().set(5)) == FcdStatus::kProhibitsItself);
}

TEST_CASE("prohibiting the pairs of some ports leaves the others as they were") {
  ConfigurationFile file;
  CHECK(file.change_prohibited(0x10, 0, PortSet().set(0x20)) == FcdStatus::kDone);
  file.prohibit_pairs_of(PortSet().set(0x00).set(0x10).set(0xfd));
  CHECK(file.port(0x00).prohibited == PortSet().set(0x10).set(0xfd));
  CHECK(file.port(0x10).prohibited == PortSet().set(0x00).set(0x20).set(0xfd));
  CHECK(file.port(0x20).prohibited == PortSet().set(0x10));
  CHECK(file.is_consistent());
}
