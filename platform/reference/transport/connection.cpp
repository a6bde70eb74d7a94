#include "transport/connection.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "transport/embedded.h"

namespace ficon::platform {
namespace {

/** A daemon that takes nothing for so long is as good as gone. */
constexpr std::uint32_t kSendWaitMs = 10'000;

TransportError error_from(int error_number) {
  switch (error_number) {
    case EINTR:
      return TransportError::kInterrupted;
    case EAGAIN:
      return TransportError::kTimedOut;
    case EPIPE:
    case ECONNRESET:
    case ECONNREFUSED:
    case ENOTCONN:
    case ENOENT:
      return TransportError::kGone;
    default:  // no right to connect, no descriptor left: to be told apart from an absent daemon
      return static_cast<TransportError>(error_number);
  }
}

timeval to_timeval(std::uint32_t milliseconds) {
  return {static_cast<time_t>(milliseconds / 1000),
          static_cast<suseconds_t>(milliseconds % 1000 * 1000)};
}

/** Holds for connecting, too. */
void bound_sends(int fd) {
  const timeval wait = to_timeval(kSendWaitMs);
  setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &wait, sizeof wait);
}

/** A connected descriptor, or -1 with the reason in `errno`. */
int connect_to(const std::string& path) {
  static_assert(kMaxSocketPath < sizeof(sockaddr_un::sun_path));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.data(), std::min(path.size(), kMaxSocketPath));
  const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  if (fd < 0) return -1;
  bound_sends(fd);
  if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    const int reason = errno;
    ::close(fd);
    errno = reason;
    return -1;
  }
  return fd;
}

bool is_reply(const FrameHeader& header) {
  return header.magic.get() == kFrameMagic && header.version.get() == kFrameVersion &&
         header.kind.get() == static_cast<std::uint16_t>(FrameKind::kReply);
}

}  // namespace

/** The frame goes on where the last one ended, and belongs to the same message. */
bool Connection::expects(const FrameHeader& header, std::size_t payload) const {
  const std::size_t total = header.total.get();
  if (total > kMaxMessage || payload > total || (payload == 0 && total != 0)) return false;
  if (header.offset.get() != received_ || payload > total - received_) return false;
  return received_ == 0 ||
         (header.token.get() == first_frame_.token.get() && total == first_frame_.total.get());
}

Connection::Connection(std::string endpoint, int fd) : endpoint_(std::move(endpoint)) {
  if (fd >= 0) take_over(fd);
}

void Connection::close() {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
  received_ = 0;
}

TransportError Connection::reach() {
  constexpr std::string_view kUnix = "unix:";
  const bool is_unix = endpoint_.starts_with(kUnix);
  const int fd = is_unix ? connect_to(endpoint_.substr(kUnix.size())) : connect_embedded(endpoint_);
  if (fd < 0) return is_unix ? error_from(errno) : TransportError::kGone;
  take_over(fd);
  return TransportError::kNone;
}

void Connection::take_over(int fd) {
  fd_ = fd;
  ++generation_;
  receive_wait_ms_ = 0;
  bound_sends(fd);
}

TransportError Connection::send_frames(const FrameHeader& first, const std::uint8_t* payload,
                                       std::size_t length) {
  FrameHeader header = first;
  std::size_t sent = 0;
  const std::size_t largest = sizeof header + std::min<std::size_t>(length, kFramePayload);
  if (outgoing_.size() < largest) outgoing_.resize(largest);
  do {
    const std::size_t piece = std::min<std::size_t>(length - sent, kFramePayload);
    header.offset.set(static_cast<std::uint32_t>(sent));
    // One piece of memory: cheaper for the kernel than two, by more than the copy costs.
    std::memcpy(outgoing_.data(), &header, sizeof header);
    if (piece != 0) std::memcpy(outgoing_.data() + sizeof header, payload + sent, piece);
    if (::send(fd_, outgoing_.data(), sizeof header + piece, MSG_NOSIGNAL) < 0) {
      if (errno == EINTR && sent != 0) continue;  // a message begun is sent whole
      return error_from(errno);
    }
    sent += piece;
  } while (sent < length);
  return TransportError::kNone;
}

TransportError Connection::send(const FrameHeader& first, const void* payload, std::size_t length) {
  const auto* bytes = static_cast<const std::uint8_t*>(payload);
  const bool was_connected = fd_ >= 0;
  if (!was_connected) {
    if (const TransportError error = reach(); error != TransportError::kNone) return error;
  }
  TransportError error = send_frames(first, bytes, length);
  if (error == TransportError::kGone && was_connected) {
    // The daemon of the last call went away before it took this one; perhaps it is back by now.
    close();
    error = reach();
    if (error == TransportError::kNone) error = send_frames(first, bytes, length);
  }
  if (error != TransportError::kNone && error != TransportError::kInterrupted) close();
  return error;
}

void Connection::set_receive_wait(std::uint32_t wait_ms) {
  if (wait_ms == receive_wait_ms_) return;
  const timeval wait = to_timeval(wait_ms);
  setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
  receive_wait_ms_ = wait_ms;
}

TransportError Connection::receive(Message& message, std::uint32_t wait_ms, FrameHeader& header,
                                   bool& complete) {
  complete = false;
  if (fd_ < 0) return TransportError::kGone;
  set_receive_wait(wait_ms);
  message.prepare(std::max<std::size_t>(received_ + kFramePayload, message.capacity()));
  // The head is received in front of its payload, over bytes that are put back afterwards.
  constexpr std::size_t kLargest = sizeof header + kFramePayload;
  std::uint8_t* frame = message.room() + received_ - sizeof header;
  FrameHeader covered;
  std::memcpy(&covered, frame, sizeof covered);
  const ssize_t size = recv(fd_, frame, kLargest, MSG_TRUNC);
  std::memcpy(&header, frame, sizeof header);
  std::memcpy(frame, &covered, sizeof covered);
  if (size <= 0) {
    const TransportError error = size == 0 ? TransportError::kGone : error_from(errno);
    if (error != TransportError::kInterrupted && error != TransportError::kTimedOut) close();
    return error;
  }
  const auto length = static_cast<std::size_t>(size);
  const std::size_t payload = std::min(length, kLargest) - std::min(length, sizeof header);
  message.note_written(received_ + payload);
  if (length < sizeof header || length > kLargest || !is_reply(header) ||
      !expects(header, payload)) {
    close();
    return TransportError::kProtocol;
  }
  if (received_ == 0) first_frame_ = header;
  received_ += payload;
  complete = received_ == header.total.get();
  if (complete) {
    message.finish(received_);
    received_ = 0;
  } else {
    message.prepare(header.total.get() + kFramePayload);
  }
  return TransportError::kNone;
}

}  // namespace ficon::platform
