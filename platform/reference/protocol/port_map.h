/** One step of a walk over the port map, FiconBaseOpcode::kPortmap. All numbers are big-endian. */
#pragma once

#include "protocol/services.h"

namespace ficon::platform {

struct PortmapRequest {
  wire::be32 type;        // 1 exactly these keys, 2 the next after them
  std::uint8_t selector;  // passed through
  wire::bytes<3> spare;
  wire::be32 if_index;     // 0 none
  wire::be16 port_number;  // 512 none
  wire::be16 port_address;
};
static_assert(wire::is_packed<PortmapRequest, 16>);

struct PortmapReply {
  wire::be32 status;
  wire::be32 if_index;
  wire::be16 port_number;
  wire::be16 port_address;
};
static_assert(wire::is_packed<PortmapReply, 12>);

}  // namespace ficon::platform
