/** A daemon in the test's own hands: it listens, and sends and receives packets byte for byte. */
#pragma once

#include <transport/endpoint.h>

#include <cstdint>
#include <string>
#include <vector>

namespace ficon::test {

using Bytes = std::vector<std::uint8_t>;

/** Bytes from hexadecimal digits; blanks do not count. */
Bytes hex(const std::string& digits);

/** The head of a reply frame, written out here and not through the transport's own struct. */
Bytes reply_head(std::uint32_t token, std::uint32_t total, std::uint32_t offset = 0);
Bytes operator+(Bytes a, const Bytes& b);

class FakeDaemon {
 public:
  FakeDaemon();
  FakeDaemon(const FakeDaemon&) = delete;
  FakeDaemon& operator=(const FakeDaemon&) = delete;
  ~FakeDaemon();

  std::string endpoint() const { return "unix:" + path_; }

  void listen();
  /** As if the process ended: nobody listens, the connection is closed. */
  void die();
  void accept();

  /** The next packet of the client; empty when it has closed or says nothing for long. */
  Bytes receive();
  void send(const Bytes& packet);
  void reply(std::uint32_t token, const Bytes& payload) {
    send(reply_head(token, static_cast<std::uint32_t>(payload.size())) + payload);
  }

 private:
  std::string directory_;
  std::string path_;
  int listener_ = -1;
  int peer_ = -1;
};

/** A handle that is closed at the end of the test. */
class Handle {
 public:
  explicit Handle(const std::string& endpoint)
      : handle_(ficon_mts_open(endpoint.c_str(), nullptr, 0)) {}
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() { ficon_mts_close(handle_); }
  operator mts_handle_t() const { return handle_; }

 private:
  mts_handle_t handle_;
};

}  // namespace ficon::test
