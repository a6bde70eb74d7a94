/** Which port number and port address belong to which interface. */
#pragma once

#include "wire/byte_order.h"

namespace ficon::wire {

/** Operations on a binding; the last one only asks. */
inline constexpr std::uint8_t kBindNumber = 1;
inline constexpr std::uint8_t kUnbindNumber = 2;
inline constexpr std::uint8_t kBindingQuery = 3;

/** Opcode 7892. */
struct PortNumberBinding {
  be32 vsan;
  be32 port_number;
  be32 if_index;
  host32 status;  // answers only
  std::uint8_t operation;
};
static_assert(is_packed<PortNumberBinding, 17>);
static_assert(offsetof(PortNumberBinding, if_index) == 8);
static_assert(offsetof(PortNumberBinding, status) == 12);
static_assert(offsetof(PortNumberBinding, operation) == 16);

/** Opcode 7868. Operations 1 to 3; the first assigns. */
struct PortNumberAssignment {
  be32 if_index;
  be32 port_number;
  host32 status;  // answers only
  std::uint8_t operation;
};
static_assert(is_packed<PortNumberAssignment, 13>);
static_assert(offsetof(PortNumberAssignment, port_number) == 4);
static_assert(offsetof(PortNumberAssignment, status) == 8);
static_assert(offsetof(PortNumberAssignment, operation) == 12);

inline constexpr std::uint8_t kAssignPortNumber = 1;
inline constexpr std::uint8_t kReleasePortNumber = 2;
inline constexpr std::uint8_t kComparePortNumber = 3;  // done when the interface has this number
inline constexpr std::uint8_t kLastAssignOperation = 3;

/** Operations of a reservation: 1 to 3 for a module, 4 to 6 for the logical ports. */
inline constexpr std::uint8_t kReserveForModule = 1;
inline constexpr std::uint8_t kReleaseOfModule = 2;
inline constexpr std::uint8_t kReservedForModule = 3;
inline constexpr std::uint8_t kReserveLogical = 4;
inline constexpr std::uint8_t kReleaseLogical = 5;
inline constexpr std::uint8_t kReservedLogical = 6;
inline constexpr std::uint8_t kLastReserveOperation = 6;
inline constexpr bool reserve_is_query(std::uint8_t operation) {
  return operation == kReservedForModule || operation == kReservedLogical;
}
inline constexpr bool reserve_names_module(std::uint8_t operation) {
  return operation <= kReservedForModule;
}

inline constexpr std::uint32_t kReservedRanges = 64;
inline constexpr std::uint32_t kReserveText = 256;

/** Opcode 7890. */
struct PortNumberReservation {
  be32 module;
  be32 count;  // of ranges
  be32 first[kReservedRanges];
  be32 last[kReservedRanges];  // included
  be32 module_ports;           // 0 where no module is named
  host32 status;               // answers only
  std::uint8_t operation;
  be32 result;  // answers to queries only
  be32 argument;
  bytes<kReserveText> text;  // answers only: why it was refused, NUL-padded
};
static_assert(is_packed<PortNumberReservation, 793>);
static_assert(offsetof(PortNumberReservation, first) == 8);
static_assert(offsetof(PortNumberReservation, last) == 264);
static_assert(offsetof(PortNumberReservation, module_ports) == 520);
static_assert(offsetof(PortNumberReservation, status) == 524);
static_assert(offsetof(PortNumberReservation, operation) == 528);
static_assert(offsetof(PortNumberReservation, result) == 529);
static_assert(offsetof(PortNumberReservation, argument) == 533);
static_assert(offsetof(PortNumberReservation, text) == 537);

/** Opcode 7893: no TLV array, host order throughout. */
struct AddressToInterface {
  host16 port_address;
  bytes<2> spare;
  host32 if_index;
  host32 status;  // answers only
};
static_assert(is_packed<AddressToInterface, 12>);
static_assert(offsetof(AddressToInterface, if_index) == 4);
static_assert(offsetof(AddressToInterface, status) == 8);

/** Opcode 7884: no TLV array, host order throughout. */
struct AddressToNumber {
  host16 port_address;
  host16 port_number;
  bytes<2> spare;
  host32 status;  // answers only
};
static_assert(is_packed<AddressToNumber, 10>);
static_assert(offsetof(AddressToNumber, port_number) == 2);
static_assert(offsetof(AddressToNumber, status) == 6);

}  // namespace ficon::wire
