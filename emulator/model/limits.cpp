/** The rules for the limits. Setting what already is changes and records nothing. */
#include "model/limits.h"

#include <string>

#include "model/switch.h"
#include "wire/saved_config.h"

namespace ficon::emulator {
namespace {

std::string seconds(MihTimeout timeout) {
  return std::to_string(wire::decode_mih_timeout(timeout.encoded)) + " seconds";
}

}  // namespace

void Switch::limits_changed(std::string detail) {
  touched.object(std::string(kLimitsObject));
  record(0, Asker{}, Change::kLimits, std::move(detail));
}

FcdStatus Switch::set_get_next_type(std::uint32_t type) {
  const GetNextType wanted{type};
  if (wanted != GetNextType::kAllPorts && wanted != GetNextType::kInstalledPorts) {
    return FcdStatus::kBadGetNextType;
  }
  if (wanted == limits_.get_next_type) return FcdStatus::kDone;
  limits_.get_next_type = wanted;
  limits_changed("get-next type " + std::to_string(type));
  return FcdStatus::kDone;
}

FcdStatus Switch::set_max_ports(std::uint32_t count) {
  if (count == 0 || count > kMostPorts) return FcdStatus::kBadMaxPorts;
  if (count == limits_.max_ports) return FcdStatus::kDone;
  limits_.max_ports = count;
  limits_changed("max ports " + std::to_string(count));
  return FcdStatus::kDone;
}

FcdStatus Switch::set_default_mih_timeout(std::uint32_t encoded) {
  const MihTimeout wanted{static_cast<std::uint8_t>(encoded)};
  if (encoded > 0xff || !wanted.is_valid()) return FcdStatus::kBadMihTimeout;
  if (wanted.encoded == limits_.default_mih_timeout.encoded) return FcdStatus::kDone;
  limits_.default_mih_timeout = wanted;
  limits_changed("MIH " + seconds(wanted));
  return FcdStatus::kDone;
}

FcdStatus Switch::set_mih_timeout(std::uint32_t number, const Asker& asker, std::uint32_t encoded) {
  const VsanAccess access = change_vsan(number, asker);
  if (access.status != FcdStatus::kDone) return access.status;
  const MihTimeout wanted{static_cast<std::uint8_t>(encoded)};
  const bool takes_default = encoded == 0;
  if (encoded > 0xff || (!takes_default && !wanted.is_valid())) return FcdStatus::kBadMihTimeout;
  if (wanted.encoded == access.vsan->mih_timeout.encoded) return FcdStatus::kDone;
  access.vsan->mih_timeout = wanted;
  changed(*access.vsan, asker, Change::kMihTimeout, takes_default ? "default" : seconds(wanted));
  return FcdStatus::kDone;
}

MihTimeout Switch::mih_timeout(const Vsan& vsan) const {
  return vsan.mih_timeout.is_valid() ? vsan.mih_timeout : limits_.default_mih_timeout;
}

}  // namespace ficon::emulator
