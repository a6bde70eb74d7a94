/** What a configuration file holds for a port: one TLV a port in the reply to the query. */
#pragma once

#include "wire/byte_order.h"

namespace ficon::wire {

struct PortInfo {
  host32 port_number;   // FICON's; 512 none
  host32 port_address;  // signed for its readers
  host32 if_index;      // 0: no interface
  std::uint8_t blocked;
  std::uint8_t installed;
  bytes<4> spare1;
  bytes<24> port_name;  // EBCDIC
  std::uint8_t port_name_end;
  bytes<32> prohibited;  // the bit of port address a is 0x80 >> (a mod 8) of byte a / 8
  bytes<32> spare2;
};
static_assert(is_packed<PortInfo, 107>);
static_assert(offsetof(PortInfo, port_address) == 4);
static_assert(offsetof(PortInfo, if_index) == 8);
static_assert(offsetof(PortInfo, blocked) == 12);
static_assert(offsetof(PortInfo, port_name) == 18);
static_assert(offsetof(PortInfo, port_name_end) == 42);
static_assert(offsetof(PortInfo, prohibited) == 43);

}  // namespace ficon::wire
