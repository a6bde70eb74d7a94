#include "server/connection.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

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

bool Connection::queue(Message reply) {
  queued_ += reply.payload.size();
  waiting_.push_back(std::move(reply));
  return flush() && queued_ <= queued_limit_;
}

bool Connection::flush() {
  while (!waiting_.empty()) {
    if (send_frame()) continue;
    if (errno == EINTR) continue;
    return errno == EAGAIN || errno == ENOBUFS;
  }
  return true;
}

/** The next frame of the first reply. */
bool Connection::send_frame() {
  const Bytes& payload = waiting_.front().payload;
  const platform::FrameHeader head = reply_head(waiting_.front(), sent_);
  const std::size_t piece = std::min<std::size_t>(payload.size() - sent_, platform::kFramePayload);
  // One piece of memory: cheaper for the kernel than two, by more than the copy costs.
  std::uint8_t packet[sizeof head + platform::kFramePayload];
  std::memcpy(packet, &head, sizeof head);
  if (piece != 0) std::memcpy(packet + sizeof head, payload.data() + sent_, piece);
  if (send(fd_, packet, sizeof head + piece, MSG_DONTWAIT | MSG_NOSIGNAL) < 0) return false;
  sent_ += piece;
  if (sent_ < payload.size()) return true;
  queued_ -= payload.size();
  waiting_.pop_front();
  sent_ = 0;
  return true;
}

}  // namespace ficon::emulator
