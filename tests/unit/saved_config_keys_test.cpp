/** Keys of the saved configuration and bitsets of its records. */
#include <doctest/doctest.h>
#include <ficon_cmi.h>

#include "double/bytes.h"

using namespace ficon::test;

namespace {

/** A key built over other bytes, and the two that stand around it. */
template <class Build>
Bytes built(Build build) {
  Bytes room(10, 0x77);
  std::uint8_t* key = room.data() + 1;
  CHECK(build(&key) == 0);
  CHECK(key == room.data() + 1);
  return room;
}

}  // namespace

TEST_CASE("keys: a type and zeros") {
  CHECK(built(ficon_pss_build_pa_pn_map_key) == Bytes{0x77, 8, 0, 0, 0, 0, 0, 0, 0, 0x77});
  CHECK(built(ficon_pss_build_pn_if_map_key) == Bytes{0x77, 9, 0, 0, 0, 0, 0, 0, 0, 0x77});
  const auto block = [](std::uint32_t number) {
    return [number](std::uint8_t** key) { return ficon_pss_build_port_pn_map_key(key, number); };
  };
  CHECK(built(block(0)) == Bytes{0x77, 13, 0, 0, 0, 0, 0, 0, 0, 0x77});
  CHECK(built(block(1)) == Bytes{0x77, 14, 0, 0, 0, 0, 0, 0, 0, 0x77});
  CHECK(built(block(19)) == Bytes{0x77, 32, 0, 0, 0, 0, 0, 0, 0, 0x77});
}

TEST_CASE("bitsets: bits are copied from and to behind the header, which stays") {
  const Bytes bitset = {0xa1, 0xa2, 0xa3, 0xa4, 1, 2, 3, 4, 5};
  Bytes array(5, 0x77);
  ficon_bitset_to_bitarray(bitset.data(), array.data(), 4);
  CHECK(array == Bytes{1, 2, 3, 4, 0x77});
  ficon_bitset_to_bitarray(bitset.data(), array.data(), 0);
  CHECK(array == Bytes{1, 2, 3, 4, 0x77});

  Bytes other = bitset;
  const Bytes bits = {0x11, 0x22, 0x33, 0x44};
  ficon_bitset_from_bitarray(other.data(), bits.data(), 3);
  CHECK(other == Bytes{0xa1, 0xa2, 0xa3, 0xa4, 0x11, 0x22, 0x33, 4, 5});
}
