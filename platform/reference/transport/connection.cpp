#include "transport/connection.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/uio.h>
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
    default:
      return TransportError::kGone;
  }
}

timeval to_timeval(std::uint32_t milliseconds) {
  return {static_cast<time_t>(milliseconds / 1000),
          static_cast<suseconds_t>(milliseconds % 1000 * 1000)};
}

int connect_to(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) return -1;
  std::memcpy(address.sun_path, path.data(), path.size());
  const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  if (fd < 0) return -1;
  if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    ::close(fd);
    return -1;
  }
  return fd;
}

bool is_frame_of_reply(const FrameHeader& header, std::size_t payload,
                       std::size_t expected_offset) {
  const std::size_t total = header.total.get();
  const std::size_t offset = header.offset.get();
  return header.magic.get() == kFrameMagic && header.version.get() == kFrameVersion &&
         header.kind.get() == static_cast<std::uint16_t>(FrameKind::kReply) &&
         total <= kMaxMessage && offset == expected_offset && offset + payload <= total &&
         (payload != 0 || total == 0);
}

}  // namespace

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
  const int fd = endpoint_.starts_with(kUnix) ? connect_to(endpoint_.substr(kUnix.size()))
                                              : connect_embedded(endpoint_);
  if (fd < 0) return TransportError::kGone;
  take_over(fd);
  return TransportError::kNone;
}

void Connection::take_over(int fd) {
  fd_ = fd;
  receive_wait_ms_ = 0;
  const timeval wait = to_timeval(kSendWaitMs);
  setsockopt(fd_, SOL_SOCKET, SO_SNDTIMEO, &wait, sizeof wait);
}

TransportError Connection::send_frames(const FrameHeader& first, const std::uint8_t* payload,
                                       std::size_t length) {
  FrameHeader header = first;
  std::size_t sent = 0;
  do {
    const std::size_t piece = std::min<std::size_t>(length - sent, kFramePayload);
    header.offset.set(static_cast<std::uint32_t>(sent));
    iovec parts[2] = {{&header, sizeof header}, {const_cast<std::uint8_t*>(payload) + sent, piece}};
    msghdr packet{};
    packet.msg_iov = parts;
    packet.msg_iovlen = piece == 0 ? 1 : 2;
    if (sendmsg(fd_, &packet, MSG_NOSIGNAL) < 0) return error_from(errno);
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
    // The daemon of the last call went away; perhaps another one is there by now.
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
  iovec parts[2] = {{&header, sizeof header}, {message.room() + received_, kFramePayload}};
  msghdr packet{};
  packet.msg_iov = parts;
  packet.msg_iovlen = 2;
  const ssize_t size = recvmsg(fd_, &packet, 0);
  if (size <= 0) {
    const TransportError error = size == 0 ? TransportError::kGone : error_from(errno);
    if (error == TransportError::kGone) close();
    return error;
  }
  const auto payload = static_cast<std::size_t>(size) -
                       std::min<std::size_t>(static_cast<std::size_t>(size), sizeof header);
  if (static_cast<std::size_t>(size) < sizeof header || (packet.msg_flags & MSG_TRUNC) != 0 ||
      !is_frame_of_reply(header, payload, received_)) {
    close();
    return TransportError::kProtocol;
  }
  message.note_written(received_ + payload);
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
