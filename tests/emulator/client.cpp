#include "client.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <sstream>

namespace ficon::test {

Bytes hex(const std::string& text) {
  Bytes bytes;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(word, nullptr, 16)));
  }
  return bytes;
}

std::string hex_of(const Bytes& bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02x ", byte);
    text += digits;
  }
  return text;
}

Bytes operator+(const Bytes& a, const Bytes& b) {
  Bytes both = a;
  both.insert(both.end(), b.begin(), b.end());
  return both;
}

Bytes zeros(std::size_t count) {
  return Bytes(count);
}

Bytes be32(std::uint32_t value) {
  return {static_cast<std::uint8_t>(value >> 24), static_cast<std::uint8_t>(value >> 16),
          static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
}

Bytes host32(std::uint32_t value) {
  Bytes bytes(4);
  std::memcpy(bytes.data(), &value, 4);
  return bytes;
}

std::uint32_t host32_at(const Bytes& bytes, std::size_t offset) {
  std::uint32_t value = 0;
  std::memcpy(&value, bytes.data() + offset, 4);
  return value;
}

std::uint32_t be32_at(const Bytes& bytes, std::size_t offset) {
  return std::uint32_t{bytes[offset]} << 24 | std::uint32_t{bytes[offset + 1]} << 16 |
         std::uint32_t{bytes[offset + 2]} << 8 | bytes[offset + 3];
}

Bytes vsan_config(std::uint32_t requester, std::uint32_t operation, std::uint32_t vsan,
                  std::size_t offset, const Bytes& value) {
  Bytes record = be32(vsan) + zeros(1343);
  for (std::size_t i = 0; i < value.size(); ++i) record[offset + i] = value[i];
  return hex("00 00 05 cf") +                                        // 4 + 4 + 128 + 4 + 1347
         hex("00 0c 00 80") + be32(3) + be32(16) + zeros(104) +      // header: set, VSAN
         be32(requester) + be32(operation) + be32(vsan) + be32(0) +  //
         hex("00 02 05 43") + record;
}

Bytes vsan_info(std::uint32_t message_type, std::uint32_t vsan) {
  return hex("00 00 00 88 00 0c 00 80") + be32(message_type) + be32(16) + zeros(104) + be32(0) +
         be32(0) + be32(vsan) + be32(0);
}

Bytes ficon_state(std::uint32_t vsan, std::uint32_t state, std::uint32_t requester) {
  return be32(3) + be32(16) + zeros(104) + be32(vsan) + host32(state) + be32(0) + be32(requester);
}

Bytes lock_record(std::uint32_t vsan, std::uint8_t operation, std::uint32_t requester) {
  return host32(vsan) + Bytes{operation} + zeros(4) + host32(requester) + zeros(5);
}

Bytes tlv_array(const Bytes& tlvs) {
  return be32(static_cast<std::uint32_t>(4 + tlvs.size())) + tlvs;
}

Bytes file_tlv(const FileAsked& asked) {
  return hex("00 06 00 9e") + be32(asked.message_type) + be32(46) + zeros(104) +
         be32(asked.requester) + be32(asked.operation) + be32(asked.vsan) + hex(asked.name) +
         zeros(1) + host32(asked.key) + be32(asked.data_offset) + zeros(4 + 4) + hex(asked.name2) +
         zeros(1);
}

std::uint32_t tlv_status(const Bytes& reply) {
  return reply.size() < 136 ? 0xffffffff : host32_at(reply, 4 + 4 + 124);
}

Bytes frame(std::uint32_t token, std::uint32_t node, std::uint32_t sap, std::uint32_t opcode,
            std::uint32_t total, std::uint32_t offset, const Bytes& piece) {
  return hex("46 43 4d 49 00 01 00 01") + be32(token) + be32(node) + be32(sap) + be32(opcode) +
         be32(total) + be32(offset) + piece;
}

Client::Client(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  fd_ = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  const timeval patience{20, 0};  // a test that hangs says so
  setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  if (connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    close(fd_);
    fd_ = -1;
  }
}

Client::~Client() {
  if (fd_ >= 0) close(fd_);
}

bool Client::send_packet(const Bytes& packet) {
  return ::send(fd_, packet.data(), packet.size(), MSG_NOSIGNAL) >= 0;
}

bool Client::send(std::uint32_t opcode, const Bytes& payload, std::uint32_t sap,
                  std::uint32_t node) {
  constexpr std::size_t kPiece = 65536;
  ++token_;
  const auto total = static_cast<std::uint32_t>(payload.size());
  std::size_t sent = 0;
  do {
    const std::size_t size = std::min(kPiece, payload.size() - sent);
    const auto from = payload.begin() + static_cast<std::ptrdiff_t>(sent);
    const Bytes piece(from, from + static_cast<std::ptrdiff_t>(size));
    if (!send_packet(
            frame(token_, node, sap, opcode, total, static_cast<std::uint32_t>(sent), piece))) {
      return false;
    }
    sent += size;
  } while (sent < payload.size());
  return true;
}

std::optional<Bytes> Client::receive() {
  Bytes payload;
  for (;;) {
    Bytes packet(32 + 65536);
    const ssize_t size = recv(fd_, packet.data(), packet.size(), 0);
    if (size < 32) return std::nullopt;
    packet.resize(static_cast<std::size_t>(size));
    payload.insert(payload.end(), packet.begin() + 32, packet.end());
    if (payload.size() == be32_at(packet, 24)) return payload;
  }
}

std::optional<Bytes> Client::call(std::uint32_t opcode, const Bytes& payload, std::uint32_t sap) {
  if (!send(opcode, payload, sap)) return std::nullopt;
  return receive();
}

bool Client::enable(std::uint32_t vsan) {
  const auto feature = call(1, hex("66 69 63 6f 6e") + zeros(27), 201);
  const auto state = call(7853, ficon_state(vsan, 1, 1));
  return feature && state && state->size() == 128 && host32_at(*state, 120) == 0;
}

}  // namespace ficon::test
