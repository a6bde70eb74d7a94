#include "double/bytes.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace ficon::test {
namespace {

template <class Number>
Bytes native(Number value) {
  Bytes bytes(sizeof value);
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

void require_room(const Bytes& bytes, std::size_t offset, std::size_t count) {
  if (offset + count > bytes.size()) throw std::out_of_range("a field beyond the end of a record");
}

std::string at(const Bytes& bytes, std::size_t offset) {
  if (offset >= bytes.size()) return "the end";
  char text[8];
  std::snprintf(text, sizeof text, "%02x", bytes[offset]);
  return text;
}

}  // namespace

Bytes be16(std::uint16_t value) {
  return {static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
}
Bytes be32(std::uint32_t value) {
  return be16(static_cast<std::uint16_t>(value >> 16)) + be16(static_cast<std::uint16_t>(value));
}
Bytes host16(std::uint16_t value) {
  return native(value);
}
Bytes host32(std::uint32_t value) {
  return native(value);
}
Bytes text(std::string_view characters) {
  return {characters.begin(), characters.end()};
}
Bytes zeros(std::size_t count) {
  return Bytes(count);
}

Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

std::uint16_t read_be16(const Bytes& bytes, std::size_t offset) {
  return static_cast<std::uint16_t>(bytes.at(offset) << 8 | bytes.at(offset + 1));
}
std::uint32_t read_be32(const Bytes& bytes, std::size_t offset) {
  return static_cast<std::uint32_t>(read_be16(bytes, offset)) << 16 | read_be16(bytes, offset + 2);
}
std::uint32_t read_host32(const Bytes& bytes, std::size_t offset) {
  std::uint32_t value = 0;
  require_room(bytes, offset, sizeof value);
  std::memcpy(&value, bytes.data() + offset, sizeof value);
  return value;
}

Record& Record::be16(std::size_t offset, std::uint16_t value) {
  return put(offset, test::be16(value));
}
Record& Record::be32(std::size_t offset, std::uint32_t value) {
  return put(offset, test::be32(value));
}
Record& Record::host16(std::size_t offset, std::uint16_t value) {
  return put(offset, test::host16(value));
}
Record& Record::host32(std::size_t offset, std::uint32_t value) {
  return put(offset, test::host32(value));
}
Record& Record::text(std::size_t offset, std::string_view characters) {
  return put(offset, test::text(characters));
}
Record& Record::fill(std::size_t offset, std::size_t count, std::uint8_t value) {
  return put(offset, Bytes(count, value));
}
Record& Record::put(std::size_t offset, const Bytes& field) {
  require_room(bytes_, offset, field.size());
  std::copy(field.begin(), field.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(offset));
  return *this;
}

Tlvs& Tlvs::add(std::uint16_t type, const Bytes& value) {
  return add_claiming(type, static_cast<std::uint16_t>(value.size()), value);
}
Tlvs& Tlvs::add_claiming(std::uint16_t type, std::uint16_t claimed_length, const Bytes& value) {
  body_ = body_ + be16(type) + be16(claimed_length) + value;
  return *this;
}
Tlvs& Tlvs::header_status(std::uint32_t status) {
  return add(12, record(128).host32(124, status));
}
Tlvs::operator Bytes() const {
  return be32(static_cast<std::uint32_t>(4 + body_.size())) + body_;
}

Bytes platform_header(std::uint32_t message_type, std::uint32_t subtype, std::string_view word_a,
                      std::string_view word_b) {
  return record(112)
      .be32(0, message_type)
      .be32(4, subtype)
      .text(8, word_a.substr(0, 24))
      .text(32, word_b.substr(0, 24))
      .fill(56, 56, 0xc3);
}

std::string difference(const Bytes& expected, const Bytes& actual) {
  const std::size_t common = std::min(expected.size(), actual.size());
  std::size_t offset = 0;
  while (offset < common && expected[offset] == actual[offset]) ++offset;
  if (offset == expected.size() && offset == actual.size()) return "";
  return "byte " + std::to_string(offset) + ": expected " + at(expected, offset) + ", got " +
         at(actual, offset) + " (lengths " + std::to_string(expected.size()) + " and " +
         std::to_string(actual.size()) + ")";
}

}  // namespace ficon::test
