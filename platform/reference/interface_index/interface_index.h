/**
 * Interface indexes of the reference platform.
 *
 *   bits 31-24  type: 1 Fibre Channel port, 4 port channel, 10 tunnel
 *   bits 23-12  slot, from 0       Fibre Channel ports
 *   bits 11-0   port, from 0
 *   bits 23-0   number, from 1     port channels and tunnels
 *
 * No interface is 0. Names count slots and ports from 1: fc2/17, port-channel 12, fcip 3.
 */
#pragma once

#include <ficon_cmi.h>

#include <optional>
#include <string>
#include <string_view>

namespace ficon::platform {

enum class InterfaceType : std::uint32_t { kFibreChannel = 1, kPortChannel = 4, kTunnel = 10 };

inline constexpr std::uint32_t kSlots = 16;
inline constexpr std::uint32_t kPortsPerSlot = 64;
inline constexpr std::uint32_t kLogicalNumbers = 256;

/** What an interface index says. */
struct Interface {
  InterfaceType type;
  std::uint32_t slot;    // Fibre Channel ports, from 0
  std::uint32_t number;  // the port in its slot, from 0; otherwise the number, from 1

  bool operator==(const Interface&) const = default;
};

constexpr Interface fibre_channel_port(std::uint32_t slot, std::uint32_t port) {
  return {InterfaceType::kFibreChannel, slot, port};
}

/** 0 where slot, port or number is none that an interface can have. */
if_index_t interface_index(const Interface& interface);
std::optional<Interface> interface_of(if_index_t if_index);

/** "fc2/17", "port-channel 12", "fcip 3"; "interface 0x..." for an index that is none. */
std::string interface_name(if_index_t if_index);
/** The index of a name, with or without blanks before the number; nothing if it is none. */
std::optional<if_index_t> parse_interface(std::string_view name);

}  // namespace ficon::platform
