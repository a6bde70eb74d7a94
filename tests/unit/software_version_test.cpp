/** The software version as numbers. */
#include <doctest/doctest.h>

#include "double/scripted_platform.h"

using namespace ficon::test;

namespace {

/** What `count` numbers become of a version text; the array behind them is 0x77. */
Bytes numbers(const char* version, std::int8_t count, std::size_t room = 12) {
  ScriptedPlatform platform;
  platform.on.srg_sw_ver_get = [&](auto...) { return version; };
  Bytes out(room, 0x77);
  CHECK(ficon_cmi_get_sw_version(0x11223344, out.data(), count) == 0);
  CHECK(platform.count("mts_send") == 0);
  CHECK(platform.finished());
  return out;
}

Bytes tail(Bytes head, std::size_t room = 12) {
  head.resize(room, 0x77);
  return head;
}

}  // namespace

TEST_CASE("software version: pieces as numbers, zeros behind them") {
  CHECK(difference(tail({4, 1, 3, 0, 0}), numbers("4.1(3a)", 5)) == "");
  CHECK(difference(tail({4, 1, 3, 0}), numbers("4.1(3a)", 4)) == "");
  CHECK(difference(tail({4, 1}), numbers("4.1(3a)", 2)) == "");
  CHECK(difference(tail({4}), numbers("4", 1)) == "");
  CHECK(difference(tail({0, 0, 7, 0}), numbers("..7", 4)) == "");
  CHECK(difference(tail({0, 0}), numbers("", 2)) == "");
  CHECK(difference(tail({0, 12, 0}), numbers("a4. 12", 3)) == "");
}

TEST_CASE("software version: a number is cut to a byte") {
  CHECK(difference(tail({0x01, 0xff}), numbers("257.-1", 2)) == "");
}

TEST_CASE("software version: none is all zeros") {
  CHECK(difference(tail({0, 0, 0}), numbers(nullptr, 3)) == "");
}

TEST_CASE("software version: a count of 0 bounds nothing") {
  CHECK(difference(tail({4, 1, 3, 0}), numbers("4.1(3a)", 0)) == "");
}

TEST_CASE("software version: of a long text, the first hundred characters") {
  const std::string dots(99, '.');
  CHECK(difference(Bytes(99) + tail({5}, 21), numbers((dots + "57").c_str(), 0, 120)) == "");
  CHECK(difference(Bytes(101) + Bytes(19, 0x77), numbers((dots + ".123").c_str(), 0, 120)) == "");
}
