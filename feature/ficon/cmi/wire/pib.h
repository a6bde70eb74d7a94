/** The product identification block: a range of records. */
#pragma once

#include "wire/cmi_header.h"

namespace ficon::wire {

/** Request and, with the range that fcd returns, head of the reply. */
struct PibRequest {
  PlatformHeader platform;
  be32 pib_key;
  host32 status;  // replies only
  std::uint8_t first;
  std::uint8_t last;  // included
};
static_assert(is_packed<PibRequest, 122>);
static_assert(offsetof(PibRequest, pib_key) == 112);
static_assert(offsetof(PibRequest, status) == 116);
static_assert(offsetof(PibRequest, first) == 120);

/** What a record says belongs to fcd; the library passes it on as it stands. */
struct PibRecord {
  bytes<50> data;
};
static_assert(is_packed<PibRecord, 50>);

}  // namespace ficon::wire
