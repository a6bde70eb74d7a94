/** The fcd lock's request and reply: one record, and the only one wholly in host order. */
#pragma once

#include "wire/byte_order.h"

namespace ficon::wire {

enum class LockOperation : std::uint8_t { kFree = 0, kGet = 1, kReset = 2, kStatus = 3 };

struct FcdLockRecord {
  host32 vsan;
  std::uint8_t operation;
  host32 status;
  host32 requester;
  bytes<5> spare;
};
static_assert(is_packed<FcdLockRecord, 18>);
static_assert(offsetof(FcdLockRecord, operation) == 4);
static_assert(offsetof(FcdLockRecord, status) == 5);
static_assert(offsetof(FcdLockRecord, requester) == 9);
static_assert(offsetof(FcdLockRecord, spare) == 13);

}  // namespace ficon::wire
