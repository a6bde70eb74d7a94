/** TLV arrays of the double: total size, then type, length and value of each, all big-endian. */
#include <platform/tlv_array.h>

#include <algorithm>

#include "double/format.h"
#include "double/scripted_platform.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kArrayHeader = 4;
constexpr std::uint32_t kTlvHeader = 4;
constexpr std::uint32_t kMalformed = 0x40aa0100;
constexpr std::uint32_t kNoRoom = 0x40aa0101;
constexpr std::uint32_t kNoMore = 0x40aa0102;

const std::uint8_t* bytes_at(const void* array, std::uint32_t offset) {
  return static_cast<const std::uint8_t*>(array) + offset;
}

std::uint16_t u16_at(const void* array, std::uint32_t offset) {
  const std::uint8_t* b = bytes_at(array, offset);
  return static_cast<std::uint16_t>(b[0] << 8 | b[1]);
}

std::uint32_t size_of(const void* array) {
  const std::uint32_t size = static_cast<std::uint32_t>(u16_at(array, 0)) << 16 | u16_at(array, 2);
  return size == 0 ? kArrayHeader : size;  // a zeroed buffer is an empty array
}

void copy_to(void* array, std::uint32_t offset, const Bytes& bytes) {
  std::copy(bytes.begin(), bytes.end(), static_cast<std::uint8_t*>(array) + offset);
}

void check_alignment(ScriptedPlatform& platform, std::uint32_t align) {
  if (align != 1) platform.problem("a TLV call with alignment " + std::to_string(align));
}

}  // namespace

uint32_t tlv_aligned_array_add_tlv(void* array, uint32_t capacity, uint16_t type, uint16_t length,
                                   const void* value, uint32_t align) {
  auto& platform = ScriptedPlatform::require("tlv_aligned_array_add_tlv");
  const std::string line =
      formatted("tlv_aligned_array_add_tlv capacity=%u type=%u length=%u", capacity, type, length);
  platform.note(line);
  check_alignment(platform, align);
  if (platform.faulted(line)) return kInjected;
  const std::uint32_t size = size_of(array);
  if (size > capacity || capacity - size < kTlvHeader + length) return kNoRoom;
  const auto* first = static_cast<const std::uint8_t*>(value);
  copy_to(array, size, be16(type) + be16(length) + Bytes(first, first + length));
  copy_to(array, 0, be32(size + kTlvHeader + length));
  return 0;
}

uint32_t tlv_aligned_array_size_get(const void* array, uint32_t align) {
  auto& platform = ScriptedPlatform::require("tlv_aligned_array_size_get");
  platform.note("tlv_aligned_array_size_get");
  check_alignment(platform, align);
  return size_of(array);
}

int32_t tlv_aligned_array_get_num_tlvs(const void* array, uint32_t align) {
  auto& platform = ScriptedPlatform::require("tlv_aligned_array_get_num_tlvs");
  const std::string line = "tlv_aligned_array_get_num_tlvs";
  platform.note(line);
  check_alignment(platform, align);
  if (platform.faulted(line) || array == nullptr) return 0;
  const std::uint32_t size = size_of(array);
  std::int32_t count = 0;
  for (std::uint32_t offset = kArrayHeader; offset + kTlvHeader <= size; ++count) {
    offset += kTlvHeader + u16_at(array, offset + 2);
  }
  return count;
}

uint32_t tlv_aligned_array_get_next_tlv(const void* array, uint16_t* type, uint16_t* length,
                                        void** value, uint32_t align, uint32_t* cursor) {
  auto& platform = ScriptedPlatform::require("tlv_aligned_array_get_next_tlv");
  const std::string line = formatted("tlv_aligned_array_get_next_tlv cursor=%u", *cursor);
  platform.note(line);
  check_alignment(platform, align);
  if (platform.faulted(line)) return kInjected;
  const std::uint32_t size = size_of(array);
  const std::uint32_t offset = *cursor == 0 ? kArrayHeader : *cursor;
  if (offset >= size) return kNoMore;
  if (size - offset < kTlvHeader) return kMalformed;
  *type = u16_at(array, offset);
  *length = u16_at(array, offset + 2);
  if (size - offset - kTlvHeader < *length) return kMalformed;
  *value = const_cast<std::uint8_t*>(bytes_at(array, offset + kTlvHeader));
  *cursor = offset + kTlvHeader + *length;
  return 0;
}
