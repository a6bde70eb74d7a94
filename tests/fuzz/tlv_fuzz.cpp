/**
 * TLV arrays: a walk over any bytes stays inside them and ends, and what is added to an array is
 * what a walk finds in it.
 */
#include <platform/tlv_array.h>

#include "received.h"

using namespace ficon::fuzz;

namespace {

struct Tlv {
  std::uint16_t type;
  Bytes value;
  bool operator==(const Tlv&) const = default;
};

/** What a walk finds; it ends with an error or behind as many steps as were announced. */
std::vector<Tlv> walk(const void* array, std::uint32_t align, const std::uint8_t* begin,
                      const std::uint8_t* end) {
  std::vector<Tlv> found;
  std::uint32_t cursor = 0;
  const std::int32_t steps = tlv_aligned_array_get_num_tlvs(array, align);
  require(steps >= 0 && steps <= end - begin, "a TLV takes at least its head");
  for (std::int32_t step = 0; step < steps; ++step) {
    std::uint16_t type = 0;
    std::uint16_t length = 0;
    void* value = nullptr;
    if (tlv_aligned_array_get_next_tlv(array, &type, &length, &value, align, &cursor) != 0) {
      require(step + 1 == steps, "only the last step fails");
      return found;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(value);
    require(bytes >= begin && bytes + length <= end, "a value stands inside its array");
    found.push_back({type, Bytes(bytes, bytes + length)});
  }
  return found;
}

void walk_received(ByteView payload, std::uint32_t align) {
  Received received(payload);
  const auto* begin = static_cast<const std::uint8_t*>(received.payload());
  walk(begin, align, begin, begin + payload.size());
}

void add_and_walk(Input input, std::uint32_t align) {
  Bytes array(input.u16());
  const auto capacity = static_cast<std::uint32_t>(array.size());
  std::vector<Tlv> added;
  while (!input.empty()) {
    const std::uint16_t type = input.u16();
    const ByteView value = input.take(input.u8());
    if (tlv_aligned_array_add_tlv(array.data(), capacity, type,
                                  static_cast<std::uint16_t>(value.size()), value.data(),
                                  align) == 0) {
      added.push_back({type, Bytes(value.begin(), value.end())});
    }
  }
  require(tlv_aligned_array_size_get(added.empty() ? nullptr : array.data(), align) <= capacity,
          "an array is no longer than its capacity");
  if (added.empty()) return;
  require(walk(array.data(), align, array.data(), array.data() + capacity) == added,
          "a walk finds what was added");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input({data, size});
  constexpr std::uint32_t kAlignments[] = {1, 1, 2, 4, 8, 0, 3};
  const std::uint32_t align = kAlignments[input.u8() % std::size(kAlignments)];
  walk_received(input.rest(), align);
  add_and_walk(input, align);
  return 0;
}
