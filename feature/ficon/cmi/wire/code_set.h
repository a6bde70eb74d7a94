/** The converter's numbers for code sets: an EBCDIC page goes by its own, such as 37 or 1047. */
#pragma once

#include <cstdint>

namespace ficon::wire {

inline constexpr std::uint32_t kAsciiCodeSet = 1;

}  // namespace ficon::wire
