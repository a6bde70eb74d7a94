/** The ready answers: they stand in for services, so they have to behave like them. */
#include <doctest/doctest.h>

#include "double/fakes.h"

using namespace ficon::test;

TEST_CASE("stores: opened by URI, walked in key order to the end, fetched by key") {
  ScriptedPlatform platform;
  play_stores(platform, {{"a/ficon", {{{2}, {0x22, 0x23}}, {{1}, {0x11}}}}});
  CHECK(pss_open("b") == nullptr);
  const pss_store_t store = pss_open("a/ficon");
  REQUIRE(store != nullptr);
  pss_location_t location = nullptr;
  const std::uint8_t* key = nullptr;
  const void* value = nullptr;
  std::uint32_t key_length = 0;
  std::uint32_t value_length = 0;
  REQUIRE(pss_move2location(store, 1, &location) == 0);
  CHECK(pss_getvalue(store, location, &key, &key_length, &value, &value_length) == 0);
  CHECK(Bytes(key, key + key_length) == Bytes{1});
  REQUIRE(pss_move2location(store, 3, &location) == 0);
  CHECK(pss_getvalue(store, location, &key, &key_length, &value, &value_length) == 0);
  CHECK(Bytes(key, key + key_length) == Bytes{2});
  CHECK(value_length == 2);
  CHECK(pss_move2location(store, 3, &location) == 0x40480003);
  CHECK(location == nullptr);

  const std::uint8_t wanted = 2;
  std::uint8_t room[1];
  std::uint32_t length = sizeof room;
  CHECK(pss_fetch(store, &wanted, 1, room, &length) == 0);
  CHECK(length == 1);
  CHECK(room[0] == 0x22);
  const std::uint8_t missing = 3;
  CHECK(pss2_fetch(store, &missing, 1, room, &length) != 0);
}

TEST_CASE("interfaces: one after the other, none after the last") {
  ScriptedPlatform platform;
  play_interfaces(platform, {0x100, 0x300, 0x200});
  if_index_t next = 0;
  CHECK(ficon_pmap_get_next_if(0x300, &next) == 0);
  CHECK(next == 0x200);
  CHECK(ficon_pmap_get_next_if(0x200, &next) != 0);
  CHECK(ficon_pmap_get_last_if(&next) == 0);
  CHECK(next == 0x200);
}

TEST_CASE("converter: letters and digits there and back, the rest refused") {
  ScriptedPlatform platform;
  play_converter(platform, ebcdic);
  const ficon_convert_fn_t convert = ficon_get_convert_fn_ptr();
  REQUIRE((convert != nullptr));
  std::uint8_t output[100];
  std::uint8_t* cursor = output;
  std::uint32_t count = 0;
  std::uint32_t space = sizeof output;
  const Bytes input = text("AZ 09");
  CHECK(convert(input.data(), 5, 1, &cursor, &count, &space, 37) != 0);
  CHECK(count == 5);
  CHECK(space == 95);
  CHECK(cursor == output + 5);
  CHECK(Bytes(output, cursor) == Bytes{0xc1, 0xe9, 0x40, 0xf0, 0xf9});
  CHECK(convert_codepage(37, 1, output, 5) == 0);
  CHECK(Bytes(output, cursor) == input);
  CHECK(convert(text("A%").data(), 2, 1, &cursor, &count, &space, 37) == 0);
  CHECK(platform.lines({"convert"}) ==
        "convert from=1 to=37 length=5\n"
        "convert from=37 to=1 length=5\n"
        "convert from=1 to=37 length=2\n");
}
