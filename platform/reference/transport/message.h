/** Messages of a handle: pooled, so that a warm call allocates nothing. */
#pragma once

#include <cstdint>
#include <deque>
#include <vector>

#include "protocol/frame.h"

namespace ficon::platform {

/**
 * Zeroed room behind every reply's payload. The library copies some records whole, and some as
 * long as the reply says they are; the largest of those is a box status of 255 groups.
 */
inline constexpr std::size_t kReplySlack = 64 * 1024;

struct PayloadSlot;

class Message {
 public:
  Message() = default;
  Message(const Message&) = delete;
  Message& operator=(const Message&) = delete;
  ~Message() { clear(); }

  std::uint32_t token = 0;

  /** Without a payload; what it pointed to may be reused. */
  void clear();
  /** Empty and ready for a payload of up to `size` bytes. */
  void prepare(std::size_t size);
  /** Where the payload goes; a frame's head may stand in front of it. */
  std::uint8_t* room() { return bytes_.data() + sizeof(FrameHeader); }
  std::size_t capacity() const { return bytes_.empty() ? 0 : bytes_.size() - kAround; }
  /** So many bytes from the beginning may be nonzero now. */
  void note_written(std::size_t end) { written_ = end > written_ ? end : written_; }
  /** The payload is in place: `length` bytes of it, zeros behind. */
  void finish(std::size_t length);

  /** Null without a payload. Writable: one parser terminates a name in place. */
  void* payload() { return length_ == 0 ? nullptr : room(); }
  std::size_t length() const { return length_; }

 private:
  static constexpr std::size_t kAround = sizeof(FrameHeader) + kReplySlack;

  std::vector<std::uint8_t> bytes_;
  std::size_t length_ = 0;
  PayloadSlot* slot_ = nullptr;  // while there is a payload
  std::size_t written_ = 0;      // bytes that may be nonzero from this or an earlier payload
};

class MessagePool {
 public:
  Message* take();
  void give_back(Message* message);
  bool owns(const Message* message) const;

 private:
  std::deque<Message> messages_;
  std::vector<Message*> free_;
};

/**
 * How long a received payload really is. A TLV array says its own size, and a reply that lies
 * about it must not lead a walk out of its buffer.
 *
 * @return the length, or -1 for memory that is no reply's payload
 */
std::int64_t received_length(const void* payload);

}  // namespace ficon::platform
