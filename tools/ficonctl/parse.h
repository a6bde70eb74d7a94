/** Reading what people type: numbers, VSAN lists, FIELD=VALUE; every refusal names the bad part. */
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "failure.h"

namespace ficon::ctl {

inline constexpr std::uint32_t kFirstVsan = 1;
inline constexpr std::uint32_t kLastVsan = 4093;

/** Decimal, or hexadecimal with 0x; `what` names the value in the refusal. */
std::uint32_t parse_number(std::string_view text, std::uint32_t first, std::uint32_t last,
                           const std::string& what);

/** Bare hexadecimal, as port addresses are written. */
std::uint32_t parse_hex(std::string_view text, std::uint32_t last, const std::string& what);

std::uint32_t parse_vsan(const std::string& text);

/** on, off, true, false, 1, 0. */
bool parse_switch(std::string_view text, const std::string& what);

/** FIELD=VALUE; neither may be empty. */
std::pair<std::string, std::string> parse_assignment(const std::string& text);

/** One number of a list, or the first and last of a range in it. */
struct NumberRange {
  std::uint32_t first;
  std::uint32_t last;
};

[[noreturn]] void refuse_empty_part(const std::string& what, const std::string& text);

/** `10,20-23`: numbers and ranges; `parse_one` reads a single number. */
template <class ParseOne>
std::vector<NumberRange> parse_ranges(const std::string& text, const std::string& what,
                                      ParseOne parse_one) {
  std::vector<NumberRange> ranges;
  std::size_t begin = 0;
  while (begin <= text.size()) {
    const std::size_t end = std::min(text.find(',', begin), text.size());
    const std::string part = text.substr(begin, end - begin);
    if (part.empty()) refuse_empty_part(what, text);
    const std::size_t dash = part.find('-');
    const std::uint32_t first = parse_one(part.substr(0, dash));
    const std::uint32_t last = dash == std::string::npos ? first : parse_one(part.substr(dash + 1));
    if (first > last) throw UsageError("range \"" + part + "\" runs backwards");
    ranges.push_back({first, last});
    begin = end + 1;
  }
  return ranges;
}

/** Every number of the ranges, ascending, once. */
std::vector<std::uint32_t> expand(const std::vector<NumberRange>& ranges);

/** The candidate that `typed` is most likely meant to be, or empty when none is near. */
std::string nearest(const std::string& typed, const std::vector<std::string>& candidates);

/** ": did you mean \"x\"?", or nothing. */
std::string did_you_mean(const std::string& typed, const std::vector<std::string>& candidates);

}  // namespace ficon::ctl
