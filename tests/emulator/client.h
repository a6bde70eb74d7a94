/** A client that speaks frames byte by byte, as no library would let it. */
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ficon::test {

using Bytes = std::vector<std::uint8_t>;

/** "00 1f a0" and line breaks to bytes. */
Bytes hex(const std::string& text);
std::string hex_of(const Bytes& bytes);
Bytes operator+(const Bytes& a, const Bytes& b);
Bytes zeros(std::size_t count);
Bytes be32(std::uint32_t value);
Bytes host32(std::uint32_t value);

/** A VSAN configuration request: header fields, operation, and one byte of the record set. */
Bytes vsan_config(std::uint32_t requester, std::uint32_t operation, std::uint32_t vsan,
                  std::size_t offset = 0, const Bytes& value = {});
Bytes vsan_info(std::uint32_t message_type, std::uint32_t vsan);
Bytes ficon_state(std::uint32_t vsan, std::uint32_t state, std::uint32_t requester);
Bytes lock_record(std::uint32_t vsan, std::uint8_t operation, std::uint32_t requester);
/** An array of TLVs: its length in all, then each with type and length. */
Bytes tlv_array(const Bytes& tlvs);
/** The TLV that every file request begins with; `name` in EBCDIC, 8 bytes. */
struct FileAsked {
  std::uint32_t operation = 0;
  std::uint32_t vsan = 0;
  std::string name = "00 00 00 00 00 00 00 00";
  std::uint32_t key = 0;
  std::uint32_t data_offset = 0;
  std::string name2 = "00 00 00 00 00 00 00 00";
  std::uint32_t requester = 1;
  std::uint32_t message_type = 3;
};
Bytes file_tlv(const FileAsked& asked);
/** The status of a reply whose first TLV is the header. */
std::uint32_t tlv_status(const Bytes& reply);
std::uint32_t host32_at(const Bytes& bytes, std::size_t offset);
std::uint32_t be32_at(const Bytes& bytes, std::size_t offset);

class Client {
 public:
  explicit Client(const std::string& path);
  explicit Client(int fd) : fd_(fd) {}
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  bool connected() const { return fd_ >= 0; }
  int fd() const { return fd_; }
  /** One packet as it stands. */
  bool send_packet(const Bytes& packet);
  bool send(std::uint32_t opcode, const Bytes& payload, std::uint32_t sap = 101,
            std::uint32_t node = 0xfe000000);
  /** The next reply's payload, put together from its frames; null when the connection ended. */
  std::optional<Bytes> receive();
  std::optional<Bytes> call(std::uint32_t opcode, const Bytes& payload, std::uint32_t sap = 101);

  bool enable(std::uint32_t vsan);

 private:
  int fd_ = -1;
  std::uint32_t token_ = 0x11223344;
};

Bytes frame(std::uint32_t token, std::uint32_t node, std::uint32_t sap, std::uint32_t opcode,
            std::uint32_t total, std::uint32_t offset, const Bytes& piece);

}  // namespace ficon::test
