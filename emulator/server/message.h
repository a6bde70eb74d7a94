/** One message of a connection, out of its frames. */
#pragma once

#include <cstdint>

#include "handlers/request.h"

namespace ficon::emulator {

struct Message {
  std::uint32_t token = 0;
  std::uint32_t node = 0;
  std::uint32_t sap = 0;
  std::uint32_t opcode = 0;
  Bytes payload;
};

}  // namespace ficon::emulator
