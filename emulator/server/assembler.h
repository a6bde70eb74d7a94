/** Puts the frames of a connection together into messages, and takes replies apart into frames. */
#pragma once

#include <optional>
#include <vector>

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

/** The packets of a reply. */
std::vector<Bytes> frames_of(const Message& reply);

}  // namespace ficon::emulator
