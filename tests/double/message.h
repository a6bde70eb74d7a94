/** A message of the scripted transport. */
#pragma once

#include <algorithm>
#include <cstdlib>
#include <string>

#include "double/scripted_platform.h"

namespace ficon::test {

struct ScriptedPlatform::Message {
  Message(std::uint32_t its_token, bool is_request, std::string its_name)
      : token(its_token), request(is_request), what(std::move(its_name)) {}
  Message(const Message&) = delete;
  Message& operator=(const Message&) = delete;
  ~Message() { delete[] payload; }

  std::string described() const {
    return (request ? "request " : "reply ") + what + " token=" + std::to_string(token);
  }

  /** A block of the exact size, so that a read beyond it shows under a sanitizer. */
  void set_payload(const Bytes& bytes) {
    payload = new std::uint8_t[bytes.size()];
    std::copy(bytes.begin(), bytes.end(), payload);
  }

  bool released() const { return dropped || belongs_to_test || may_stay; }

  void drop() {
    delete[] payload;  // at once, so that a later look at it shows under a sanitizer
    payload = nullptr;
    dropped = true;
  }

  std::uint32_t token;
  bool request;
  std::string what;
  std::uint8_t* payload = nullptr;
  bool dropped = false;
  bool belongs_to_test = false;
  bool may_stay = false;
  bool lock_get = false;       // a reply that grants the lock once it is looked at
  bool enabled_vsans = false;  // a reply to the enabled-VSANs query
  Reply reply;                 // of a request: what its receives will find
};

}  // namespace ficon::test
