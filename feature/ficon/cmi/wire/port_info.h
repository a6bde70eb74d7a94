/** What a configuration file holds for a port: one TLV a port in the reply to the query. */
#pragma once

#include "wire/byte_order.h"

namespace ficon::wire {

struct PortInfo {
  bytes<4> spare0;
  host32 port;      // signed
  host32 if_index;  // 0: no interface
  bytes<6> spare1;
  bytes<24> port_name;  // EBCDIC
  std::uint8_t port_name_end;
  bytes<64> spare2;
};
static_assert(is_packed<PortInfo, 107>);
static_assert(offsetof(PortInfo, port) == 4);
static_assert(offsetof(PortInfo, if_index) == 8);
static_assert(offsetof(PortInfo, port_name) == 18);
static_assert(offsetof(PortInfo, port_name_end) == 42);

/** The range that a query asks for, both ends included. */
struct PortRange {
  be32 first;
  be32 last;
};
static_assert(is_packed<PortRange, 8>);

}  // namespace ficon::wire
