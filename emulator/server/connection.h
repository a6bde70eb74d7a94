/** One client: its socket, the frames coming in, and the replies that it has not taken yet. */
#pragma once

#include <deque>
#include <string>

#include "server/assembler.h"
#include "server/limits.h"

namespace ficon::emulator {

class Connection {
 public:
  enum class Read { kMessage, kNothing, kClosed, kBroken };

  Connection(ConnectionId id, int fd, const Limits& limits);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  ConnectionId id() const { return id_; }
  int fd() const { return fd_; }

  /** Reads one packet without waiting. kNothing: no more for now, or a message has begun. */
  Read read(std::span<std::uint8_t> buffer, Message& message, const char*& reason);

  /** Takes a reply for sending. False: the client has too much waiting already. */
  bool queue(Message reply);
  /** Sends what the socket takes. False: the connection is gone. */
  bool flush();
  bool has_waiting() const { return !waiting_.empty(); }

  bool watched_for_writing = false;

 private:
  bool send_frame();

  ConnectionId id_;
  int fd_;
  std::size_t queued_limit_;
  std::size_t queued_ = 0;
  Assembler assembler_;
  std::deque<Message> waiting_;
  std::size_t sent_ = 0;  // bytes of the first one's payload
};

}  // namespace ficon::emulator
