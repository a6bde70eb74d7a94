/**
 * The plan of port numbers. A module, counted from 1, owns 64 of them; logical ports (port
 * channels, tunnels) have a block of their own. Positions in the port table follow the same plan.
 */
#pragma once

#include <cstdint>

namespace ficon::wire {

inline constexpr std::uint32_t kPortsPerModule = 64;
inline constexpr std::uint32_t kFirstLogicalPort = 1024;
inline constexpr std::uint32_t kLogicalPorts = 256;
inline constexpr std::uint32_t kPortPositions = kFirstLogicalPort + kLogicalPorts;

/** In a 16-bit port number or port address: none. One-byte fields say it with kNoPortByte. */
inline constexpr std::uint16_t kNoPort = 512;
inline constexpr std::uint8_t kNoPortByte = 0xff;
/** The control unit port's number and its address: fcd's own, which no operation moves. */
inline constexpr std::uint32_t kControlUnitPort = 0xfe;

}  // namespace ficon::wire
