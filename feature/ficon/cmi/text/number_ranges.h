/** Lists of port numbers as people write them: "1-3, 5". */
#pragma once

#include <cstddef>
#include <cstdint>

namespace ficon {

struct NumberRanges {
  static constexpr std::uint32_t kMost = 64;

  struct Range {
    std::uint16_t first;
    std::uint16_t last;
  };
  Range range[kMost + 1];
  std::uint32_t count;
};

/**
 * Ranges of the values that follow one another by one, in the order of the list. Where a 65th
 * would begin, the 64th is repeated in its place and the rest is dropped: intended.
 */
NumberRanges compress(const std::uint16_t* values, std::uint32_t count);

inline constexpr std::size_t kRangesText = 256;

/** The ranges in words; what does not fit is cut. No ranges: an empty text. */
void format(const NumberRanges& ranges, char (&text)[kRangesText]);

}  // namespace ficon
