/** Which port numbers a slot or the logical ports have now, beside those they have by default. */
#pragma once

#include <ficon_cmi.h>

#include "text/number_ranges.h"
#include "wire/saved_config.h"

namespace ficon {

struct PortNumberPlan {
  std::uint16_t defaults[wire::kLogicalPorts];
  std::uint16_t current[wire::kLogicalPorts];
  std::uint32_t size;   // positions of the slot or of the logical ports
  std::uint32_t count;  // current numbers in front of the first position without one
};

PortNumberPlan logical_plan(const ficon_port_pn_entry_t* table);
/** Of the module with index `lc`, which sits in `slot`. */
PortNumberPlan slot_plan(const ficon_port_pn_entry_t* table, std::uint32_t slot, std::uint8_t lc);

bool differs_from_defaults(const PortNumberPlan& plan);

inline NumberRanges current_ranges(const PortNumberPlan& plan) {
  return compress(plan.current, plan.count);
}
/** The default numbers below 256 that are no longer assigned. */
NumberRanges removed_ranges(const PortNumberPlan& plan);

}  // namespace ficon
