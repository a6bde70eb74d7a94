#include <doctest/doctest.h>
#include <platform/mts.h>
#include <signal.h>
#include <sys/time.h>

#include <chrono>
#include <thread>

#include "fake_daemon.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kNode = 0xfe000000;
constexpr std::uint32_t kSap = 101;
constexpr std::uint32_t kOpcode = 7855;

/** Sends and drops the request; its token. 0 when the send fails. */
std::uint32_t send(mts_handle_t handle, const Bytes& payload) {
  const mts_send_opts_t options{{1, 1}};
  mts_msg_ref_t request{};
  if (mts_send(handle, kNode, kSap, kOpcode, payload.data(),
               static_cast<std::uint32_t>(payload.size()), &request, 0, &options) != 0) {
    return 0;
  }
  const std::uint32_t token = mts_rr_token_get(&request);
  CHECK(mts_drop(handle, &request) == 0);
  return token;
}

std::int32_t receive(mts_handle_t handle, std::uint32_t token, std::uint32_t wait,
                     mts_msg_ref_t* reply) {
  const mts_recv_opts_t options{{1, 0, wait, token}};
  return mts_recv(handle, reply, &options);
}

/** The error number of a receive that must fail. */
std::int32_t receive_error(mts_handle_t handle, std::uint32_t token, std::uint32_t wait) {
  mts_msg_ref_t reply{};
  REQUIRE(receive(handle, token, wait, &reply) == -1);
  return mts_errno_get(handle);
}

/** The first `size` bytes at the reply's payload, the message dropped. */
Bytes received(mts_handle_t handle, std::uint32_t token, std::size_t size) {
  mts_msg_ref_t reply{};
  REQUIRE(receive(handle, token, 1000, &reply) == 0);
  const auto* payload = static_cast<const std::uint8_t*>(mts_payload_get(&reply));
  REQUIRE(payload != nullptr);
  Bytes bytes(payload, payload + size);
  CHECK(mts_drop(handle, &reply) == 0);
  return bytes;
}

struct Connected {
  FakeDaemon daemon;
  Handle handle{daemon.endpoint()};
  std::uint32_t token = 0;  // of the request that made the connection

  Connected() {
    daemon.listen();
    token = send(handle, hex("11"));
    daemon.accept();
    daemon.receive();
  }
};

Bytes pattern(std::size_t size) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
  return bytes;
}

}  // namespace

TEST_CASE("transport: a request is one packet, its head as documented") {
  FakeDaemon daemon;
  daemon.listen();
  Handle handle(daemon.endpoint());
  const std::uint32_t token = send(handle, hex("11223344 55"));
  CHECK(token == 1);
  daemon.accept();
  CHECK(daemon.receive() == hex("46434d49 0001 0001 00000001 fe000000 00000065 00001eaf 00000005"
                                "00000000 11223344 55"));
  daemon.reply(token, hex("a1b2c3"));
  CHECK(received(handle, token, 3) == hex("a1b2c3"));
}

TEST_CASE("transport: replies reach their own receivers, in whatever order they come") {
  Connected peer;
  const std::uint32_t second = send(peer.handle, hex("22"));
  peer.daemon.reply(second, hex("0202"));
  peer.daemon.reply(peer.token, hex("0101"));
  CHECK(received(peer.handle, peer.token, 2) == hex("0101"));
  CHECK(received(peer.handle, second, 2) == hex("0202"));
}

TEST_CASE("transport: a second reply to the same request is nobody's") {
  Connected peer;
  const std::uint32_t second = send(peer.handle, hex("22"));
  peer.daemon.reply(second, hex("0202"));
  peer.daemon.reply(second, hex("0303"));
  peer.daemon.reply(peer.token, hex("0101"));
  CHECK(received(peer.handle, peer.token, 2) == hex("0101"));
  CHECK(received(peer.handle, second, 2) == hex("0202"));
  CHECK(receive_error(peer.handle, second, 0) == 22);
}

TEST_CASE("transport: when the wait runs out the error is 62, and not before") {
  Connected peer;
  const auto start = std::chrono::steady_clock::now();
  CHECK(receive_error(peer.handle, peer.token, 60) == 62);
  const auto passed = std::chrono::steady_clock::now() - start;
  CHECK(passed >= std::chrono::milliseconds(60));
  CHECK(passed < std::chrono::seconds(5));
}

TEST_CASE("transport: replies to others do not prolong a wait") {
  Connected peer;
  std::thread chatter([&] {
    for (int i = 0; i < 20; ++i) {
      peer.daemon.reply(0x7777, hex("ff"));
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  });
  const auto start = std::chrono::steady_clock::now();
  CHECK(receive_error(peer.handle, peer.token, 100) == 62);
  CHECK(std::chrono::steady_clock::now() - start < std::chrono::milliseconds(350));
  chatter.join();
}

TEST_CASE("transport: a late reply is never given to a later call") {
  Connected peer;
  CHECK(receive_error(peer.handle, peer.token, 5) == 62);
  const std::uint32_t second = send(peer.handle, hex("22"));
  peer.daemon.reply(peer.token, hex("0101"));
  peer.daemon.reply(second, hex("0202"));
  CHECK(received(peer.handle, second, 2) == hex("0202"));
  CHECK(receive_error(peer.handle, peer.token, 0) == 22);
}

TEST_CASE("transport: a signal interrupts with error 4, and the call can go on") {
  Connected peer;
  struct sigaction action {};
  action.sa_handler = [](int) {};
  struct sigaction before {};
  sigaction(SIGALRM, &action, &before);
  const itimerval soon{{0, 0}, {0, 20'000}};
  setitimer(ITIMER_REAL, &soon, nullptr);
  CHECK(receive_error(peer.handle, peer.token, 5000) == 4);
  sigaction(SIGALRM, &before, nullptr);
  peer.daemon.reply(peer.token, hex("0101"));
  CHECK(received(peer.handle, peer.token, 2) == hex("0101"));
}

TEST_CASE("transport: an absent daemon is error 32 at once; the handle works when it is there") {
  FakeDaemon daemon;
  Handle handle(daemon.endpoint());
  CHECK(send(handle, hex("11")) == 0);
  CHECK(mts_errno_get(handle) == 32);
  daemon.listen();
  const std::uint32_t token = send(handle, hex("11"));
  REQUIRE(token != 0);
  daemon.accept();
  daemon.reply(token, hex("0101"));
  CHECK(received(handle, token, 2) == hex("0101"));
}

TEST_CASE("transport: a daemon that goes away ends the wait with error 32") {
  Connected peer;
  std::thread end([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    peer.daemon.die();
  });
  CHECK(receive_error(peer.handle, peer.token, 0) == 32);
  end.join();
  CHECK(send(peer.handle, hex("22")) == 0);
  CHECK(mts_errno_get(peer.handle) == 32);
}

TEST_CASE("transport: after a restart the next send connects again; older requests are lost") {
  Connected peer;
  peer.daemon.die();
  peer.daemon.listen();
  const std::uint32_t second = send(peer.handle, hex("22"));
  REQUIRE(second != 0);
  peer.daemon.accept();
  CHECK(receive_error(peer.handle, peer.token, 0) == 32);  // without this it would wait for ever
  peer.daemon.reply(second, hex("0202"));
  CHECK(received(peer.handle, second, 2) == hex("0202"));
}

TEST_CASE("transport: a reply kept before the daemon went away is still delivered") {
  Connected peer;
  const std::uint32_t second = send(peer.handle, hex("22"));
  peer.daemon.receive();
  peer.daemon.reply(second, hex("0202"));
  peer.daemon.die();
  CHECK(receive_error(peer.handle, peer.token, 0) == 32);
  CHECK(received(peer.handle, second, 2) == hex("0202"));
}

TEST_CASE("transport: 1 MiB goes through in frames, both ways") {
  FakeDaemon daemon;
  daemon.listen();
  Handle handle(daemon.endpoint());
  const Bytes message = pattern(1024 * 1024);
  Bytes arrived;
  std::uint32_t frames = 0;
  std::thread echo([&] {
    daemon.accept();
    for (; arrived.size() < message.size(); ++frames) {
      const Bytes frame = daemon.receive();
      REQUIRE(frame.size() > 32);
      CHECK(Bytes(frame.begin() + 24, frame.begin() + 28) == hex("00100000"));
      arrived.insert(arrived.end(), frame.begin() + 32, frame.end());
    }
    for (std::size_t offset = 0; offset < message.size(); offset += 50'000) {
      const std::size_t end = std::min(offset + 50'000, message.size());
      daemon.send(reply_head(1, 0x100000, static_cast<std::uint32_t>(offset)) +
                  Bytes(message.begin() + static_cast<std::ptrdiff_t>(offset),
                        message.begin() + static_cast<std::ptrdiff_t>(end)));
    }
  });
  const std::uint32_t token = send(handle, message);
  CHECK(token == 1);
  const Bytes back = received(handle, token, message.size() + 4096);
  echo.join();
  CHECK(frames == 16);
  CHECK(arrived == message);
  CHECK(Bytes(back.begin(), back.begin() + 1024 * 1024) == message);
  CHECK(Bytes(back.begin() + 1024 * 1024, back.end()) == Bytes(4096));
}

TEST_CASE("transport: more than 1 MiB is refused with error 90, and nothing is sent") {
  Connected peer;
  CHECK(send(peer.handle, Bytes(1024 * 1024 + 1)) == 0);
  CHECK(mts_errno_get(peer.handle) == 90);
  const std::uint32_t next = send(peer.handle, hex("22"));
  CHECK(peer.daemon.receive().size() == 33);
  peer.daemon.reply(next, hex("0202"));
  CHECK(received(peer.handle, next, 2) == hex("0202"));
}

TEST_CASE("transport: zeros stand behind a payload, also where a longer one was before") {
  Connected peer;
  peer.daemon.reply(peer.token, Bytes(60'000, 0xee));
  received(peer.handle, peer.token, 60'000);
  const std::uint32_t second = send(peer.handle, hex("22"));
  peer.daemon.reply(second, hex("aabb"));
  CHECK(received(peer.handle, second, 65'536) == hex("aabb") + Bytes(65'534));
}

TEST_CASE("transport: a reply without payload has none") {
  Connected peer;
  peer.daemon.reply(peer.token, {});
  mts_msg_ref_t reply{};
  REQUIRE(receive(peer.handle, peer.token, 1000, &reply) == 0);
  CHECK(mts_payload_get(&reply) == nullptr);
  CHECK(mts_drop(peer.handle, &reply) == 0);
}

TEST_CASE("transport: what is no frame of a reply ends the connection with error 71") {
  const Bytes good = reply_head(1, 2) + hex("0101");
  std::vector<std::pair<const char*, std::vector<Bytes>>> packets = {
      {"short head", {Bytes(good.begin(), good.begin() + 31)}},
      {"magic", {hex("46434d48 0001 0002 00000001") + Bytes(12) + hex("00000002 00000000 0101")}},
      {"version", {hex("46434d49 0002 0002 00000001") + Bytes(12) + hex("00000002 00000000 0101")}},
      {"a request", {hex("46434d49 0001 0001 00000001") + Bytes(12) + hex("00000002 00000000 01")}},
      {"total above 1 MiB", {reply_head(1, 0x100001) + hex("0101")}},
      {"begins in the middle", {reply_head(1, 10, 2) + hex("0101")}},
      {"offset that wraps", {reply_head(1, 10, 0xfffffffe) + hex("0101")}},
      {"more than the total", {reply_head(1, 1) + hex("0101")}},
      {"a piece without bytes", {reply_head(1, 2)}},
      {"too long a packet", {reply_head(1, 70'000) + Bytes(65'537, 0xee)}},
      {"other token in between", {reply_head(1, 4) + hex("0101"), reply_head(2, 4, 2) + hex("01")}},
      {"total that changes", {reply_head(1, 4) + hex("0101"), reply_head(1, 9, 2) + hex("0101")}},
      {"the same piece twice", {reply_head(1, 4) + hex("0101"), reply_head(1, 4) + hex("0101")}},
  };
  for (const auto& packet : packets) {
    CAPTURE(packet.first);
    Connected peer;
    for (const Bytes& frame : packet.second) peer.daemon.send(frame);
    CHECK(receive_error(peer.handle, peer.token, 1000) == 71);
    const std::uint32_t next = send(peer.handle, hex("22"));
    REQUIRE(next != 0);
    peer.daemon.accept();
    peer.daemon.reply(next, hex("a2"));
    CHECK(received(peer.handle, next, 65'537) == hex("a2") + Bytes(65'536));
  }
}

TEST_CASE("transport: drops of what is no message are refused") {
  Connected peer;
  mts_msg_ref_t none{};
  CHECK(mts_drop(peer.handle, &none) == -1);
  peer.daemon.reply(peer.token, hex("0101"));
  mts_msg_ref_t reply{};
  REQUIRE(receive(peer.handle, peer.token, 1000, &reply) == 0);
  mts_msg_ref_t copy = reply;
  CHECK(mts_drop(peer.handle, &reply) == 0);
  CHECK(mts_drop(peer.handle, &copy) == -1);
  CHECK(mts_errno_get(peer.handle) == 22);
}

TEST_CASE("transport: without a handle there is an error, not a crash") {
  mts_msg_ref_t message{};
  CHECK(mts_send(nullptr, kNode, kSap, kOpcode, nullptr, 0, &message, 0, nullptr) < 0);
  CHECK(receive(nullptr, 1, 0, &message) != 0);
  CHECK(mts_errno_get(nullptr) == 9);
}

TEST_CASE("transport: many requests without a receiver are forgotten, the newest are not") {
  Connected peer;
  std::uint32_t token = peer.token;
  for (int i = 0; i < 3000; ++i) {
    token = send(peer.handle, hex("33"));
    REQUIRE(token != 0);
    peer.daemon.receive();
  }
  CHECK(receive_error(peer.handle, peer.token, 0) == 22);
  peer.daemon.reply(token, hex("0303"));
  CHECK(received(peer.handle, token, 2) == hex("0303"));
}

TEST_CASE("endpoints: each wrong one gets a sentence") {
  char error[512];
  for (const char* endpoint : {"", "unix:", "embedded:", "tcp:host", "/tmp/socket"}) {
    CAPTURE(endpoint);
    CHECK(ficon_mts_open(endpoint, error, sizeof error) == nullptr);
    CHECK(std::string(error).find("is no endpoint") != std::string::npos);
  }
  const std::string long_path = "unix:/" + std::string(107, 'x');
  CHECK(ficon_mts_open(long_path.c_str(), error, sizeof error) == nullptr);
  CHECK(std::string(error).find("107") != std::string::npos);
  CHECK(ficon_mts_open("embedded:/tmp/nowhere", error, sizeof error) == nullptr);
  CHECK(std::string(error).find("unix:PATH") != std::string::npos);
}

TEST_CASE("observer: sees requests, replies and failed receives") {
  Connected peer;
  std::vector<ficon_mts_event_t> events;
  ficon_mts_observe(
      peer.handle,
      [](const ficon_mts_event_t* event, void* context) {
        static_cast<std::vector<ficon_mts_event_t>*>(context)->push_back(*event);
      },
      &events);
  const std::uint32_t token = send(peer.handle, hex("112233"));
  peer.daemon.reply(token, hex("0202"));
  received(peer.handle, token, 2);
  const std::uint32_t lost = send(peer.handle, hex("44"));
  CHECK(receive_error(peer.handle, lost, 5) == 62);
  REQUIRE(events.size() == 4);
  CHECK(events[0].reply == 0);
  CHECK(events[0].opcode == kOpcode);
  CHECK(events[0].length == 3);
  CHECK(events[1].reply == 1);
  CHECK(events[1].token == token);
  CHECK(events[1].length == 2);
  CHECK(events[1].error == 0);
  CHECK(events[1].elapsed_us < 5'000'000);
  CHECK(events[3].reply == 1);
  CHECK(events[3].token == lost);
  CHECK(events[3].error == 62);
}
