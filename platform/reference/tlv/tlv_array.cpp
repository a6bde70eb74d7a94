/**
 * TLV arrays in memory and on the socket, all numbers big-endian:
 *
 *   0            4       6        8               8 + length
 *   | array size | type  | length | value ...     | padding | type | length | ...
 *
 * The array size counts itself and every TLV with its padding; a zeroed buffer is an empty array.
 * Each TLV begins at a multiple of the alignment; alignment 1 means no padding.
 */
#include <platform/tlv_array.h>

#include "transport/message.h"
#include "wire/byte_order.h"

namespace {

using ficon::wire::be16;
using ficon::wire::be32;

struct ArrayHead {
  be32 size;
};
static_assert(ficon::wire::is_packed<ArrayHead, 4>);

struct TlvHead {
  be16 type;
  be16 length;
};
static_assert(ficon::wire::is_packed<TlvHead, 4>);

// What add and next answer when they refuse: the Linux numbers that callers' tools can explain.
constexpr std::uint32_t kInvalid = 22;     // EINVAL
constexpr std::uint32_t kNoSpace = 28;     // ENOSPC
constexpr std::uint32_t kBadMessage = 74;  // EBADMSG
constexpr std::uint32_t kEndOfArray = 61;  // ENODATA

std::uint64_t padded(std::uint64_t size, std::uint32_t alignment) {
  if (alignment <= 1) return size;
  return (size + alignment - 1) / alignment * alignment;
}

/** The bytes in use; an untouched, zeroed buffer holds an array without TLVs. */
std::uint32_t used(const void* array) {
  const std::uint32_t size = static_cast<const ArrayHead*>(array)->size.get();
  return size == 0 ? sizeof(ArrayHead) : size;
}

/** Where the array ends for a walk; 0 for a received one that claims more than was received. */
std::uint32_t end_of(const void* array) {
  const std::int64_t received = ficon::platform::received_length(array);
  const std::uint32_t end = used(array);
  return received >= 0 && end > received ? 0 : end;
}

std::uint32_t first_tlv(std::uint32_t alignment) {
  return static_cast<std::uint32_t>(padded(sizeof(ArrayHead), alignment));
}

/** One TLV of an array: where it stands and where the next one would. */
struct Place {
  const TlvHead* head;
  std::uint32_t next;
};

/** 0 with the TLV at `offset` of an array that ends at `end`, or why there is none. */
std::uint32_t look(const void* array, std::uint32_t end, std::uint32_t offset,
                   std::uint32_t alignment, Place* place) {
  if (end < sizeof(ArrayHead)) return kBadMessage;
  if (offset == end || (end == sizeof(ArrayHead) && offset == first_tlv(alignment))) {
    return kEndOfArray;
  }
  if (offset > end || end - offset < sizeof(TlvHead)) return kBadMessage;
  const auto* bytes = static_cast<const std::uint8_t*>(array);
  const auto* head = reinterpret_cast<const TlvHead*>(bytes + offset);
  const std::uint64_t next =
      padded(std::uint64_t{offset} + sizeof(TlvHead) + head->length.get(), alignment);
  if (next > end) return kBadMessage;
  *place = {head, static_cast<std::uint32_t>(next)};
  return 0;
}

}  // namespace

uint32_t tlv_aligned_array_add_tlv(void* array, uint32_t capacity, uint16_t type, uint16_t length,
                                   const void* value, uint32_t align) {
  if (array == nullptr || (value == nullptr && length != 0)) return kInvalid;
  if (capacity < sizeof(ArrayHead)) return kNoSpace;
  if (used(array) < sizeof(ArrayHead)) return kBadMessage;  // the buffer was not zeroed
  const std::uint64_t offset = padded(used(array), align);
  const std::uint64_t end = padded(offset + sizeof(TlvHead) + length, align);
  if (end > capacity) return kNoSpace;
  auto* bytes = static_cast<std::uint8_t*>(array);
  auto* head = reinterpret_cast<TlvHead*>(bytes + offset);
  head->type.set(type);
  head->length.set(length);
  if (length != 0) __builtin_memcpy(head + 1, value, length);
  static_cast<ArrayHead*>(array)->size.set(static_cast<std::uint32_t>(end));
  return 0;
}

uint32_t tlv_aligned_array_size_get(const void* array, uint32_t /*align*/) {
  return array == nullptr ? 0 : used(array);
}

int32_t tlv_aligned_array_get_num_tlvs(const void* array, uint32_t align) {
  if (array == nullptr) return 0;
  std::int32_t count = 0;
  Place place{};
  std::uint32_t offset = first_tlv(align);
  std::uint32_t result = 0;
  const std::uint32_t end = end_of(array);
  while ((result = look(array, end, offset, align, &place)) == 0) {
    ++count;
    offset = place.next;
  }
  // A malformed rest counts as one more TLV, so that the walk reaches it and reports the error.
  return result == kEndOfArray ? count : count + 1;
}

uint32_t tlv_aligned_array_get_next_tlv(const void* array, uint16_t* type, uint16_t* length,
                                        void** value, uint32_t align, uint32_t* cursor) {
  if (array == nullptr) return kBadMessage;
  Place place{};
  const std::uint32_t offset = *cursor == 0 ? first_tlv(align) : *cursor;
  if (const std::uint32_t refused = look(array, end_of(array), offset, align, &place)) {
    return refused;
  }
  *type = place.head->type.get();
  *length = place.head->length.get();
  *value = const_cast<TlvHead*>(place.head + 1);
  *cursor = place.next;
  return 0;
}
