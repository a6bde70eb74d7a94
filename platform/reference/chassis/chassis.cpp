#include "chassis/chassis.h"

#include <algorithm>

#include "interface_index/interface_index.h"

namespace ficon::platform {
namespace {

constexpr std::uint16_t kFirstLogicalNumber = 0xf0;
constexpr std::uint16_t kLastLogicalNumber = 0xf9;

template <class Modules, class Match>
auto* first_where(Modules& modules, Match match) {
  const auto found = std::find_if(modules.begin(), modules.end(), match);
  return found == modules.end() ? nullptr : &*found;
}

}  // namespace

const Module* Chassis::module_in_slot(std::uint32_t slot) const {
  return first_where(modules, [&](const Module& module) { return module.slot == slot; });
}

const Module* Chassis::module(std::uint32_t number) const {
  return first_where(modules, [&](const Module& module) { return module.number == number; });
}

const Port* Chassis::port(if_index_t if_index) const {
  const auto interface = interface_of(if_index);
  if (!interface) return nullptr;
  if (interface->type != InterfaceType::kFibreChannel) {
    const auto found = logical_ports.find(if_index);
    return found == logical_ports.end() ? nullptr : &found->second;
  }
  const Module* module = module_in_slot(interface->slot + 1);
  if (module == nullptr || interface->number >= module->ports.size()) return nullptr;
  return &module->ports[interface->number];
}

Port* Chassis::port(if_index_t if_index) {
  return const_cast<Port*>(static_cast<const Chassis*>(this)->port(if_index));
}

std::vector<if_index_t> Chassis::interfaces() const {
  std::vector<if_index_t> list;
  for (const Module& module : modules) {
    for (std::uint32_t port = 0; port < module.ports.size(); ++port) {
      list.push_back(interface_index(fibre_channel_port(module.slot - 1, port)));
    }
  }
  for (const auto& [if_index, port] : logical_ports) list.push_back(if_index);
  std::sort(list.begin(), list.end());
  return list;
}

std::vector<std::uint16_t> default_port_numbers(const Chassis& chassis, const Module& module) {
  std::size_t next = 0;
  for (const Module& before : chassis.modules) {
    if (before.number < module.number) next += before.ports.size();
  }
  std::vector<std::uint16_t> numbers;
  for (std::size_t i = 0; i < module.ports.size() && next + i < kFirstLogicalNumber; ++i) {
    numbers.push_back(static_cast<std::uint16_t>(next + i));
  }
  return numbers;
}

std::vector<std::uint16_t> default_logical_port_numbers() {
  std::vector<std::uint16_t> numbers;
  for (std::uint16_t number = kFirstLogicalNumber; number <= kLastLogicalNumber; ++number) {
    numbers.push_back(number);
  }
  return numbers;
}

}  // namespace ficon::platform
