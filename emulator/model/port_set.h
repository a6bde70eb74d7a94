/** Sets of port addresses, kept as they travel. */
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

namespace ficon::emulator {

inline constexpr std::size_t kPortAddresses = 256;

/** Port address a is the bit 0x80 >> (a mod 8) of byte a / 8. */
class PortSet {
 public:
  using Mask = std::array<std::uint8_t, kPortAddresses / 8>;

  PortSet() = default;
  explicit PortSet(const Mask& mask) : mask_(mask) {}

  const Mask& mask() const { return mask_; }

  bool operator[](std::size_t address) const { return (mask_[address / 8] & bit_of(address)) != 0; }
  PortSet& set(std::size_t address, bool member = true) {
    const std::uint8_t others = mask_[address / 8] & static_cast<std::uint8_t>(~bit_of(address));
    mask_[address / 8] = static_cast<std::uint8_t>(others | (member ? bit_of(address) : 0));
    return *this;
  }
  PortSet& reset(std::size_t address) { return set(address, false); }

  PortSet& flip(std::size_t address) {
    mask_[address / 8] ^= bit_of(address);
    return *this;
  }

  bool none() const { return *this == PortSet(); }
  bool any() const { return !none(); }
  std::size_t count() const {
    std::size_t members = 0;
    for (const std::uint8_t byte : mask_) members += static_cast<std::size_t>(std::popcount(byte));
    return members;
  }

  /** Calls `visit` with each member, in whatever order is quickest. */
  template <class Visit>
  void for_each(Visit visit) const {
    for (std::uint32_t first = 0; first < kPortAddresses; first += 64) {
      for (std::uint64_t rest = word_at(first / 8); rest != 0;) {
        const auto bit = static_cast<std::uint32_t>(std::countr_zero(rest));
        visit(first + (bit ^ 7));  // a byte's addresses go from its highest bit down
        rest &= rest - 1;
      }
    }
  }

  friend PortSet operator|(const PortSet& a, const PortSet& b) {
    return join(a, b, [](std::uint8_t x, std::uint8_t y) { return x | y; });
  }
  friend PortSet operator^(const PortSet& a, const PortSet& b) {
    return join(a, b, [](std::uint8_t x, std::uint8_t y) { return x ^ y; });
  }
  /** The members of `a` that are none of `b`. */
  friend PortSet operator-(const PortSet& a, const PortSet& b) {
    return join(a, b, [](std::uint8_t x, std::uint8_t y) { return x & ~y; });
  }
  bool operator==(const PortSet&) const = default;

 private:
  /** Eight bytes at once: a walk that looks at words has few turns that cannot be foretold. */
  std::uint64_t word_at(std::size_t byte) const {
    std::uint64_t word = 0;
    for (std::size_t i = 8; i-- > 0;) word = word << 8 | mask_[byte + i];
    return word;
  }
  static std::uint8_t bit_of(std::size_t address) {
    return static_cast<std::uint8_t>(0x80U >> (address % 8));
  }
  template <class Join>
  static PortSet join(const PortSet& a, const PortSet& b, Join bytes) {
    PortSet joined;
    for (std::size_t i = 0; i < a.mask_.size(); ++i) {
      joined.mask_[i] = static_cast<std::uint8_t>(bytes(a.mask_[i], b.mask_[i]));
    }
    return joined;
  }

  Mask mask_{};
};

}  // namespace ficon::emulator
