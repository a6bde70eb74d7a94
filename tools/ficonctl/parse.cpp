#include "parse.h"

#include <algorithm>
#include <charconv>
#include <numeric>

namespace ficon::ctl {
namespace {

bool parse_digits(std::string_view digits, int base, std::uint32_t& value) {
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value, base);
  return result.ec == std::errc() && result.ptr == digits.data() + digits.size();
}

[[noreturn]] void refuse(const std::string& what, std::string_view text,
                         const std::string& expected) {
  throw UsageError(what + " \"" + std::string(text) + "\" is not " + expected);
}

/** The least number of characters to insert, delete or replace. */
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
    }
  }
  return row[b.size()];
}

}  // namespace

std::uint32_t parse_number(std::string_view text, std::uint32_t first, std::uint32_t last,
                           const std::string& what) {
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  std::uint32_t value = 0;
  if (!parse_digits(hexadecimal ? text.substr(2) : text, hexadecimal ? 16 : 10, value) ||
      value < first || value > last) {
    refuse(what, text, "a number from " + std::to_string(first) + " to " + std::to_string(last));
  }
  return value;
}

std::uint32_t parse_hex(std::string_view text, std::uint32_t last, const std::string& what) {
  const bool prefixed = text.starts_with("0x") || text.starts_with("0X");
  std::uint32_t value = 0;
  if (!parse_digits(prefixed ? text.substr(2) : text, 16, value) || value > last) {
    char largest[16];
    const auto end = std::to_chars(largest, largest + sizeof largest, last, 16).ptr;
    refuse(what, text, "hexadecimal from 0 to " + std::string(largest, end));
  }
  return value;
}

std::uint32_t parse_vsan(const std::string& text) {
  return parse_number(text, kFirstVsan, kLastVsan, "VSAN");
}

bool parse_switch(std::string_view text, const std::string& what) {
  if (text == "on" || text == "1" || text == "true") return true;
  if (text == "off" || text == "0" || text == "false") return false;
  refuse(what, text, "on or off");
}

std::pair<std::string, std::string> parse_assignment(const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos || equals == 0 || equals + 1 == text.size()) {
    throw UsageError("\"" + text + "\" is not FIELD=VALUE");
  }
  return {text.substr(0, equals), text.substr(equals + 1)};
}

void refuse_empty_part(const std::string& what, const std::string& text) {
  throw UsageError(what + " \"" + text + "\" has an empty part");
}

std::vector<std::uint32_t> expand(const std::vector<NumberRange>& ranges) {
  std::vector<std::uint32_t> numbers;
  for (const NumberRange& range : ranges) {
    for (std::uint32_t n = range.first; n <= range.last; ++n) numbers.push_back(n);
  }
  std::ranges::sort(numbers);
  const auto repeated = std::unique(numbers.begin(), numbers.end());
  numbers.erase(repeated, numbers.end());
  return numbers;
}

std::string nearest(const std::string& typed, const std::vector<std::string>& candidates) {
  std::string best;
  std::size_t best_distance = std::max<std::size_t>(2, typed.size() / 3) + 1;
  for (const std::string& candidate : candidates) {
    const std::size_t d = candidate.starts_with(typed) ? 1 : distance(typed, candidate);
    if (d < best_distance) {
      best = candidate;
      best_distance = d;
    }
  }
  return best;
}

std::string did_you_mean(const std::string& typed, const std::vector<std::string>& candidates) {
  const std::string candidate = nearest(typed, candidates);
  return candidate.empty() ? "" : ": did you mean \"" + candidate + "\"?";
}

}  // namespace ficon::ctl
