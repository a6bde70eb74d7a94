/** What is limited switch-wide, and the MIH time-out, which a VSAN may have of its own. */
#pragma once

#include <cstdint>

#include "wire/fcd_status.h"

namespace ficon::emulator {

/** How walks over ports with get-next proceed. */
enum class GetNextType : std::uint32_t { kAllPorts = 1, kInstalledPorts = 2 };

inline constexpr std::uint32_t kMostPorts = 1280;

/** A time-out as hosts encode it: six bits of value, two that multiply by 1, 10, 100 or 1000. */
struct MihTimeout {
  std::uint8_t encoded = 0;

  constexpr bool is_valid() const { return (encoded & 0x3f) != 0; }
};

struct SwitchLimits {
  GetNextType get_next_type = GetNextType::kAllPorts;
  std::uint32_t max_ports = 256;
  MihTimeout default_mih_timeout{0x52};  // 18 x 10 seconds
};

}  // namespace ficon::emulator
