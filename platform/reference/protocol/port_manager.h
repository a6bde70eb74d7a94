/** Questions to the port manager and about the chassis. All numbers are big-endian. */
#pragma once

#include "protocol/services.h"

namespace ficon::platform {

/** The reply is the description of the chassis, in TOML; the request is empty. */
enum class ChassisOpcode : std::uint32_t { kDescription = 1 };

/**
 * Requests of kPortConfig and kTransceivers are InterfaceRange records, of kTrunkVsans and
 * kAutoCreated an InterfaceNumber, of kModulePorts a ModuleMask, of kSetCondition a
 * PortConditionChange, whose reply has no record. Replies begin with PortReplyHead;
 * `count` records follow it, in the order asked: PortConfig, TransceiverState, one VsanBitmap, one
 * AutoCreated, and InterfaceNumber for the ports of the modules asked for. An interface that the
 * chassis does not have is passed over.
 */
enum class PortManagerOpcode : std::uint32_t {
  kPortConfig = 1,
  kTransceivers = 2,
  kTrunkVsans = 3,
  kModulePorts = 4,
  kAutoCreated = 5,
  kSetCondition = 6,  // what a cable, a laser or an operator does to a port
};

struct InterfaceRange {
  wire::be32 first;
  wire::be32 last;  // included
};
static_assert(wire::is_packed<InterfaceRange, 8>);

struct InterfaceNumber {
  wire::be32 if_index;
};
static_assert(wire::is_packed<InterfaceNumber, 4>);

struct ModuleMask {
  wire::be32 mask;  // bit 0: the slot that stands first
};
static_assert(wire::is_packed<ModuleMask, 4>);

struct PortConditionChange {
  wire::be32 if_index;
  wire::be32 condition;  // 0 up, 1 offline, 2 shut down by an operator, 3 failed
};
static_assert(wire::is_packed<PortConditionChange, 8>);

struct PortReplyHead {
  wire::be32 status;
  wire::be32 count;
};
static_assert(wire::is_packed<PortReplyHead, 8>);

inline constexpr std::uint8_t kTrunking = 8;

struct PortConfig {
  wire::be32 if_index;
  wire::be32 vsan;
  wire::be32 mode;
  std::uint8_t trunk_mode;  // kTrunking, or another value
  std::uint8_t flags;       // nonzero: up
  wire::bytes<2> spare;
};
static_assert(wire::is_packed<PortConfig, 16>);

struct TransceiverState {
  wire::be32 if_index;
  wire::be32 status;  // 0 usable
};
static_assert(wire::is_packed<TransceiverState, 8>);

/** VSAN v is bit v mod 8, from the most significant one, of byte v / 8. */
struct VsanBitmap {
  wire::bytes<512> vsans;
};
static_assert(wire::is_packed<VsanBitmap, 512>);

struct AutoCreated {
  wire::be32 auto_created;
};
static_assert(wire::is_packed<AutoCreated, 4>);

}  // namespace ficon::platform
