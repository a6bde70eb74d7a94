/** What a fuzz target takes its decisions from: bytes, and zeros where there are none left. */
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <vector>

namespace ficon::fuzz {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

class Input {
 public:
  explicit Input(ByteView bytes) : rest_(bytes) {}

  bool empty() const { return rest_.empty(); }
  ByteView rest() const { return rest_; }
  ByteView take(std::size_t length) {
    const ByteView taken = rest_.first(std::min(length, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return taken;
  }

  std::uint8_t u8() { return number<std::uint8_t>(); }
  std::uint16_t u16() { return number<std::uint16_t>(); }
  std::uint32_t u32() { return number<std::uint32_t>(); }
  /** A block with its length, two bytes, in front. */
  ByteView block() { return take(u16()); }

 private:
  template <class Number>
  Number number() {
    Number value = 0;
    const ByteView taken = take(sizeof value);
    if (!taken.empty()) std::memcpy(&value, taken.data(), taken.size());
    return value;
  }

  ByteView rest_;
};

inline std::string text_of(ByteView bytes) {
  return {bytes.begin(), bytes.end()};
}

/** Ends the process, which is how a fuzzer learns that something is wrong. */
inline void require(bool holds, const char* sentence) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", sentence);
  std::abort();
}

}  // namespace ficon::fuzz
