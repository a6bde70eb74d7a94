/** Port-map queries: ranges and tables of opcode 7856, interface states, the look-up by FCID. */
#pragma once

#include "wire/cmi_header.h"

namespace ficon::wire {

/** The port map's question leaves the query flags at this value. */
inline constexpr std::uint32_t kPortMapQuery = 1;

/** One row of the port table: the identity assigned to a port position. */
struct PortRecord {
  host16 port_number;   // 512 none
  host16 port_address;  // 512 none
  bytes<16> spare;
};
static_assert(is_packed<PortRecord, 20>);

/** Row of the map from port addresses to port numbers. */
using AddressMapRow = be16;
/** Row of the map from port numbers to interfaces: the FICON base library alone reads it. */
using InterfaceMapRow = bytes<4>;

/** Question and answer of opcode 7869, one an interface. */
struct InterfaceState {
  be32 if_index;
  host16 port;  // sent as none
  bytes<2> spare0;
  be32 port_vsan;  // the port manager's value, forwarded
  bytes<8> spare1;
  host32 status;  // answers only: 0 when the rest holds
  be32 detail;    // sent as 1
  std::uint8_t flags;
  std::uint8_t spare2;
  std::uint8_t reason;
  bytes<29> spare3;
};
static_assert(is_packed<InterfaceState, 60>);
static_assert(offsetof(InterfaceState, port) == 4);
static_assert(offsetof(InterfaceState, port_vsan) == 8);
static_assert(offsetof(InterfaceState, status) == 20);
static_assert(offsetof(InterfaceState, detail) == 24);
static_assert(offsetof(InterfaceState, flags) == 28);
static_assert(offsetof(InterfaceState, reason) == 30);

inline constexpr std::uint8_t kInterfaceStateMask = 0xe0;
inline constexpr std::uint8_t kInterfaceOnline = 0x40;  // the value within the mask
inline constexpr std::uint8_t kInterfaceFailed = 0x10;  // a bit outside of it
inline constexpr std::uint8_t kReasonAdminDown = 10;

/** The state codes of port-map entries. */
enum class PortState : std::uint8_t {
  kInterSwitch = 0,  // up, towards another switch
  kFailed = 1,
  kOffline = 2,
  kAdminDown = 3,
  kOnline = 4,   // up, towards a host or a control unit
  kUnknown = 5,  // no interface, or nobody has said more
};

/** Question and answer of opcode 7858. */
struct PortmapFcid {
  PlatformHeader platform;
  be32 if_index;
  be32 status;  // answers only
  host16 key1;  // port number, 512 none
  host16 key2;  // port address, 512 none
  std::uint8_t selector;
  std::uint8_t answer;  // answers only
  host32 fcid;
};
static_assert(is_packed<PortmapFcid, 130>);
static_assert(offsetof(PortmapFcid, if_index) == 112);
static_assert(offsetof(PortmapFcid, status) == 116);
static_assert(offsetof(PortmapFcid, key1) == 120);
static_assert(offsetof(PortmapFcid, key2) == 122);
static_assert(offsetof(PortmapFcid, selector) == 124);
static_assert(offsetof(PortmapFcid, answer) == 125);
static_assert(offsetof(PortmapFcid, fcid) == 126);

}  // namespace ficon::wire
