/** Sets of port addresses on the wire: the bit of address a is 0x80 >> (a mod 8) of byte a / 8. */
#pragma once

#include "model/configuration_file.h"
#include "wire/byte_order.h"

namespace ficon::emulator {

inline PortSet port_set(const wire::bytes<32>& bitset) {
  PortSet set;
  for (std::size_t a = 0; a < kPortAddresses; ++a) {
    set[a] = (bitset.raw[a / 8] & (0x80 >> (a % 8))) != 0;
  }
  return set;
}

inline wire::bytes<32> bitset_of(const PortSet& set) {
  wire::bytes<32> bitset{};
  for (std::size_t a = 0; a < kPortAddresses; ++a) {
    if (set[a]) bitset.raw[a / 8] |= static_cast<std::uint8_t>(0x80 >> (a % 8));
  }
  return bitset;
}

}  // namespace ficon::emulator
