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
  PortSet wanted = ports_[address].prohibited;
  switch (static_cast<ProhibitChange>(how)) {
    case ProhibitChange::kReplace:
      wanted = mask;
      break;
    case ProhibitChange::kAdd:
      wanted |= mask;
      break;
    case ProhibitChange::kRemove:
      wanted &= ~mask;
      break;
    default:
      return FcdStatus::kBadProhibitChange;
  }
  ports_[address].prohibited = wanted;
  for (std::uint32_t other = 0; other <= kLastUsablePortAddress; ++other) {
    ports_[other].prohibited[address] = wanted[other];
  }
  return FcdStatus::kDone;
}

void ConfigurationFile::prohibit_all() {
  PortSet usable;
  for (std::uint32_t address = 0; address <= kLastUsablePortAddress; ++address) {
    usable.set(address);
  }
  for (std::uint32_t address = 0; address <= kLastUsablePortAddress; ++address) {
    ports_[address].prohibited = usable;
    ports_[address].prohibited.reset(address);
  }
}

bool ConfigurationFile::is_consistent() const {
  for (std::uint32_t address = 0; address < kPortAddresses; ++address) {
    const PortSet& mask = ports_[address].prohibited;
    if (mask.any() && check_port_address(address) != FcdStatus::kDone) return false;
    for (std::uint32_t other = 0; other < kPortAddresses; ++other) {
      if (mask[other] && (other == address || !ports_[other].prohibited[address])) return false;
    }
  }
  return true;
}

}  // namespace ficon::emulator
