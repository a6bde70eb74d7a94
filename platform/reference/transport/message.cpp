#include "transport/message.h"

#include <algorithm>
#include <cstring>
#include <mutex>

namespace ficon::platform {
namespace {

struct Received {
  const void* payload;
  std::size_t length;
};

/** Of all handles; seldom more than one or two at a time. */
std::mutex received_mutex;
std::vector<Received> received_payloads;

void remember(const void* payload, std::size_t length) {
  const std::lock_guard guard(received_mutex);
  received_payloads.push_back({payload, length});
}

void forget(const void* payload) {
  const std::lock_guard guard(received_mutex);
  std::erase_if(received_payloads, [&](const Received& r) { return r.payload == payload; });
}

}  // namespace

std::int64_t received_length(const void* payload) {
  const std::lock_guard guard(received_mutex);
  const auto found = std::ranges::find(received_payloads, payload, &Received::payload);
  return found == received_payloads.end() ? -1 : static_cast<std::int64_t>(found->length);
}

void Message::clear() {
  if (length_ != 0) forget(room());
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
  if (length != 0) remember(room(), length);
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
