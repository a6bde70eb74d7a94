/** How much clients may take of the emulator. */
#pragma once

#include <cstddef>

#include "protocol/frame.h"

namespace ficon::emulator {

struct Limits {
  std::size_t clients = 256;
  std::size_t queued_bytes = 4 * platform::kMaxMessage;  // replies that one client has not taken
  std::size_t message_bytes = platform::kMaxMessage;     // one request
};

}  // namespace ficon::emulator
