/**
 * The frame in front of every packet between a process and the emulator.
 *
 *   0        4       6      8       12      16     20       24       28       32
 *   | magic  | version | kind | token | node | SAP | opcode | total  | offset | payload ...
 *
 * One packet of an AF_UNIX SOCK_SEQPACKET socket is one frame. A message longer than
 * kFramePayload travels as several frames of the same token, in order, each saying how long the
 * whole is and where its piece goes.
 */
#pragma once

#include "wire/byte_order.h"

namespace ficon::platform {

inline constexpr std::uint32_t kFrameMagic = 0x46434d49;  // "FCMI"
inline constexpr std::uint16_t kFrameVersion = 1;
inline constexpr std::uint32_t kFramePayload = 64 * 1024;
inline constexpr std::uint32_t kMaxMessage = 1024 * 1024;

enum class FrameKind : std::uint16_t { kRequest = 1, kReply = 2 };

struct FrameHeader {
  wire::be32 magic;
  wire::be16 version;
  wire::be16 kind;
  wire::be32 token;  // chosen by the client, unique on its connection; the reply carries it back
  wire::be32 node;
  wire::be32 sap;
  wire::be32 opcode;
  wire::be32 total;   // payload bytes of the whole message
  wire::be32 offset;  // where this frame's payload goes in it
};
static_assert(wire::is_packed<FrameHeader, 32>);

}  // namespace ficon::platform
