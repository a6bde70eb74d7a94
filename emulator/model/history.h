/**
 * The director history: what was changed, when, by whom. Append-only; the oldest entries give way
 * when the ring is full. Positions start at 1 and are never used twice.
 */
#pragma once

#include <cstdint>
#include <deque>
#include <string>

#include "model/requester.h"
#include "wire/history.h"

namespace ficon::emulator {

using Change = wire::HistoryChange;

struct HistoryEntry {
  std::uint32_t position = 0;
  std::int64_t time = 0;   // seconds since 1970
  std::uint16_t vsan = 0;  // 0: the switch as a whole
  Requester requester = Requester::kUnstated;
  Change change{};
  std::string detail{};  // what exactly, for people; plain ASCII
};

class History {
 public:
  explicit History(std::size_t capacity) : capacity_(capacity == 0 ? 1 : capacity) {}

  /** Appends an entry; its position is filled in. @return the position of the entry that gave way,
   *  or 0. */
  std::uint32_t append(HistoryEntry entry);
  /** Lets the oldest entry go if there are more than the ring holds: after a restart with a smaller
   *  one. @return its position, or 0 */
  std::uint32_t drop_excess();

  /** Puts back an entry read from the store; in ascending order of position. */
  void restore(HistoryEntry entry);

  const HistoryEntry* at(std::uint32_t position) const;
  const std::deque<HistoryEntry>& entries() const { return entries_; }
  std::uint32_t last_position() const { return last_position_; }
  /** Position of the oldest entry; behind the last one where there is none. */
  std::uint32_t first_position() const {
    return entries_.empty() ? last_position_ + 1 : entries_.front().position;
  }
  std::size_t capacity() const { return capacity_; }

 private:
  std::size_t capacity_;
  std::uint32_t last_position_ = 0;
  std::deque<HistoryEntry> entries_;
};

}  // namespace ficon::emulator
