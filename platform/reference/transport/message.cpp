#include "transport/message.h"

#include <algorithm>
#include <atomic>
#include <cstring>

namespace ficon::platform {

/**
 * Where it stands how long a held payload is. Slots are reused and never freed: there are as many
 * as payloads were ever held at a time, of all handles. Every step of every walk looks here, so
 * nothing is locked: only who holds a payload may ask about it, and its slot stands still until it
 * is dropped.
 */
struct PayloadSlot {
  std::atomic<const void*> payload;  // null: free
  std::size_t length;
  PayloadSlot* older;
};

namespace {

std::atomic<PayloadSlot*> newest_slot;

PayloadSlot* remember(const void* payload, std::size_t length) {
  for (PayloadSlot* slot = newest_slot; slot != nullptr; slot = slot->older) {
    const void* free = nullptr;
    if (!slot->payload.compare_exchange_strong(free, payload)) continue;
    slot->length = length;
    return slot;
  }
  auto* added = new PayloadSlot{payload, length, newest_slot};
  while (!newest_slot.compare_exchange_weak(added->older, added)) continue;
  return added;
}

}  // namespace

std::int64_t received_length(const void* payload) {
  if (payload == nullptr) return -1;
  for (const PayloadSlot* slot = newest_slot; slot != nullptr; slot = slot->older) {
    if (slot->payload == payload) return static_cast<std::int64_t>(slot->length);
  }
  return -1;
}

void Message::clear() {
  if (slot_ != nullptr) slot_->payload.store(nullptr, std::memory_order_release);
  slot_ = nullptr;
  length_ = 0;
}

void Message::prepare(std::size_t size) {
  clear();
  if (capacity() < size) bytes_.resize(size + kAround);
}

void Message::finish(std::size_t length) {
  if (written_ > length) std::memset(room() + length, 0, written_ - length);
  written_ = length;
  length_ = length;
  if (length != 0) slot_ = remember(room(), length);
}

Message* MessagePool::take() {
  if (free_.empty()) return &messages_.emplace_back();
  Message* message = free_.back();
  free_.pop_back();
  return message;
}

void MessagePool::give_back(Message* message) {
  message->clear();
  free_.push_back(message);
}

bool MessagePool::owns(const Message* message) const {
  const bool mine = std::ranges::any_of(messages_, [&](const Message& m) { return &m == message; });
  return mine && std::ranges::find(free_, message) == free_.end();
}

}  // namespace ficon::platform
