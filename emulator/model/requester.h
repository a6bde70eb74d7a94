/** Who asks: the requester code of a request and the connection it came on. */
#pragma once

#include <cstdint>

namespace ficon::emulator {

using ConnectionId = std::uint64_t;

enum class Requester : std::uint8_t {
  kUnknown = 0,
  kOperator = 1,
  kAgent = 2,
  kHost = 3,
  kUnstated = 4,  // a request whose record has no place for the code
};

/** The requester of a code; anything but 1 to 3 is unknown and may change nothing. */
constexpr Requester requester_from(std::uint32_t code) {
  return code >= 1 && code <= 3 ? static_cast<Requester>(code) : Requester::kUnknown;
}

struct Asker {
  ConnectionId connection = 0;
  Requester requester = Requester::kUnstated;
};

}  // namespace ficon::emulator
