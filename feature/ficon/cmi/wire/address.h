/** Where requests go: destination nodes and service access points (SAPs). */
#pragma once

#include <cstdint>

namespace ficon::wire {

inline constexpr std::uint32_t kFcdNode = 0xfe000000;
inline constexpr std::uint32_t kFcidNode = 0xfe000001;

inline constexpr std::uint32_t kRequestSap = 101;
inline constexpr std::uint32_t kLockSap = 103;

}  // namespace ficon::wire
