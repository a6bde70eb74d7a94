/**
 * A connection of the daemon, its two ends on a socket pair: whatever packets come, a message stays
 * within the limit and is made of the pieces that came, and each reply arrives whole, in frames of
 * its own request, however late the client reads.
 *
 *   packets: a byte that is odd where a header is made up, its numbers, and a block each; behind a
 *   message the length of its reply, its factor, and whether the client reads at once
 */
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <deque>

#include "input.h"
#include "protocol/frame.h"
#include "server/connection.h"

using namespace ficon::fuzz;
using ficon::emulator::Connection;
using ficon::emulator::Message;
using ficon::platform::FrameHeader;
using ficon::platform::FrameKind;

namespace {

constexpr ficon::emulator::Limits kLimits{.queued_bytes = 600'000, .message_bytes = 3000};

/** A packet of the input: as it stands, or behind a header that begins well. */
Bytes next_packet(Input& input) {
  const bool with_header = (input.u8() & 1) != 0;
  if (!with_header) {
    const ByteView raw = input.block();
    return {raw.begin(), raw.end()};
  }
  FrameHeader header{};
  header.magic.set(ficon::platform::kFrameMagic);
  header.version.set(ficon::platform::kFrameVersion);
  header.kind.set(static_cast<std::uint16_t>(FrameKind::kRequest));
  header.token.set(input.u8());
  header.node.set(0xfe000000);
  header.sap.set(0x11223344);
  header.opcode.set(0x55667788);
  header.total.set(input.u16());
  header.offset.set(input.u16());
  Bytes packet = ficon::emulator::to_bytes(header);
  const ByteView piece = input.block();
  packet.insert(packet.end(), piece.begin(), piece.end());
  return packet;
}

/** Long enough to travel in several frames; no two pieces of it are alike. */
Bytes reply_to(const Message& request, Input& input) {
  const std::size_t length = input.u16();
  Bytes payload(length * (1 + input.u8() % 4U));
  for (std::size_t i = 0; i < payload.size(); ++i) {
    payload[i] = static_cast<std::uint8_t>(request.token + i + (i >> 8) * 3 + (i >> 16) * 7);
  }
  return payload;
}

class Client {
 public:
  explicit Client(int fd) : fd_(fd) {}
  ~Client() { close(fd_); }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  void send_packet(ByteView packet) {
    const ssize_t sent = send(fd_, packet.data(), packet.size(), MSG_DONTWAIT);
    require(sent == static_cast<ssize_t>(packet.size()), "a packet is sent");
  }
  void expect(const Message& reply) { expected_.push_back(reply); }
  bool expects_more() const { return !expected_.empty(); }

  /** Reads what has come so far. */
  void read_replies() {
    Bytes packet(sizeof(FrameHeader) + ficon::platform::kFramePayload + 1);
    for (;;) {
      const ssize_t size = recv(fd_, packet.data(), packet.size(), MSG_DONTWAIT);
      if (size < 0) return;
      require(size >= static_cast<ssize_t>(sizeof(FrameHeader)), "a frame has its header");
      require(size < static_cast<ssize_t>(packet.size()), "a frame carries no more than it may");
      take_frame(ByteView(packet).first(static_cast<std::size_t>(size)));
    }
  }

 private:
  void take_frame(ByteView frame) {
    const auto header = ficon::emulator::leading_record<FrameHeader>(frame);
    const ByteView piece = frame.subspan(sizeof header);
    require(expects_more(), "nothing comes that nobody asked for");
    const Message& reply = expected_.front();
    require(header.magic.get() == ficon::platform::kFrameMagic, "a frame is one");
    require(header.version.get() == ficon::platform::kFrameVersion, "of the client's version");
    require(header.kind.get() == static_cast<std::uint16_t>(FrameKind::kReply), "of a reply");
    require(header.token.get() == reply.token, "a reply has its request's token");
    require(header.node.get() == reply.node, "and its node");
    require(header.sap.get() == reply.sap, "and its SAP");
    require(header.opcode.get() == reply.opcode, "and its opcode");
    require(header.total.get() == reply.payload.size(), "a frame says how long the reply is");
    require(header.offset.get() == read_, "and goes on where the one before it ended");
    require(!piece.empty() || reply.payload.empty(), "a frame brings something");
    require(piece.size() <= reply.payload.size() - read_, "and no more than is left");
    require(std::ranges::equal(piece, ByteView(reply.payload).subspan(read_, piece.size())),
            "a reply arrives as it was made");
    read_ += piece.size();
    if (read_ < reply.payload.size()) return;
    expected_.pop_front();
    read_ = 0;
  }

  int fd_;
  std::deque<Message> expected_;
  std::size_t read_ = 0;  // of the first one's payload
};

void converse(Input& input, Connection& connection, Client& client) {
  Bytes buffer(sizeof(FrameHeader) + ficon::platform::kFramePayload);
  std::size_t received = 0;
  while (!input.empty()) {
    const Bytes packet = next_packet(input);
    if (packet.empty()) continue;  // would be the end
    client.send_packet(packet);
    Message message;
    const char* reason = nullptr;
    const auto read = connection.read(buffer, message, reason);
    if (read == Connection::Read::kBroken) return require(reason != nullptr, "a cut has a reason");
    require(read != Connection::Read::kClosed, "the client is there");
    received += packet.size() - sizeof(FrameHeader);
    if (read == Connection::Read::kNothing) continue;
    require(message.payload.size() <= kLimits.message_bytes, "a message stays within the limit");
    require(message.payload.size() == received, "a message is made of what was received");
    received = 0;
    message.payload = reply_to(message, input);
    client.expect(message);
    if (!connection.queue(std::move(message))) return;  // too much waits
    if ((input.u8() & 1) != 0) client.read_replies();
  }
  while (client.expects_more()) {
    client.read_replies();
    require(connection.flush(), "the client is there");
    client.read_replies();
  }
  require(!connection.has_waiting(), "what has arrived does not wait");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  int ends[2];
  require(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) == 0, "a socket pair");
  Connection connection(17, ends[0], kLimits);
  Client client(ends[1]);
  Input input({data, size});
  converse(input, connection, client);
  return 0;
}
