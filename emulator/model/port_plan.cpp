#include "model/port_plan.h"

#include <algorithm>

#include "interface_index/interface_index.h"

namespace ficon::emulator {
namespace {

using platform::Chassis;
using platform::InterfaceType;
using platform::Module;

std::string text_of(std::uint32_t number) {
  return std::to_string(number);
}

}  // namespace

std::string text_of(const PortNumberRange& range) {
  const std::string first = text_of(range.first);
  return range.first == range.last ? first : first + "-" + text_of(range.last);
}

std::string name_of(NumberOwner owner) {
  return owner == kLogicalPorts ? "the logical ports" : "module " + text_of(owner);
}

PortPlan::PortPlan(const Chassis& chassis) : chassis_(&chassis) {
  clear();
  const auto take = [&](NumberOwner owner, const std::vector<PortNumber>& numbers) {
    std::uint32_t position = positions_of(owner).first;
    for (const PortNumber number : numbers) {
      if (!is_number(number)) continue;
      owners_[number] = owner;
      numbers_[position++] = number;
    }
  };
  for (const Module& module : chassis.modules) {
    take(module.number, default_port_numbers(chassis, module));
  }
  take(kLogicalPorts, platform::default_logical_port_numbers());
  for (std::uint32_t a = 0; a <= kLastUsablePortAddress; ++a) {
    if (is_number(a)) by_address_[a] = static_cast<PortNumber>(a);
  }
}

void PortPlan::clear() {
  numbers_.fill(kNoPort);
  by_address_.fill(kNoPort);
  owners_.fill(kNobody);
  logical_.clear();
}

std::optional<std::uint32_t> PortPlan::position_of(std::uint32_t number) const {
  const auto owner = owner_of(number);
  return owner ? position_within(*owner, number) : std::nullopt;
}

std::optional<std::uint32_t> PortPlan::position_within(NumberOwner owner,
                                                       std::uint32_t number) const {
  const auto block = positions_of(owner);
  for (std::uint32_t p = block.first; p < block.first + block.count; ++p) {
    if (numbers_[p] == number) return p;
  }
  return std::nullopt;
}

std::uint16_t PortPlan::address_of(std::uint32_t number) const {
  if (number == kNoPort) return kNoPort;
  const auto* found = std::find(by_address_.begin(), by_address_.end(), number);
  return found == by_address_.end() ? kNoPort
                                    : static_cast<std::uint16_t>(found - by_address_.begin());
}

std::optional<NumberOwner> PortPlan::owner_of(std::uint32_t number) const {
  if (!is_number(number)) return std::nullopt;
  return owners_[number] == kNobody ? std::nullopt : std::optional(owners_[number]);
}

std::vector<PortNumberRange> PortPlan::reserved_for(NumberOwner owner) const {
  std::vector<PortNumberRange> ranges;
  for (std::uint32_t number = 0; number < owners_.size(); ++number) {
    if (owners_[number] != owner) continue;
    if (!ranges.empty() && ranges.back().last + 1 == number) {
      ranges.back().last = number;
    } else {
      ranges.push_back({number, number});
    }
  }
  return ranges;
}

std::vector<PortNumber> PortPlan::numbers() const {
  std::vector<PortNumber> list;
  for (std::uint32_t number = 0; number < owners_.size(); ++number) {
    if (owners_[number] != kNobody) list.push_back(static_cast<PortNumber>(number));
  }
  return list;
}

if_index_t PortPlan::interface_of(std::uint32_t number) const {
  const auto owner = owner_of(number);
  if (!owner) return 0;
  if (*owner == kLogicalPorts) {
    const auto bound = logical_.find(static_cast<PortNumber>(number));
    return bound == logical_.end() ? 0 : bound->second;
  }
  const auto position = position_within(*owner, number);
  const Module* module = chassis_->module(*owner);
  if (!position || module == nullptr) return 0;
  const std::uint32_t port = *position % wire::kPortsPerModule;
  if (port >= module->ports.size()) return 0;
  return platform::interface_index(platform::fibre_channel_port(module->slot - 1, port));
}

std::vector<if_index_t> PortPlan::interfaces_by_number() const {
  std::vector<if_index_t> interfaces(rows());
  for (const Module& module : chassis_->modules) {
    const std::uint32_t first = positions_of(module.number).first;
    for (std::uint32_t port = 0; port < module.ports.size(); ++port) {
      const PortNumber number = numbers_[first + port];
      if (number == kNoPort) continue;
      interfaces[number] =
          platform::interface_index(platform::fibre_channel_port(module.slot - 1, port));
    }
  }
  for (const auto& [number, if_index] : logical_) interfaces[number] = if_index;
  return interfaces;
}

std::optional<std::uint32_t> PortPlan::position_of_interface(if_index_t if_index) const {
  const auto interface = platform::interface_of(if_index);
  if (!interface || interface->type != InterfaceType::kFibreChannel) return std::nullopt;
  const Module* module = chassis_->module_in_slot(interface->slot + 1);
  if (module == nullptr || interface->number >= module->ports.size()) return std::nullopt;
  return positions_of(module->number).first + interface->number;
}

PortNumber PortPlan::number_of_interface(if_index_t if_index) const {
  if (const auto position = position_of_interface(if_index)) return numbers_[*position];
  for (const auto& [number, bound] : logical_) {
    if (bound == if_index) return number;
  }
  return kNoPort;
}

PlanVerdict PortPlan::check_owner(NumberOwner owner) const {
  if (owner <= kModules) return {};
  return {FcdStatus::kNoSuchModule, "there is no module " + text_of(owner)};
}

PlanVerdict PortPlan::check_ranges(NumberOwner owner,
                                   const std::vector<PortNumberRange>& ranges) const {
  std::map<std::uint32_t, PortNumberRange> seen;
  for (const PortNumberRange& range : ranges) {
    if (range.first > range.last) {
      return {FcdStatus::kBadPortNumberRange, "range " + text_of(range) + " ends before it begins"};
    }
    for (std::uint32_t number = range.first; number <= range.last; ++number) {
      const std::string what = "port number " + text_of(number) + " ";
      if (number == kControlUnitPort) {
        return {FcdStatus::kControlUnitPort, what + "belongs to the control unit port"};
      }
      if (!is_number(number)) {
        return {FcdStatus::kPortNumberOutOfRange,
                what + "is beyond the port numbers of this switch, 0 to " + text_of(rows() - 1)};
      }
      if (const auto [other, fresh] = seen.try_emplace(number, range); !fresh) {
        return {
            FcdStatus::kBadPortNumberRange,
            what + "stands in two ranges, " + text_of(other->second) + " and " + text_of(range)};
      }
      if (const auto whose = owner_of(number); whose && *whose != owner) {
        return {FcdStatus::kPortNumberTaken, what + "is reserved for " + name_of(*whose)};
      }
    }
  }
  const std::uint32_t room = positions_of(owner).count;
  if (seen.size() <= room) return {};
  return {FcdStatus::kBadPortNumberRange, text_of(static_cast<std::uint32_t>(seen.size())) +
                                              " port numbers are more than the " + text_of(room) +
                                              " positions of " + name_of(owner)};
}

void PortPlan::take_away(PortNumber number) {
  if (const auto position = position_of(number)) numbers_[*position] = kNoPort;
  logical_.erase(number);
  owners_[number] = kNobody;
}

PlanVerdict PortPlan::reserve(NumberOwner owner, const std::vector<PortNumberRange>& ranges) {
  if (PlanVerdict verdict = check_owner(owner); verdict.status != FcdStatus::kDone) return verdict;
  if (ranges.empty()) return {FcdStatus::kBadPortNumberRange, "there is no range"};
  if (PlanVerdict verdict = check_ranges(owner, ranges); verdict.status != FcdStatus::kDone) {
    return verdict;
  }
  const auto kept_bindings = logical_;
  release(owner, {});
  std::uint32_t position = positions_of(owner).first;
  for (const PortNumberRange& range : ranges) {
    for (std::uint32_t n = range.first; n <= range.last; ++n) {
      const auto number = static_cast<PortNumber>(n);
      owners_[number] = owner;
      numbers_[position++] = number;
      const auto bound = kept_bindings.find(number);
      if (bound != kept_bindings.end()) logical_.insert(*bound);
    }
  }
  return {};
}

PlanVerdict PortPlan::release(NumberOwner owner, const std::vector<PortNumberRange>& ranges) {
  if (PlanVerdict verdict = check_owner(owner); verdict.status != FcdStatus::kDone) return verdict;
  if (PlanVerdict verdict = check_ranges(owner, ranges); verdict.status != FcdStatus::kDone) {
    return verdict;
  }
  for (const PortNumberRange& range : ranges) {
    for (std::uint32_t number = range.first; number <= range.last; ++number) {
      if (owner_of(number) == owner) continue;
      return {FcdStatus::kPortNumberNotReserved,
              "port number " + text_of(number) + " is not reserved for " + name_of(owner)};
    }
  }
  for (const PortNumberRange& range : ranges.empty() ? reserved_for(owner) : ranges) {
    for (std::uint32_t n = range.first; n <= range.last; ++n) take_away(static_cast<PortNumber>(n));
  }
  return {};
}

FcdStatus PortPlan::assign(if_index_t if_index, std::uint32_t number) {
  const platform::Port* port = chassis_->port(if_index);
  if (port == nullptr) return FcdStatus::kNoSuchInterface;
  if (port->auto_created) return FcdStatus::kAutoCreatedPort;
  if (number == kControlUnitPort) return FcdStatus::kControlUnitPort;
  if (!is_number(number)) return FcdStatus::kPortNumberOutOfRange;
  const auto position = position_of_interface(if_index);
  const NumberOwner owner = position ? *position / wire::kPortsPerModule + 1 : kLogicalPorts;
  if (owner_of(number) != owner) return FcdStatus::kPortNumberNotReserved;
  if (interface_of(number) == if_index) return FcdStatus::kDone;
  if (interface_of(number) != 0) return FcdStatus::kPortNumberTaken;
  if (position) {
    if (const auto spare = position_of(number)) numbers_[*spare] = kNoPort;
    numbers_[*position] = static_cast<PortNumber>(number);
  } else {
    std::erase_if(logical_, [&](const auto& bound) { return bound.second == if_index; });
    logical_[static_cast<PortNumber>(number)] = if_index;
  }
  return FcdStatus::kDone;
}

FcdStatus PortPlan::unassign(if_index_t if_index, std::uint32_t number) {
  if (chassis_->port(if_index) == nullptr) return FcdStatus::kNoSuchInterface;
  const PortNumber present = number_of_interface(if_index);
  if (present == kNoPort || (number != kNoPort && number != present)) {
    return FcdStatus::kPortNumberNotBound;
  }
  if (const auto position = position_of_interface(if_index)) {
    numbers_[*position] = kNoPort;
  } else {
    logical_.erase(present);
  }
  return FcdStatus::kDone;
}

FcdStatus PortPlan::bind_address(std::uint32_t address, std::uint32_t number) {
  if (const FcdStatus status = check_port_address(address); status != FcdStatus::kDone) {
    return status;
  }
  if (number == kControlUnitPort) return FcdStatus::kControlUnitPort;
  if (number != kNoPort) {
    if (!is_number(number)) return FcdStatus::kPortNumberOutOfRange;
    const std::uint16_t present = address_of(number);
    if (present != kNoPort && present != address) return FcdStatus::kPortNumberHasAddress;
  }
  by_address_[address] = static_cast<PortNumber>(number);
  return FcdStatus::kDone;
}

void PortPlan::swap_addresses(std::uint32_t first, std::uint32_t second) {
  std::swap(by_address_[first], by_address_[second]);
}

bool PortPlan::restore_reservation(NumberOwner owner, const std::vector<PortNumberRange>& ranges) {
  if (check_owner(owner).status != FcdStatus::kDone ||
      check_ranges(owner, ranges).status != FcdStatus::kDone) {
    return false;
  }
  for (const PortNumberRange& range : ranges) {
    for (std::uint32_t n = range.first; n <= range.last; ++n) {
      owners_[n] = owner;
    }
  }
  return true;
}

bool PortPlan::restore_number(std::uint32_t position, std::uint32_t number) {
  const auto owner = owner_of(number);
  if (!owner || position_of(number)) return false;
  const auto block = positions_of(*owner);
  if (position < block.first || position >= block.first + block.count) return false;
  numbers_[position] = static_cast<PortNumber>(number);
  return true;
}

bool PortPlan::restore_binding(std::uint32_t number, if_index_t if_index) {
  if (owner_of(number) != kLogicalPorts) return false;
  // The chassis may have lost the interface since: then the number is free again.
  if (chassis_->port(if_index) != nullptr) logical_[static_cast<PortNumber>(number)] = if_index;
  return true;
}

bool PortPlan::restore_address(std::uint32_t address, std::uint32_t number) {
  return bind_address(address, number) == FcdStatus::kDone;
}

}  // namespace ficon::emulator
