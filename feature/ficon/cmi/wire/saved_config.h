/**
 * fcd's saved configuration in persistent storage: 8-byte keys that begin with a record type, and
 * the debug settings beside it.
 */
#pragma once

#include "wire/byte_order.h"
#include "wire/port_plan.h"

namespace ficon::wire {

enum class SavedRecord : std::uint8_t {
  kVsan = 6,  // one a FICON VSAN; the key names it
  kAddressToNumberMap = 8,
  kNumberToInterfaceMap = 9,
  kPortTable = 13,          // and the 19 types behind it, one a block of 64 ports
  kFeatureEnabled = 35,     // first word of the value
  kDefaultProhibit = 36,    // first word of the value
  kDefaultMihTimeout = 38,  // first word of the value, encoded
};

struct SavedConfigKey {
  std::uint8_t type;
  std::uint8_t spare0;
  be16 vsan;  // of kVsan; else zero
  bytes<4> spare1;
};
static_assert(is_packed<SavedConfigKey, 8>);
static_assert(offsetof(SavedConfigKey, vsan) == 2);

inline constexpr std::uint32_t kPortTableBlocks = 20;
inline constexpr std::uint32_t kPortsPerBlock = kPortsPerModule;
static_assert(kPortTableBlocks * kPortsPerBlock == kPortPositions);

/** One position of the port table. */
struct PortTableEntry {
  host16 port_number;
  host16 port_address;
  bytes<16> spare;
};
static_assert(is_packed<PortTableEntry, 20>);

/** The key of the debug settings, the same bytes on every machine. */
inline constexpr std::uint8_t kDebugKey[8] = {2, 0, 0, 0, 0, 0, 0, 0x64};

struct DebugRecord {
  host32 is_set;  // 1
  host32 logging_level;
};
static_assert(is_packed<DebugRecord, 8>);

/** A MIH time-out in a byte: a value of 6 bits, and a power of ten in the two bits above it. */
constexpr std::uint32_t decode_mih_timeout(std::uint32_t encoded) {
  constexpr std::uint32_t kMultipliers[] = {1, 10, 100, 1000};
  return (encoded & 0x3f) * kMultipliers[(encoded >> 6) & 3];
}

}  // namespace ficon::wire
