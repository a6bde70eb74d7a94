/** One connection to the emulator: packets out and in, and what can go wrong with them. */
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "protocol/frame.h"
#include "transport/message.h"

namespace ficon::platform {

/** The transport's error numbers: Linux's, any other of which may also be a value. */
enum class TransportError : std::int32_t {
  kNone = 0,
  kInterrupted = 4,  // EINTR
  kBadHandle = 9,    // EBADF
  kInvalid = 22,     // EINVAL
  kGone = 32,        // EPIPE: the daemon is not there, or went away
  kTimedOut = 62,    // ETIME
  kProtocol = 71,    // EPROTO: what came is no frame
  kTooLong = 90,     // EMSGSIZE
};

/** The longest path of a socket. */
inline constexpr std::size_t kMaxSocketPath = 107;

class Connection {
 public:
  /** `fd` is a connected socket to begin with, or -1. */
  Connection(std::string endpoint, int fd);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() { close(); }

  /** Sends a whole message, reaching for the daemon first where it is not reached yet. */
  TransportError send(const FrameHeader& first, const void* payload, std::size_t length);

  /**
   * Receives one frame into `message`, waiting for `wait_ms` (0: without end). kNone with
   * `complete` unset means that the message has more frames to come.
   */
  TransportError receive(Message& message, std::uint32_t wait_ms, FrameHeader& header,
                         bool& complete);

  void close();

  /** Grows with each connection made: what was sent on an earlier one is never answered. */
  std::uint32_t generation() const { return generation_; }

 private:
  bool expects(const FrameHeader& header, std::size_t payload) const;
  TransportError reach();
  void take_over(int fd);
  TransportError send_frames(const FrameHeader& first, const std::uint8_t* payload,
                             std::size_t length);
  void set_receive_wait(std::uint32_t wait_ms);

  std::string endpoint_;
  int fd_ = -1;
  std::uint32_t generation_ = 0;
  std::uint32_t receive_wait_ms_ = 0;   // as the socket has it
  std::size_t received_ = 0;            // payload bytes of a message whose frames are coming in
  FrameHeader first_frame_{};           // of that message
  std::vector<std::uint8_t> outgoing_;  // a frame as it leaves
};

}  // namespace ficon::platform
