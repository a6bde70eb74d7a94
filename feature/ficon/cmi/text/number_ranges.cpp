#include "text/number_ranges.h"

#include <cstdio>

namespace ficon {

NumberRanges compress(const std::uint16_t* values, std::uint32_t count) {
  NumberRanges ranges{};
  for (std::uint32_t i = 0; i < count; ++i) {
    if (ranges.count != 0 && values[i] == ranges.range[ranges.count - 1].last + 1) {
      ranges.range[ranges.count - 1].last = values[i];
      continue;
    }
    if (ranges.count == NumberRanges::kMost) {
      ranges.range[ranges.count] = ranges.range[ranges.count - 1];
      ++ranges.count;
      break;
    }
    ranges.range[ranges.count++] = {values[i], values[i]};
  }
  return ranges;
}

void format(const NumberRanges& ranges, char (&text)[kRangesText]) {
  text[0] = '\0';
  std::size_t used = 0;
  for (std::uint32_t i = 0; i < ranges.count && used < sizeof text; ++i) {
    const NumberRanges::Range range = ranges.range[i];
    const char* separator = i == 0 ? "" : ", ";
    const std::size_t room = sizeof text - used;
    const int length =
        range.first == range.last
            ? std::snprintf(text + used, room, "%s%d", separator, range.first)
            : std::snprintf(text + used, room, "%s%d-%d", separator, range.first, range.last);
    used += static_cast<std::size_t>(length);
  }
}

}  // namespace ficon
