/** The box status reply: a head, then five entries a group. */
#pragma once

#include "wire/byte_order.h"

namespace ficon::wire {

inline constexpr std::uint32_t kBoxEntriesPerGroup = 5;

struct BoxStatusHead {
  host32 status;
  std::uint8_t spare0;
  std::uint8_t group_count;
  bytes<2> spare1;
};
static_assert(is_packed<BoxStatusHead, 8>);
static_assert(offsetof(BoxStatusHead, group_count) == 5);

struct BoxStatusEntry {
  bytes<28> data;
};
static_assert(is_packed<BoxStatusEntry, 28>);

/** What fcd says in an entry: a number and what it counts. The library passes it on unread. */
struct BoxCount {
  be32 value;
  bytes<24> label;  // ASCII, NUL-padded
};
static_assert(is_packed<BoxCount, sizeof(BoxStatusEntry)>);

}  // namespace ficon::wire
