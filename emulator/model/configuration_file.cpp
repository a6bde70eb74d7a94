#include "model/configuration_file.h"

namespace ficon::emulator {

FcdStatus check_port_address(std::uint32_t address) {
  if (address == kControlUnitPort) return FcdStatus::kControlUnitPort;
  return address <= kLastUsablePortAddress ? FcdStatus::kDone : FcdStatus::kNotAPortAddress;
}

FcdStatus ConfigurationFile::set_blocked(std::uint32_t address, std::uint8_t value) {
  if (const FcdStatus refused = check_port_address(address); refused != FcdStatus::kDone) {
    return refused;
  }
  if (value > 1) return FcdStatus::kBadBlockedValue;
  ports_[address].blocked = value != 0;
  return FcdStatus::kDone;
}

FcdStatus ConfigurationFile::set_name(std::uint32_t address, const PortName& name) {
  if (const FcdStatus refused = check_port_address(address); refused != FcdStatus::kDone) {
    return refused;
  }
  ports_[address].name = name;
  return FcdStatus::kDone;
}

FcdStatus ConfigurationFile::change_prohibited(std::uint32_t address, std::uint32_t how,
                                               const PortSet& mask) {
  if (const FcdStatus refused = check_port_address(address); refused != FcdStatus::kDone) {
    return refused;
  }
  if (mask[kControlUnitPort]) return FcdStatus::kControlUnitPort;
  if (mask[0xff]) return FcdStatus::kNotAPortAddress;
  if (mask[address]) return FcdStatus::kProhibitsItself;
  const PortSet present = ports_[address].prohibited;
  PortSet wanted;
  switch (static_cast<ProhibitChange>(how)) {
    case ProhibitChange::kReplace:
      wanted = mask;
      break;
    case ProhibitChange::kAdd:
      wanted = present | mask;
      break;
    case ProhibitChange::kRemove:
      wanted = present - mask;
      break;
    default:
      return FcdStatus::kBadProhibitChange;
  }
  ports_[address].prohibited = wanted;
  // Both sides were alike before, so that the others' bits change where this one's do.
  (present ^ wanted).for_each([&](std::uint32_t other) { ports_[other].prohibited.flip(address); });
  return FcdStatus::kDone;
}

void ConfigurationFile::prohibit_pairs_of(const PortSet& usable_ports) {
  usable_ports.for_each([&](std::uint32_t address) {
    PortSet& prohibited = ports_[address].prohibited;
    prohibited = (prohibited | usable_ports).reset(address);
  });
}

bool ConfigurationFile::is_consistent() const {
  for (std::uint32_t address = 0; address < kPortAddresses; ++address) {
    const PortSet& mask = ports_[address].prohibited;
    if (mask.any() && check_port_address(address) != FcdStatus::kDone) return false;
    bool mutual = !mask[address];
    mask.for_each(
        [&](std::uint32_t other) { mutual = mutual && ports_[other].prohibited[address]; });
    if (!mutual) return false;
  }
  return true;
}

}  // namespace ficon::emulator
