/** A received reply of the reference transport: zeros behind its payload, its length known. */
#pragma once

#include <cstring>

#include "input.h"
#include "transport/message.h"

namespace ficon::fuzz {

class Received {
 public:
  explicit Received(ByteView payload) {
    message_.prepare(payload.size());
    if (!payload.empty()) std::memcpy(message_.room(), payload.data(), payload.size());
    message_.finish(payload.size());
  }

  mts_msg_ref_t* reply() { return &reference_; }
  void* payload() { return message_.payload(); }

 private:
  platform::Message message_;
  mts_msg_ref_t reference_{&message_};
};

}  // namespace ficon::fuzz
