/** Finds port-map entries by interface without searching: the cost of a map is linear in it. */
#pragma once

#include <ficon_cmi.h>

#include <cstdint>

namespace ficon {

/** Open addressing over entries that their owner keeps; at most 2^15 of them. */
template <class Entry>
class InterfaceIndex {
 public:
  /** Slots for a number of entries: a power of two, at least half of it free. */
  static constexpr std::uint32_t slots_for(std::uint32_t entries) {
    std::uint32_t slots = 2;
    while (slots < 2 * entries) slots *= 2;
    return slots;
  }

  /** `slots` has room for `slots_for(count)`. */
  InterfaceIndex(Entry* entries, std::uint32_t count, std::uint16_t* slots)
      : entries_(entries), slots_(slots), mask_(slots_for(count) - 1) {
    for (std::uint32_t slot = 0; slot <= mask_; ++slot) slots_[slot] = kFree;
    for (std::uint32_t i = 0; i < count; ++i) {
      std::uint16_t& slot = slot_of(entries[i].if_index);
      if (slot == kFree) slot = static_cast<std::uint16_t>(i);  // the first entry keeps it
    }
  }

  /** The first entry with the interface, or null. */
  Entry* find(if_index_t if_index) const {
    const std::uint16_t slot = slot_of(if_index);
    return slot == kFree ? nullptr : &entries_[slot];
  }

 private:
  static constexpr std::uint16_t kFree = 0xffff;

  std::uint16_t& slot_of(if_index_t if_index) const {
    std::uint32_t at = (if_index * 0x9e3779b1u) >> 15;
    while (slots_[at & mask_] != kFree && entries_[slots_[at & mask_]].if_index != if_index) ++at;
    return slots_[at & mask_];
  }

  Entry* entries_;
  std::uint16_t* slots_;
  std::uint32_t mask_;
};

}  // namespace ficon
