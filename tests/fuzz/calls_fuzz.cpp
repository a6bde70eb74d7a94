/**
 * The blocking functions against a daemon that answers anything: over the real transport, whose
 * replies and stray packets wait in the socket before the call is made.
 *
 *   number of the call, its arguments, then replies: a byte of flags and a block each
 */
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include "calls.h"
#include "protocol/frame.h"
#include "transport/endpoint.h"
#include "transport/open.h"

using namespace ficon::fuzz;
using ficon::platform::FrameHeader;

namespace {

constexpr std::uint8_t kRaw = 0x80;        // the block is a whole packet
constexpr std::uint8_t kSameToken = 0x40;  // answers the request before once more
constexpr std::uint8_t kInTwoFrames = 0x20;

/** The daemon's end: everything is sent ahead, in the order of the requests to come. */
class Daemon {
 public:
  explicit Daemon(int fd) : fd_(fd) {}
  ~Daemon() { close(fd_); }
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;

  void answer(std::uint8_t flags, ByteView block) {
    if ((flags & kRaw) != 0) return send_packet(block);
    if ((flags & kSameToken) == 0) ++token_;
    if ((flags & kInTwoFrames) != 0 && block.size() > 1) {
      const std::size_t half = block.size() / 2;
      send_frame(block.first(half), 0, block.size());
      send_frame(block.subspan(half), half, block.size());
    } else {
      send_frame(block, 0, block.size());
    }
  }
  void hang_up() { shutdown(fd_, SHUT_WR); }

 private:
  void send_frame(ByteView piece, std::size_t offset, std::size_t total) {
    FrameHeader header{};
    header.magic.set(ficon::platform::kFrameMagic);
    header.version.set(ficon::platform::kFrameVersion);
    header.kind.set(static_cast<std::uint16_t>(ficon::platform::FrameKind::kReply));
    header.token.set(token_);
    header.total.set(static_cast<std::uint32_t>(total));
    header.offset.set(static_cast<std::uint32_t>(offset));
    Bytes packet(sizeof header);
    std::memcpy(packet.data(), &header, sizeof header);
    packet.insert(packet.end(), piece.begin(), piece.end());
    send_packet(packet);
  }
  void send_packet(ByteView packet) {
    [[maybe_unused]] const ssize_t sent =
        send(fd_, packet.data(), packet.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
  }

  int fd_;
  std::uint32_t token_ = 0;
};

}  // namespace

/** The pauses before a busy lock is asked for again take no time here. */
extern "C" int nanosleep(const timespec*, timespec*) {
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  int ends[2];
  require(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) == 0, "a socket pair");
  Daemon daemon(ends[0]);
  const mts_handle_t handle = ficon::platform::open_handle("unix:/nowhere/at/all", ends[1]);
  Input input({data, size});
  const Call& call = calls()[input.u8() % calls().size()];
  Arguments args = Arguments::from(input);
  while (!input.empty()) {
    const std::uint8_t flags = input.u8();
    daemon.answer(flags, input.block());
  }
  daemon.hang_up();
  call.run(handle, args);
  ficon_mts_close(handle);
  return 0;
}
