#include "output.h"

#include <doctest/doctest.h>

using namespace ficon::ctl;

TEST_CASE("columns are as wide as their widest cell, and lines end without blanks") {
  Table table({"VSAN", "STATE", "NOTE"});
  table.add({"7", "up", ""});
  table.add({"4093", "offline", "x"});
  CHECK(table.text() ==
        "VSAN  STATE    NOTE\n"
        "7     up\n"
        "4093  offline  x\n");
}

TEST_CASE("a character of two bytes is as wide as any other") {
  Table table({"NAME", "PORT"});
  table.add({"Zürich", "04"});
  CHECK(table.text() ==
        "NAME    PORT\n"
        "Zürich  04\n");
}

TEST_CASE("the header alone is bold, where it is wanted") {
  Table table({"VSAN"});
  table.add({"20"});
  CHECK(table.text(true) == "\033[1mVSAN\033[0m\n20\n");
}

TEST_CASE("a table without rows says so") {
  Table table({"VSAN"});
  CHECK_FALSE(table.has_rows());
  table.add({"20"});
  CHECK(table.has_rows());
}

TEST_CASE("hexadecimal has the digits that were asked for") {
  CHECK(hex(0x40890029, 8) == "0x40890029");
  CHECK(hex(0, 8) == "0x00000000");
  CHECK(hex(0x1f, 2) == "0x1f");
}
