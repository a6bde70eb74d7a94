#include "model/identification.h"

#include <cstdio>
#include <map>

#include "interface_index/interface_index.h"

namespace ficon::emulator {
namespace {

using platform::Chassis;
using platform::Module;

/** A module's number is the chassis' with its slot behind it. */
std::string serial_of(const Chassis& chassis, const Module& module) {
  char slot[8];
  std::snprintf(slot, sizeof slot, "-%02u", module.slot);
  return chassis.serial + slot;
}

std::map<if_index_t, std::uint16_t> port_numbers(const Switch& model) {
  std::map<if_index_t, std::uint16_t> numbers;
  for (std::uint32_t address = 0; address < kPortAddresses; ++address) {
    const PortIdentity identity = model.port_identity(address);
    if (identity.installed) numbers[identity.if_index] = identity.port_number;
  }
  return numbers;
}

std::vector<Identification> switch_and_modules(const Chassis& chassis) {
  std::vector<Identification> all{{.kind = wire::PibKind::kSwitch,
                                   .type = chassis.name,
                                   .model = chassis.model,
                                   .serial = chassis.serial}};
  for (const Module& module : chassis.modules) {
    all.push_back({.kind = wire::PibKind::kModule,
                   .module = static_cast<std::uint8_t>(module.number),
                   .type = module.type,
                   .model = chassis.model,
                   .serial = serial_of(chassis, module)});
  }
  return all;
}

std::vector<Identification> ports_of(const Switch& model, const Module& module) {
  const auto numbers = port_numbers(model);
  std::vector<Identification> all;
  for (std::uint32_t port = 0; port < module.ports.size(); ++port) {
    const if_index_t if_index =
        platform::interface_index(platform::fibre_channel_port(module.slot - 1, port));
    const auto number = numbers.find(if_index);
    all.push_back({.kind = wire::PibKind::kPort,
                   .module = static_cast<std::uint8_t>(module.number),
                   .port = static_cast<std::uint8_t>(port),
                   .tag = number == numbers.end() ? kNoPort : number->second,
                   .if_index = if_index,
                   .type = module.type,
                   .model = model.chassis().model,
                   .serial = serial_of(model.chassis(), module)});
  }
  return all;
}

}  // namespace

std::vector<Identification> identifications(const Switch& model, std::uint32_t key) {
  if (key == 0) return switch_and_modules(model.chassis());
  const Module* module = model.chassis().module(key);
  return module == nullptr ? std::vector<Identification>{} : ports_of(model, *module);
}

}  // namespace ficon::emulator
