/** Field types of wire records: built from bytes, so aligned to 1, with the byte order in the name.
 */
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>

namespace ficon::wire {

/** A number with its bytes in network order, or back. */
template <std::unsigned_integral T>
constexpr T network_order(T value) {
  if constexpr (std::endian::native == std::endian::big) {
    return value;
  } else if constexpr (sizeof(T) == 2) {
    return __builtin_bswap16(value);
  } else {
    static_assert(sizeof(T) == 4);
    return __builtin_bswap32(value);
  }
}

/** Most significant byte first. */
template <std::unsigned_integral T>
struct Big {
  std::uint8_t raw[sizeof(T)];

  void set(T value) {
    value = network_order(value);
    __builtin_memcpy(raw, &value, sizeof value);
  }
  T get() const {
    T value;
    __builtin_memcpy(&value, raw, sizeof value);
    return network_order(value);
  }
};

/** The order of the machine: fields that fcd and its clients exchange unswapped. */
template <std::unsigned_integral T>
struct Host {
  std::uint8_t raw[sizeof(T)];

  void set(T value) { __builtin_memcpy(raw, &value, sizeof value); }
  T get() const {
    T value;
    __builtin_memcpy(&value, raw, sizeof value);
    return value;
  }
};

using be16 = Big<std::uint16_t>;
using be32 = Big<std::uint32_t>;
using host16 = Host<std::uint16_t>;
using host32 = Host<std::uint32_t>;

template <std::size_t N>
struct bytes {
  std::uint8_t raw[N];
};

/** Every wire record: no padding, any address. Use as `static_assert(is_packed<R, 18>)`. */
template <class Record, std::size_t Size>
inline constexpr bool is_packed = sizeof(Record) == Size && alignof(Record) == 1;

}  // namespace ficon::wire
