/** A request as a handler sees it, and what a handler answers. */
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <utility>
#include <variant>
#include <vector>

#include "model/requester.h"
#include "model/switch.h"
#include "wire/fcd_status.h"

namespace ficon::emulator {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

struct Request {
  ConnectionId connection = 0;
  std::uint32_t node = 0;
  std::uint32_t sap = 0;
  std::uint32_t opcode = 0;
  ByteView payload;

  Asker asker(std::uint32_t requester_code) const {
    return {connection, requester_from(requester_code)};
  }
};

/** The request is not well-formed; the reason goes to the log, kMalformed to the client. */
struct Malformed {
  const char* reason;
};

/** The client awaits no reply to this request; why it was refused, if it was, goes to the log. */
struct NoReply {
  FcdStatus status = FcdStatus::kDone;
};

/** A reply; or a status, which the route puts into the reply of its family. */
using Answer = std::variant<Bytes, FcdStatus, Malformed, NoReply>;

/** Applies one request to the model. */
using Handler = Answer (*)(const Request&, Switch&);

/** The reply of a family that carries nothing but a status; must accept any payload. */
using StatusReply = Bytes (*)(ByteView request, FcdStatus);

struct Route {
  std::uint32_t node;
  std::uint32_t sap;
  std::uint32_t opcode;
  const char* name;  // for the log
  Handler handle;
  StatusReply status_reply;
};

/** A record out of a payload of exactly its size; null otherwise. */
template <class Record>
const Record* whole_record(ByteView payload) {
  static_assert(alignof(Record) == 1);
  if (payload.size() != sizeof(Record)) return nullptr;
  return reinterpret_cast<const Record*>(payload.data());
}

/** As much of a record as the payload has, zeros behind it: for replies that echo their request. */
template <class Record>
Record leading_record(ByteView payload) {
  static_assert(alignof(Record) == 1);
  Record record{};
  const std::size_t length = std::min(payload.size(), sizeof(Record));
  std::copy_n(payload.data(), length, reinterpret_cast<std::uint8_t*>(&record));
  return record;
}

template <class Record>
Bytes to_bytes(const Record& record) {
  static_assert(alignof(Record) == 1);
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(&record);
  return Bytes(bytes, bytes + sizeof(Record));
}

template <class Record>
void append(Bytes& bytes, const Record& record) {
  static_assert(alignof(Record) == 1);
  const auto* begin = reinterpret_cast<const std::uint8_t*>(&record);
  bytes.insert(bytes.end(), begin, begin + sizeof(Record));
}

}  // namespace ficon::emulator
