#include "fake_daemon.h"

#include <doctest/doctest.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace ficon::test {
namespace {

/** A client that never comes, or says nothing, ends the test instead of stopping it for ever. */
void limit_waits(int fd) {
  const timeval patience{20, 0};
  REQUIRE(setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience) == 0);
}

}  // namespace

Bytes hex(const std::string& digits) {
  Bytes bytes;
  std::string pair;
  for (const char digit : digits) {
    if (digit == ' ') continue;
    pair += digit;
    if (pair.size() < 2) continue;
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(pair, nullptr, 16)));
    pair.clear();
  }
  return bytes;
}

Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

Bytes reply_head(std::uint32_t token, std::uint32_t total, std::uint32_t offset) {
  const auto word = [](std::uint32_t value) {
    return Bytes{static_cast<std::uint8_t>(value >> 24), static_cast<std::uint8_t>(value >> 16),
                 static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
  };
  return hex("46434d49 0001 0002") + word(token) + Bytes(12) + word(total) + word(offset);
}

FakeDaemon::FakeDaemon() {
  char directory[] = "/tmp/ficon-test-XXXXXX";
  REQUIRE(mkdtemp(directory) != nullptr);
  directory_ = directory;
  path_ = directory_ + "/socket";
}

FakeDaemon::~FakeDaemon() {
  die();
  rmdir(directory_.c_str());
}

void FakeDaemon::listen() {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path_.data(), path_.size());
  listener_ = socket(AF_UNIX, SOCK_SEQPACKET, 0);
  REQUIRE(bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0);
  REQUIRE(::listen(listener_, 4) == 0);
  limit_waits(listener_);
}

void FakeDaemon::die() {
  if (peer_ >= 0) close(peer_);
  if (listener_ >= 0) close(listener_);
  peer_ = listener_ = -1;
  unlink(path_.c_str());
}

void FakeDaemon::accept() {
  if (peer_ >= 0) close(peer_);
  peer_ = ::accept(listener_, nullptr, nullptr);
  REQUIRE(peer_ >= 0);
  limit_waits(peer_);
}

Bytes FakeDaemon::receive() {
  Bytes packet(128 * 1024);
  const ssize_t size = recv(peer_, packet.data(), packet.size(), 0);
  packet.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
  return packet;
}

void FakeDaemon::send(const Bytes& packet) {
  REQUIRE(::send(peer_, packet.data(), packet.size(), MSG_NOSIGNAL) ==
          static_cast<ssize_t>(packet.size()));
}

}  // namespace ficon::test
