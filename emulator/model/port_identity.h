/** What stands behind a port address: the FICON port number and the interface, where there are. */
#pragma once

#include <cstdint>

#include "wire/port_plan.h"

namespace ficon::emulator {

using wire::kNoPort;

struct PortIdentity {
  std::uint16_t port_number = kNoPort;
  std::uint32_t if_index = 0;  // 0: no interface
  bool installed = false;
};

}  // namespace ficon::emulator
