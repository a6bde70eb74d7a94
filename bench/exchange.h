/** Single exchanges: through the library, and of bare packets beside it. */
#pragma once

#include <ficon_cmi.h>
#include <platform/mts.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace ficon::bench {

/** The header of the packet that carries a message. */
inline constexpr std::size_t kFrame = 32;
inline constexpr std::uint32_t kWait = 30'000;

[[noreturn]] inline void fail(const char* what) {
  std::fprintf(stderr, "%s failed\n", what);
  std::exit(2);
}

/** Another process that answers each packet with one as long as its first bytes say. */
inline int start_answerer() {
  int ends[2];
  socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends);
  if (fork() == 0) {
    close(ends[0]);
    std::vector<char> packet(64 * 1024);
    while (recv(ends[1], packet.data(), packet.size(), 0) > 0) {
      std::size_t reply_size = 0;
      std::memcpy(&reply_size, packet.data(), sizeof reply_size);
      send(ends[1], packet.data(), reply_size, 0);
    }
    _exit(0);
  }
  close(ends[1]);
  return ends[0];
}

inline void ping_pong(int fd, std::size_t request_size, std::size_t reply_size) {
  static std::vector<char> packet(64 * 1024);
  std::memcpy(packet.data(), &reply_size, sizeof reply_size);
  if (send(fd, packet.data(), request_size, 0) < 0 ||
      recv(fd, packet.data(), packet.size(), 0) != static_cast<ssize_t>(reply_size)) {
    fail("raw ping-pong");
  }
}

/** Drops the request and receives its reply. */
inline mts_msg_ref_t receive(mts_handle_t handle, mts_msg_ref_t* request) {
  const mts_recv_opts_t options{{1, 0, kWait, mts_rr_token_get(request)}};
  mts_drop(handle, request);
  mts_msg_ref_t reply{};
  if (ficon_cmi_mts_recv(handle, &reply, &options) != 0) fail("receive");
  return reply;
}

}  // namespace ficon::bench
