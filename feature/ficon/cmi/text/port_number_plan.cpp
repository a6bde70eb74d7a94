#include "text/port_number_plan.h"

#include <platform/ficon_base.h>

namespace ficon {
namespace {

constexpr std::uint32_t kLogicalSlot = 0;

PortNumberPlan make_plan(const ficon_port_pn_entry_t* first, std::uint32_t size) {
  PortNumberPlan plan{};
  plan.size = size;
  for (std::uint16_t& number : plan.defaults) number = wire::kNoPort;
  while (plan.count < size && first[plan.count].port_number != wire::kNoPort) {
    plan.current[plan.count] = first[plan.count].port_number;
    ++plan.count;
  }
  return plan;
}

}  // namespace

PortNumberPlan logical_plan(const ficon_port_pn_entry_t* table) {
  PortNumberPlan plan = make_plan(table + wire::kFirstLogicalPort, wire::kLogicalPorts);
  ficon_get_default_pn(kLogicalSlot, 1, plan.defaults);
  return plan;
}

PortNumberPlan slot_plan(const ficon_port_pn_entry_t* table, std::uint32_t slot, std::uint8_t lc) {
  PortNumberPlan plan = make_plan(table + lc * wire::kPortsPerBlock, wire::kPortsPerBlock);
  ficon_get_default_pn(slot, 0, plan.defaults);
  return plan;
}

bool differs_from_defaults(const PortNumberPlan& plan) {
  for (std::uint32_t i = 0; i < plan.count; ++i) {
    if (plan.current[i] != plan.defaults[i]) return true;
  }
  return plan.count < plan.size && plan.defaults[plan.count] != wire::kNoPort;
}

NumberRanges removed_ranges(const PortNumberPlan& plan) {
  constexpr std::uint32_t kNumbers = 256;
  std::int32_t balance[kNumbers] = {};
  for (std::uint32_t i = 0; i < plan.size; ++i) {
    if (plan.defaults[i] < kNumbers) ++balance[plan.defaults[i]];
  }
  for (std::uint32_t i = 0; i < plan.count; ++i) {
    if (plan.current[i] < kNumbers) --balance[plan.current[i]];
  }
  std::uint16_t removed[wire::kLogicalPorts];
  std::uint32_t count = 0;
  for (std::uint16_t number = 0; number < kNumbers; ++number) {
    for (std::int32_t i = 0; i < balance[number]; ++i) removed[count++] = number;
  }
  return compress(removed, count);
}

}  // namespace ficon
