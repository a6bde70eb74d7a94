#include "model/history.h"

#include <doctest/doctest.h>

using namespace ficon::emulator;

TEST_CASE("Positions have no gaps, and the oldest entries give way") {
  History history(3);
  CHECK(history.append({.vsan = 11}) == 0);
  CHECK(history.append({.vsan = 12}) == 0);
  CHECK(history.append({.vsan = 13}) == 0);
  CHECK(history.append({.vsan = 14}) == 1);
  CHECK(history.last_position() == 4);
  CHECK(history.at(1) == nullptr);
  REQUIRE(history.at(2) != nullptr);
  CHECK(history.at(2)->vsan == 12);
  CHECK(history.at(4)->vsan == 14);
  CHECK(history.at(5) == nullptr);
}

TEST_CASE("A restored history goes on where it was") {
  History history(3);
  history.restore({.position = 41, .vsan = 5});
  CHECK(history.append({.vsan = 6}) == 0);
  CHECK(history.at(42)->vsan == 6);
}
