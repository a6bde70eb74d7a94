/**
 * The round trip of ficon_cmi_get_vsan_info against the emulator beside a raw ping-pong of packets
 * of the same lengths, all processes on one core. Between them, mixed pairs show which side costs
 * what: the library against a bare answerer, and a bare client against an answerer that waits for
 * many descriptors, as a daemon must, and against the emulator.
 */
#include <signal.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <transport/endpoint.h>
#include <transport/open.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "emulator_process.h"
#include "measure.h"

using namespace ficon;

namespace {

using Packet = std::vector<std::uint8_t>;
constexpr std::size_t kTokenOffset = 8;

Packet receive(int fd) {
  Packet packet(64 * 1024);
  const ssize_t size = recv(fd, packet.data(), packet.size(), 0);
  packet.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
  return packet;
}

/** The request packet of the query, as the library sends it. */
Packet request_packet() {
  int ends[2];
  socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends);
  mts_handle_t handle = platform::open_handle("unix:none", ends[0]);
  mts_msg_ref_t message{};
  ficon_cmi_get_vsan_info_nonblock(1, handle, "BENCH", "UNKNOWN", 0, 1, bench::kVsan, &message);
  Packet packet = receive(ends[1]);
  ficon_mts_close(handle);
  close(ends[1]);
  return packet;
}

int connect_to(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.data(), path.size());
  const int fd = socket(AF_UNIX, SOCK_SEQPACKET, 0);
  if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) std::exit(2);
  return fd;
}

enum class Waits { kInReceive, kInEpoll };

/** Answers each packet with the same reply, under the request's token. */
[[noreturn]] void answer(int fd, Packet reply, Waits waits) {
  const int epoll = epoll_create1(0);
  epoll_event event{EPOLLIN, {}};
  epoll_ctl(epoll, EPOLL_CTL_ADD, fd, &event);
  std::uint8_t request[4096];
  do {
    if (waits == Waits::kInEpoll) epoll_wait(epoll, &event, 1, -1);
    if (recv(fd, request, sizeof request, 0) <= 0) break;
    std::memcpy(reply.data() + kTokenOffset, request + kTokenOffset, 4);
  } while (send(fd, reply.data(), reply.size(), 0) > 0);
  _exit(0);
}

/** A process that answers; the client's descriptor. */
int start_answerer(const Packet& reply, Waits waits = Waits::kInReceive) {
  int ends[2];
  socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends);
  if (fork() == 0) {
    close(ends[0]);
    answer(ends[1], reply, waits);
  }
  close(ends[1]);
  return ends[0];
}

void ping_pong(int fd, const Packet& request, std::size_t reply_size) {
  std::uint8_t reply[4096];
  if (send(fd, request.data(), request.size(), 0) < 0 ||
      recv(fd, reply, sizeof reply, 0) != static_cast<ssize_t>(reply_size)) {
    std::exit(2);
  }
}

void query(mts_handle_t handle) {
  ficon_cmi_vsan_cfg_t record;
  if (ficon_cmi_get_vsan_info(1, handle, "BENCH", "UNKNOWN", 0, 1, bench::kVsan, &record) != 0) {
    std::exit(2);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return std::fprintf(stderr, "usage: round_trip FCD-EMULATOR\n"), 2;
  bench::pin_to_one_core();
  signal(SIGCHLD, SIG_IGN);
  const bench::EmulatorProcess emulator(argv[1]);
  mts_handle_t handle = emulator.open();
  const Packet request = request_packet();
  const int raw_to_emulator = connect_to(emulator.socket());
  send(raw_to_emulator, request.data(), request.size(), 0);
  const Packet reply = receive(raw_to_emulator);
  const int raw_to_answerer = start_answerer(reply);
  const int raw_to_waiting = start_answerer(reply, Waits::kInEpoll);
  mts_handle_t answered = platform::open_handle("unix:none", start_answerer(reply));

  std::printf("round trip: request of %zu bytes, reply of %zu, one core\n", request.size(),
              reply.size());
  std::vector<bench::Contender> contenders = {
      {"raw ping-pong", [&] { ping_pong(raw_to_answerer, request, reply.size()); }, {}},
      {"library, raw answerer", [&] { query(answered); }, {}},
      {"raw client, answerer that waits in epoll",
       [&] { ping_pong(raw_to_waiting, request, reply.size()); },
       {}},
      {"raw client, emulator", [&] { ping_pong(raw_to_emulator, request, reply.size()); }, {}},
      {"library, emulator", [&] { query(handle); }, {}}};
  bench::measure(contenders, 200, 200);
  bench::print(contenders);
  ficon_mts_close(answered);
  ficon_mts_close(handle);
}
