#include <doctest/doctest.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <memory>

#include "child.h"
#include "client.h"
#include "daemon_process.h"
#include "server/embedded.h"

using namespace ficon::test;

namespace {

using Milliseconds = std::chrono::milliseconds;

bool ended(Client& client) {
  return !client.receive().has_value();
}

}  // namespace

TEST_CASE("A daemon serves, keeps its state over a restart, and stops cleanly") {
  ScratchDirectory directory;
  {
    DaemonProcess daemon(directory);
    REQUIRE(daemon.running());
    struct stat found {};
    REQUIRE(stat(daemon.socket().c_str(), &found) == 0);
    CHECK((found.st_mode & 07777) == 0660);
    Client client(daemon.socket());
    REQUIRE(client.enable(20));
    CHECK(tlv_status(*client.call(7865, vsan_config(1, 10, 20, 20, be32(500)))) == 0);
    daemon.signal(SIGTERM);
    CHECK(daemon.wait() == 0);
    CHECK(stat(daemon.socket().c_str(), &found) != 0);
  }
  DaemonProcess daemon(directory);
  Client client(daemon.socket());
  CHECK(host32_at(*client.call(7855, vsan_info(1, 20)), 140 + 20) == 500);
}

TEST_CASE("What is no frame ends the connection, and nobody else's") {
  ScratchDirectory directory;
  DaemonProcess daemon(directory);
  Client bystander(daemon.socket());
  REQUIRE(bystander.enable(20));
  const Bytes good = frame(1, 0xfe000000, 101, 7855, 136, 0, vsan_info(1, 20));
  std::vector<Bytes> hostile = {
      hex("00"),                                                  // short
      Bytes(good.begin(), good.begin() + 31),                     // half a header
      Bytes(32, 0xff),                                            // another magic
      frame(1, 0xfe000000, 101, 7855, 0x100001, 0, Bytes(64)),    // above the limit
      frame(1, 0xfe000000, 101, 7855, 0xffffffff, 0, Bytes(64)),  //
      frame(1, 0xfe000000, 101, 7855, 64, 0, Bytes(65)),          // more than announced
      frame(1, 0xfe000000, 101, 7855, 64, 1, Bytes(63)),          // begins in the middle
      frame(1, 0xfe000000, 101, 7855, 64, 0, {}),                 // empty piece
      frame(1, 0xfe000000, 101, 7855, 70000, 0, Bytes(65537)),    // longer than a frame
  };
  Bytes version = good;
  version[5] = 2;
  hostile.push_back(version);
  Bytes kind = good;
  kind[7] = 2;
  hostile.push_back(kind);
  for (const Bytes& packet : hostile) {
    CAPTURE(hex_of(
        {packet.begin(), packet.begin() + std::min<long>(32, static_cast<long>(packet.size()))}));
    Client client(daemon.socket());
    REQUIRE(client.send_packet(packet));
    CHECK(ended(client));
  }
  SUBCASE("a second message inside an unfinished one") {
    Client client(daemon.socket());
    REQUIRE(client.send_packet(frame(1, 0xfe000000, 101, 7855, 100, 0, Bytes(50))));
    REQUIRE(client.send_packet(frame(2, 0xfe000000, 101, 7855, 100, 50, Bytes(50))));
    CHECK(ended(client));
  }
  CHECK(tlv_status(*bystander.call(7855, vsan_info(1, 20))) == 0);
}

TEST_CASE("A message in many frames is one request; malformed ones get a status") {
  ScratchDirectory directory;
  DaemonProcess daemon(directory);
  Client client(daemon.socket());
  const auto reply = client.call(7865, Bytes(1024 * 1024, 0x5a));
  REQUIRE(reply.has_value());
  CHECK(tlv_status(*reply) == 0x40890001);
  const auto unknown = client.call(1, hex("11 22 33 44"));
  REQUIRE(unknown.has_value());
  CHECK(unknown->empty());
}

TEST_CASE("A lock dies with its connection") {
  ScratchDirectory directory;
  DaemonProcess daemon(directory);
  Client waiting(daemon.socket());
  REQUIRE(waiting.enable(20));
  {
    Client holder(daemon.socket());
    CHECK(host32_at(*holder.call(7874, lock_record(20, 1, 1), 103), 5) == 0);
    CHECK(host32_at(*holder.call(7874, lock_record(20, 1, 1), 103), 5) == 0x40890036);
    CHECK(host32_at(*waiting.call(7874, lock_record(20, 1, 1), 103), 5) == 0x40890029);
  }
  std::uint32_t status = 0x40890029;
  for (int i = 0; i < 400 && status == 0x40890029; ++i) {
    usleep(5000);
    status = host32_at(*waiting.call(7874, lock_record(20, 1, 1), 103), 5);
  }
  CHECK(status == 0);
}

TEST_CASE("A client that takes no replies is cut, and delays nobody") {
  ScratchDirectory directory;
  DaemonProcess daemon(directory, {"--max-queued", "65536"});
  Client brisk(daemon.socket());
  REQUIRE(brisk.enable(20));
  Client slow(daemon.socket());
  bool cut = false;
  for (int i = 0; i < 20000 && !cut; ++i) {
    cut = !slow.send(7855, vsan_info(1, 20));
    if (i % 100 != 0) continue;
    const auto before = std::chrono::steady_clock::now();
    REQUIRE(tlv_status(*brisk.call(7855, vsan_info(1, 20))) == 0);
    CHECK(std::chrono::steady_clock::now() - before < Milliseconds(2000));
  }
  CHECK(cut);
}

TEST_CASE("Clients above the limit are turned away until one leaves") {
  ScratchDirectory directory;
  DaemonProcess daemon(directory, {"--max-clients", "3"});
  usleep(100'000);  // the client that looked whether the daemon listens has left by then
  std::vector<std::unique_ptr<Client>> clients;
  for (int i = 0; i < 3; ++i) {
    clients.push_back(std::make_unique<Client>(daemon.socket()));
    REQUIRE(clients.back()->call(1, {}, 200).has_value());
  }
  Client fourth(daemon.socket());
  CHECK(ended(fourth));
  clients.pop_back();
  usleep(100'000);
  Client fifth(daemon.socket());
  CHECK(fifth.call(1, {}, 200).has_value());
}

TEST_CASE("A peer of another user is refused") {
  if (geteuid() != 0) return;  // only root can become somebody else
  ScratchDirectory directory;
  DaemonProcess daemon(directory);
  chmod(directory.path().c_str(), 0755);
  chmod(daemon.socket().c_str(), 0666);
  const pid_t child = start_child([&] {
    if (setuid(65534) != 0) return false;
    Client client(daemon.socket());
    return !client.connected() || !client.call(1, {}, 200).has_value();
  });
  int status = 0;
  waitpid(child, &status, 0);
  CHECK(WEXITSTATUS(status) == 0);
}

TEST_CASE("Embedded connections to one directory share one emulator") {
  ScratchDirectory directory;
  char error[256] = "";
  const std::string made = directory.path("new/place/");
  Client one(ficon::emulator::connect_embedded(made.c_str(), error, sizeof error));
  Client two(ficon::emulator::connect_embedded(made.c_str(), error, sizeof error));
  REQUIRE(one.connected());
  REQUIRE(two.connected());
  REQUIRE(one.enable(20));
  CHECK(tlv_status(*two.call(7855, vsan_info(1, 20))) == 0);
  CHECK(host32_at(*one.call(7874, lock_record(20, 1, 1), 103), 5) == 0);
  CHECK(host32_at(*two.call(7874, lock_record(20, 1, 1), 103), 5) == 0x40890029);
}

TEST_CASE("A daemon refuses the store of an embedded emulator") {
  ScratchDirectory directory;
  char error[256] = "";
  Client client(ficon::emulator::connect_embedded(directory.path().c_str(), error, sizeof error));
  REQUIRE(client.connected());
  DaemonProcess daemon(directory);
  CHECK_FALSE(daemon.running());
}

TEST_CASE("An embedded emulator refuses the store of another process with a sentence") {
  ScratchDirectory directory;
  DaemonProcess daemon(directory);
  char error[256] = "";
  CHECK(ficon::emulator::connect_embedded(directory.path().c_str(), error, sizeof error) == -1);
  CHECK(std::string(error).find("is in use by another process") != std::string::npos);
}
