#include "server/connection.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace ficon::emulator {

Connection::Connection(ConnectionId id, int fd, const Limits& limits)
    : id_(id), fd_(fd), queued_limit_(limits.queued_bytes), assembler_(limits.message_bytes) {}

Connection::~Connection() {
  close(fd_);
}

Connection::Read Connection::read(std::span<std::uint8_t> buffer, Message& message,
                                  const char*& reason) {
  const ssize_t size = recv(fd_, buffer.data(), buffer.size(), MSG_DONTWAIT | MSG_TRUNC);
  if (size < 0) {
    return errno == EAGAIN || errno == EINTR ? Read::kNothing : Read::kClosed;
  }
  if (size == 0) return Read::kClosed;  // the end; a packet is never empty
  const auto length = static_cast<std::size_t>(size);
  reason = length > buffer.size() ? "packet is longer than a frame"
                                  : assembler_.take({buffer.data(), length});
  if (reason != nullptr) return Read::kBroken;
  auto completed = assembler_.completed();
  if (!completed) return Read::kNothing;
  message = std::move(*completed);
  return Read::kMessage;
}

bool Connection::queue(const Message& reply) {
  for (Bytes& frame : frames_of(reply)) {
    queued_ += frame.size();
    waiting_.push_back(std::move(frame));
  }
  return flush() && queued_ <= queued_limit_;
}

bool Connection::flush() {
  while (!waiting_.empty()) {
    const Bytes& frame = waiting_.front();
    if (send(fd_, frame.data(), frame.size(), MSG_DONTWAIT | MSG_NOSIGNAL) < 0) {
      if (errno == EINTR) continue;
      return errno == EAGAIN || errno == ENOBUFS;
    }
    queued_ -= frame.size();
    waiting_.pop_front();
  }
  return true;
}

}  // namespace ficon::emulator
