/** The settings of a port in a configuration file, one TLV a port. */
#pragma once

#include "wire/byte_order.h"

namespace ficon::wire {

// The port addresses of these records are in host order, beside a header in big-endian: intended.

struct PortBlockedEntry {
  host16 port_address;
  std::uint8_t blocked;
};
static_assert(is_packed<PortBlockedEntry, 3>);

struct PortNameEntry {
  host32 port_address;
  bytes<24> port_name;  // EBCDIC
  std::uint8_t terminator;
};
static_assert(is_packed<PortNameEntry, 29>);
static_assert(offsetof(PortNameEntry, port_name) == 4);

struct ProhibitEntry {
  host32 port_address;
  host32 common_value;
  bytes<32> bitset;  // one bit per port address
};
static_assert(is_packed<ProhibitEntry, 40>);
static_assert(offsetof(ProhibitEntry, bitset) == 8);

}  // namespace ficon::wire
