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

/** What fcd says in a status reply's spare bytes: who holds the lock and since when. */
struct LockHolder {
  std::uint8_t requester;  // 0: the lock is free
  host32 age;              // seconds
};
static_assert(is_packed<LockHolder, sizeof(FcdLockRecord::spare)>);

}  // namespace ficon::wire
