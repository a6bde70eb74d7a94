/** Bytes typed by hand: records and TLV arrays for replies, in no way through the library's own. */
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace ficon::test {

using Bytes = std::vector<std::uint8_t>;

Bytes be16(std::uint16_t value);
Bytes be32(std::uint32_t value);
/** The bytes of a number as this host keeps it. */
Bytes host16(std::uint16_t value);
Bytes host32(std::uint32_t value);
/** The characters of a text without a terminator. */
Bytes text(std::string_view characters);
Bytes zeros(std::size_t count);
Bytes operator+(Bytes left, const Bytes& right);

/** Copies the bytes of anything plain: what a function under test wrote into a record. */
template <class T>
Bytes bytes_of(const T& value) {
  const auto* first = reinterpret_cast<const std::uint8_t*>(&value);
  return {first, first + sizeof value};
}

std::uint16_t read_be16(const Bytes& bytes, std::size_t offset);
std::uint32_t read_be32(const Bytes& bytes, std::size_t offset);
std::uint32_t read_host32(const Bytes& bytes, std::size_t offset);

/** A zeroed record of a size; fields are set by their offsets: `record(18).host32(5, status)`. */
class Record {
 public:
  explicit Record(std::size_t size) : bytes_(size) {}

  Record& u8(std::size_t offset, std::uint8_t value) { return put(offset, {value}); }
  Record& be16(std::size_t offset, std::uint16_t value);
  Record& be32(std::size_t offset, std::uint32_t value);
  Record& host16(std::size_t offset, std::uint16_t value);
  Record& host32(std::size_t offset, std::uint32_t value);
  Record& text(std::size_t offset, std::string_view characters);
  Record& fill(std::size_t offset, std::size_t count, std::uint8_t value);
  Record& put(std::size_t offset, const Bytes& field);

  operator Bytes() const { return bytes_; }

 private:
  Bytes bytes_;
};

inline Record record(std::size_t size) {
  return Record(size);
}

/** A TLV array: `tlvs().header_status(0).add(2, record(1347).be32(0, 20))`. */
class Tlvs {
 public:
  Tlvs& add(std::uint16_t type, const Bytes& value);
  /** A TLV whose length field lies about its value. */
  Tlvs& add_claiming(std::uint16_t type, std::uint16_t claimed_length, const Bytes& value);
  /** The bare header (type 12, 128 bytes) with the daemon's status in bytes 124-127. */
  Tlvs& header_status(std::uint32_t status);

  /** Size of the array and the TLVs. */
  operator Bytes() const;

 private:
  Bytes body_;
};

inline Tlvs tlvs() {
  return {};
}

/**
 * What the double's base library writes into bytes 0-111 of a request header: type, subtype and the
 * two words at 0, 4, 8 and 32, then 0xc3.
 */
Bytes platform_header(std::uint32_t message_type, std::uint32_t subtype, std::string_view word_a,
                      std::string_view word_b);

/** The first difference in words, empty if there is none. */
std::string difference(const Bytes& expected, const Bytes& actual);

}  // namespace ficon::test
