/** Interface indexes on the wire: the platform decides what their network order is. */
#pragma once

#include <platform/port_manager.h>

#include "wire/byte_order.h"

namespace ficon {

inline void set_interface(wire::be32& field, if_index_t if_index) {
  const if_index_t network = hton_if_index(if_index);
  __builtin_memcpy(field.raw, &network, sizeof network);
}

/** The field's bytes as they stand, for whichever of the platform's conversions applies. */
inline if_index_t stored_interface(const wire::be32& field) {
  if_index_t network;
  __builtin_memcpy(&network, field.raw, sizeof network);
  return network;
}

}  // namespace ficon
