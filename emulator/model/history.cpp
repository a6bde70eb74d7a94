#include "model/history.h"

#include <utility>

namespace ficon::emulator {

std::uint32_t History::append(HistoryEntry entry) {
  entry.position = ++last_position_;
  entries_.push_back(std::move(entry));
  return drop_excess();
}

std::uint32_t History::drop_excess() {
  if (entries_.size() <= capacity_) return 0;
  const std::uint32_t gone = entries_.front().position;
  entries_.pop_front();
  return gone;
}

void History::restore(HistoryEntry entry) {
  last_position_ = entry.position;
  entries_.push_back(std::move(entry));
}

const HistoryEntry* History::at(std::uint32_t position) const {
  // Positions have no gaps, so the place follows from the oldest.
  if (entries_.empty() || position < entries_.front().position) return nullptr;
  const std::size_t place = position - entries_.front().position;
  return place < entries_.size() ? &entries_[place] : nullptr;
}

}  // namespace ficon::emulator
