#include "model/port_operations.h"

#include <algorithm>
#include <cstdio>

#include "interface_index/interface_index.h"

namespace ficon::emulator {
namespace {

using platform::PortCondition;
using platform::PortMode;

constexpr std::uint8_t kReasonNone = 0;
constexpr std::uint8_t kReasonOffline = 2;
constexpr std::uint8_t kUpElsewhere = 0x20;  // up, towards another switch

bool faces_devices(const platform::Port& port) {
  return port.mode == PortMode::kF || port.mode == PortMode::kFx;
}

std::string ranges_text(const std::vector<PortNumberRange>& ranges) {
  std::string text;
  for (const PortNumberRange& range : ranges) text += ' ' + text_of(range);
  return text;
}

/** Short, for the history has room for 24 characters. */
std::string short_name(NumberOwner owner) {
  return owner == kLogicalPorts ? "logical" : name_of(owner);
}

std::string address_text(std::uint32_t address) {
  char text[12];
  std::snprintf(text, sizeof text, "%02x", address);
  return text;
}

}  // namespace

InterfaceCondition condition_of(const platform::Port& port) {
  switch (port.condition) {
    case PortCondition::kUp:
      return {faces_devices(port) ? wire::kInterfaceOnline : kUpElsewhere, kReasonNone};
    case PortCondition::kFailed:
      return {wire::kInterfaceFailed, kReasonNone};
    case PortCondition::kAdminDown:
      return {0, wire::kReasonAdminDown};
    case PortCondition::kOffline:
      break;
  }
  return {0, kReasonOffline};
}

wire::PortState state_of(const platform::Port& port) {
  switch (port.condition) {
    case PortCondition::kUp:
      return faces_devices(port) ? wire::PortState::kOnline : wire::PortState::kInterSwitch;
    case PortCondition::kFailed:
      return wire::PortState::kFailed;
    case PortCondition::kAdminDown:
      return wire::PortState::kAdminDown;
    case PortCondition::kOffline:
      break;
  }
  return wire::PortState::kOffline;
}

PortKeys PortOperations::keys_of(std::uint32_t number) const {
  const PortPlan& plan = switch_.port_plan();
  return {plan.interface_of(number), static_cast<std::uint16_t>(number), plan.address_of(number)};
}

std::optional<PortKeys> PortOperations::find(const PortKeys& keys) const {
  const PortPlan& plan = switch_.port_plan();
  std::uint16_t number = keys.port_number;
  if (number == kNoPort && keys.if_index != 0) {
    number = plan.number_of_interface(keys.if_index);
  }
  if (number == kNoPort && keys.port_address < kPortAddresses) {
    number = plan.number_of_address(keys.port_address);
  }
  if (!plan.owner_of(number)) return std::nullopt;
  const PortKeys found = keys_of(number);
  const bool agree = (keys.if_index == 0 || keys.if_index == found.if_index) &&
                     (keys.port_address == kNoPort || keys.port_address == found.port_address);
  return agree ? std::optional(found) : std::nullopt;
}

std::optional<PortKeys> PortOperations::next(const PortKeys& keys) const {
  std::vector<PortKeys> ports;
  for (const PortNumber number : switch_.port_plan().numbers()) ports.push_back(keys_of(number));
  const auto first_beyond = [&](auto key_of, std::uint32_t known, bool from_the_first) {
    std::optional<PortKeys> best;
    for (const PortKeys& port : ports) {
      const std::uint32_t key = key_of(port);
      if (!from_the_first && key <= known) continue;
      if (!best || key < key_of(*best)) best = port;
    }
    return best;
  };
  const auto by_number = [](const PortKeys& port) { return std::uint32_t{port.port_number}; };
  if (keys.port_number != kNoPort || !keys.any()) {
    return first_beyond(by_number, keys.port_number, !keys.any());
  }
  if (keys.if_index != 0) {
    return first_beyond([](const PortKeys& port) { return port.if_index; }, keys.if_index, false);
  }
  std::erase_if(ports, [](const PortKeys& port) { return port.port_address == kNoPort; });
  return first_beyond([](const PortKeys& port) { return std::uint32_t{port.port_address}; },
                      keys.port_address, false);
}

FcdStatus PortOperations::check_change(const Asker& asker) const {
  if (asker.requester == Requester::kUnknown) return FcdStatus::kUnknownRequester;
  for (const auto& [number, vsan] : switch_.vsans()) {
    if (switch_.sessions.locks.held_against(number, asker.connection)) return FcdStatus::kLockBusy;
  }
  return FcdStatus::kDone;
}

void PortOperations::changed(const Asker& asker, Change change, std::string_view object,
                             std::string detail) {
  switch_.touched.object(std::string(object));
  switch_.count_change_everywhere();
  switch_.record(0, asker, change, std::move(detail));
}

PlanVerdict PortOperations::reserve(const Asker& asker, NumberOwner owner,
                                    const std::vector<PortNumberRange>& ranges) {
  if (const FcdStatus status = check_change(asker); status != FcdStatus::kDone) return {status};
  PlanVerdict verdict = switch_.port_plan().reserve(owner, ranges);
  if (verdict.status == FcdStatus::kDone) {
    changed(asker, Change::kPortNumbers, kPortsObject,
            short_name(owner) + ": now" + ranges_text(ranges));
  }
  return verdict;
}

PlanVerdict PortOperations::release(const Asker& asker, NumberOwner owner,
                                    const std::vector<PortNumberRange>& ranges) {
  if (const FcdStatus status = check_change(asker); status != FcdStatus::kDone) return {status};
  PlanVerdict verdict = switch_.port_plan().release(owner, ranges);
  if (verdict.status == FcdStatus::kDone) {
    changed(asker, Change::kPortNumbers, kPortsObject,
            short_name(owner) + ": not" + (ranges.empty() ? " any" : ranges_text(ranges)));
  }
  return verdict;
}

FcdStatus PortOperations::assign(const Asker& asker, if_index_t if_index, std::uint32_t number) {
  if (const FcdStatus status = check_change(asker); status != FcdStatus::kDone) return status;
  PortPlan& plan = switch_.port_plan();
  if (number != kNoPort && plan.number_of_interface(if_index) == number) {
    return FcdStatus::kDone;
  }
  const FcdStatus status = plan.assign(if_index, number);
  if (status == FcdStatus::kDone) {
    changed(asker, Change::kPortNumbers, kPortsObject,
            std::to_string(number) + ": " + platform::interface_name(if_index));
  }
  return status;
}

FcdStatus PortOperations::unassign(const Asker& asker, if_index_t if_index, std::uint32_t number) {
  if (const FcdStatus status = check_change(asker); status != FcdStatus::kDone) return status;
  const FcdStatus status = switch_.port_plan().unassign(if_index, number);
  if (status == FcdStatus::kDone) {
    changed(asker, Change::kPortNumbers, kPortsObject,
            "none: " + platform::interface_name(if_index));
  }
  return status;
}

FcdStatus PortOperations::bind_address(const Asker& asker, std::uint32_t address,
                                       std::uint32_t number) {
  if (const FcdStatus status = check_change(asker); status != FcdStatus::kDone) return status;
  PortPlan& plan = switch_.port_plan();
  if (address < kPortAddresses && check_port_address(address) == FcdStatus::kDone &&
      plan.number_of_address(address) == number) {
    return FcdStatus::kDone;
  }
  const FcdStatus status = plan.bind_address(address, number);
  if (status == FcdStatus::kDone) {
    const std::string to =
        number == kNoPort ? "no port number" : "port number " + std::to_string(number);
    changed(asker, Change::kPortAddress, kPortsObject, address_text(address) + ": " + to);
  }
  return status;
}

FcdStatus PortOperations::check_swappable(std::uint32_t number) const {
  if (number == kControlUnitPort) return FcdStatus::kControlUnitPort;
  const PortPlan& plan = switch_.port_plan();
  if (!plan.is_number(number)) return FcdStatus::kPortNumberOutOfRange;
  if (plan.interface_of(number) == 0) return FcdStatus::kPortNotInstalled;
  return plan.address_of(number) == kNoPort ? FcdStatus::kPortWithoutAddress : FcdStatus::kDone;
}

FcdStatus PortOperations::swap(const Asker& asker, std::uint32_t first, std::uint32_t second,
                               SwappedInterfaces& done) {
  if (const FcdStatus status = check_change(asker); status != FcdStatus::kDone) return status;
  if (first == second) return FcdStatus::kSamePort;
  for (const std::uint32_t number : {first, second}) {
    if (const FcdStatus status = check_swappable(number); status != FcdStatus::kDone) return status;
  }
  PortPlan& plan = switch_.port_plan();
  const std::uint16_t first_address = plan.address_of(first);
  const std::uint16_t second_address = plan.address_of(second);
  // Every file keeps its settings by port address, so they go where the addresses go.
  plan.swap_addresses(first_address, second_address);
  done = {plan.interface_of(first), plan.interface_of(second)};
  changed(asker, Change::kPortSwap, kPortsObject,
          "addresses " + address_text(first_address) + " and " + address_text(second_address));
  return FcdStatus::kDone;
}

FcdStatus PortOperations::set_prohibit_setting(const Asker& asker, bool ProhibitSettings::*setting,
                                               std::uint32_t value, const char* name) {
  if (const FcdStatus status = check_change(asker); status != FcdStatus::kDone) return status;
  if (value > 1) return FcdStatus::kBadProhibitSetting;
  ProhibitSettings settings = switch_.prohibit_settings();
  if (settings.*setting == (value == 1)) return FcdStatus::kDone;
  settings.*setting = value == 1;
  switch_.restore_prohibit_settings(settings);
  changed(asker, Change::kProhibitSettings, kProhibitSettingsObject,
          std::string(name) + ": " + std::to_string(value));
  return FcdStatus::kDone;
}

FcdStatus PortOperations::set_default_prohibit(const Asker& asker, std::uint32_t value) {
  return set_prohibit_setting(asker, &ProhibitSettings::prohibited_by_default, value,
                              "default prohibit");
}

FcdStatus PortOperations::set_acl_not_fcid(const Asker& asker, std::uint32_t value) {
  return set_prohibit_setting(asker, &ProhibitSettings::acl_not_fcid, value, "acl not fcid");
}

FcdStatus PortOperations::downgrade_acl_type(const Asker& asker) {
  return set_acl_not_fcid(asker, 0);
}

}  // namespace ficon::emulator
