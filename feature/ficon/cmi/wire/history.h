/** The director history: a walk from a position, a batch of entries at a time. */
#pragma once

#include "wire/cmi_header.h"

namespace ficon::wire {

/** Larger operations in a reply are malformed. */
inline constexpr std::uint32_t kLastHistoryOperation = 2;

/** Request and head of the reply. */
struct HistoryRequest {
  PlatformHeader platform;
  host32 status;  // replies only
  be32 hist_key;  // the position: in, and the one to go on from out
  be32 hist_op;
  be32 hist_arg1;
  be32 hist_arg2;
};
static_assert(is_packed<HistoryRequest, 132>);
static_assert(offsetof(HistoryRequest, status) == 112);
static_assert(offsetof(HistoryRequest, hist_key) == 116);
static_assert(offsetof(HistoryRequest, hist_op) == 120);
static_assert(offsetof(HistoryRequest, hist_arg2) == 128);

/** The entries' TLV: this head, then `count` entries. */
struct HistoryEntriesHead {
  be32 count;
  bytes<4> spare;
  be32 summary_word;
};
static_assert(is_packed<HistoryEntriesHead, 12>);

struct HistoryEntry {
  be32 value;
  std::uint8_t byte_value;
  bytes<32> field;
  bytes<3> spare;
};
static_assert(is_packed<HistoryEntry, 40>);
static_assert(offsetof(HistoryEntry, field) == 5);

}  // namespace ficon::wire
