/** Puts the frames of a connection together into messages, and says what heads those of a reply. */
#pragma once

#include <optional>

#include "protocol/frame.h"
#include "server/message.h"

namespace ficon::emulator {

class Assembler {
 public:
  explicit Assembler(std::size_t message_limit) : limit_(message_limit) {}

  /**
   * Takes one packet. @return null, or why it is no frame of a request; the connection is then
   * beyond repair.
   */
  const char* take(ByteView packet);

  /** The message that the last packet completed, if it did. */
  std::optional<Message> completed();

 private:
  std::size_t limit_;
  bool assembling_ = false;
  bool complete_ = false;
  std::size_t total_ = 0;
  Message message_;
};

/** The head of the frame that carries a reply's payload from `offset` on. */
platform::FrameHeader reply_head(const Message& reply, std::size_t offset);

}  // namespace ficon::emulator
