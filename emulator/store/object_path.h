/** Names of objects, "vsan/0020/file/IPL", taken apart by a pattern, "vsan/?/file/?". */
#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace ficon::emulator {

/** What stood at the pattern's question marks, in order. */
using PathParts = std::vector<std::string_view>;

/** Null unless the name has the pattern's form. */
inline std::optional<PathParts> match_path(std::string_view pattern, std::string_view name) {
  PathParts parts;
  for (;;) {
    const std::size_t pattern_end = pattern.find('/');
    const std::size_t name_end = name.find('/');
    const std::string_view part = name.substr(0, name_end);
    if (pattern.substr(0, pattern_end) == "?") {
      parts.push_back(part);
    } else if (pattern.substr(0, pattern_end) != part) {
      return std::nullopt;
    }
    const bool last = pattern_end == std::string_view::npos;
    if (last != (name_end == std::string_view::npos)) return std::nullopt;
    if (last) return parts;
    pattern.remove_prefix(pattern_end + 1);
    name.remove_prefix(name_end + 1);
  }
}

/** A decimal number, leading zeros allowed; null for anything else. */
inline std::optional<std::uint32_t> path_number(std::string_view part) {
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), value);
  if (error != std::errc{} || end != part.data() + part.size()) return std::nullopt;
  return value;
}

}  // namespace ficon::emulator
