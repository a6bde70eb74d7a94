#include "model/switch.h"

#include <chrono>
#include <cstdio>
#include <utility>

namespace ficon::emulator {

Clocks Clocks::of_the_system() {
  using std::chrono::duration_cast;
  using std::chrono::seconds;
  return {
      [] {
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        return std::int64_t{duration_cast<seconds>(now).count()};
      },
      [] {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        return std::int64_t{duration_cast<seconds>(now).count()};
      },
  };
}

std::string history_object(std::uint32_t position) {
  char name[24];  // ten digits, so that the store's order is the order of the positions
  std::snprintf(name, sizeof name, "history/%010u", position);
  return name;
}

Switch::Switch(SwitchOptions options)
    : history(options.history_capacity),
      options_(std::move(options)),
      port_plan_(options_.hardware->chassis) {}

const Vsan* Switch::find_vsan(std::uint32_t number) const {
  if (!is_vsan(number)) return nullptr;
  const auto place = vsans_.find(static_cast<VsanNumber>(number));
  return place == vsans_.end() ? nullptr : &place->second;
}

const Vsan* Switch::next_vsan(std::uint32_t number) const {
  if (number >= kLastVsan) return nullptr;
  const auto place = vsans_.upper_bound(static_cast<VsanNumber>(number));
  return place == vsans_.end() ? nullptr : &place->second;
}

FcdStatus Switch::check_vsan(std::uint32_t number) const {
  if (!is_vsan(number)) return FcdStatus::kVsanOutOfRange;
  return find_vsan(number) == nullptr ? FcdStatus::kVsanWithoutFicon : FcdStatus::kDone;
}

bool Switch::enable_feature() {
  if (feature_enabled_) return false;
  feature_enabled_ = true;
  touched.object(std::string(kFeatureObject));
  record(0, Asker{}, Change::kFeatureEnabled, "ficon");
  return true;
}

FcdStatus Switch::set_logging_level(std::uint32_t level) {
  constexpr std::uint32_t kHighest = 7;
  if (level > kHighest) return FcdStatus::kBadLoggingLevel;
  logging_level_ = level;
  touched.object(std::string(kDebugObject));
  return FcdStatus::kDone;
}

FcdStatus Switch::enable_ficon(std::uint32_t number, const Asker& asker) {
  if (!is_vsan(number)) return FcdStatus::kVsanOutOfRange;
  if (asker.requester == Requester::kUnknown) return FcdStatus::kUnknownRequester;
  if (!feature_enabled_) return FcdStatus::kFeatureOff;
  if (find_vsan(number) != nullptr) return FcdStatus::kDone;
  const auto vsan = static_cast<VsanNumber>(number);
  Vsan& enabled = vsans_.try_emplace(vsan, vsan).first->second;
  enabled.files = {.active = new_file(enabled), .named = {{kIplFile, new_file(enabled)}}};
  touched.object(vsan_object(vsan));
  touched.object(file_object(vsan, kActiveConfiguration));
  touched.object(file_object(vsan, kIplFile));
  record(vsan, asker, Change::kFiconEnabled, {});
  return FcdStatus::kDone;
}

FcdStatus Switch::disable_ficon(std::uint32_t number, const Asker& asker) {
  if (!is_vsan(number)) return FcdStatus::kVsanOutOfRange;
  if (asker.requester == Requester::kUnknown) return FcdStatus::kUnknownRequester;
  if (find_vsan(number) == nullptr) return FcdStatus::kDone;
  const VsanAccess access = change_vsan(number, asker);
  if (access.status != FcdStatus::kDone) return access.status;
  const VsanNumber vsan = access.vsan->number;
  vsans_.erase(vsan);
  sessions.edits.vsan_disabled(vsan);
  touched.object(vsan_object(vsan));
  touched.erased_below(vsan_object(vsan));
  record(vsan, asker, Change::kFiconDisabled, {});
  return FcdStatus::kDone;
}

PortIdentity Switch::port_identity(std::uint32_t port_address) const {
  if (port_address > kLastUsablePortAddress) return {};
  const PortNumber number = port_plan_.number_of_address(port_address);
  const if_index_t if_index = port_plan_.interface_of(number);
  return {number, if_index, if_index != 0};
}

const Vsan* Switch::vsan_with_fcid(std::uint32_t port_address) const {
  const platform::Port* port = chassis().port(port_identity(port_address).if_index);
  return port == nullptr ? nullptr : find_vsan(port->vsan);
}

/** Lists that are built by FCID cannot name a port without one. */
PortSet Switch::ports_in_access_lists(const Vsan& vsan) const {
  PortSet ports;
  for (std::uint32_t address = 0; address <= kLastUsablePortAddress; ++address) {
    ports.set(address, prohibit_settings_.acl_not_fcid || vsan_with_fcid(address) == &vsan);
  }
  return ports;
}

ConfigurationFile Switch::new_file(const Vsan& vsan) const {
  ConfigurationFile file;
  if (prohibit_settings_.prohibited_by_default) {
    file.prohibit_pairs_of(ports_in_access_lists(vsan));
  }
  return file;
}

FcdStatus Switch::check_requester(const Vsan& vsan, Requester requester) const {
  switch (requester) {
    case Requester::kOperator:
    case Requester::kUnstated:
      return FcdStatus::kDone;
    case Requester::kAgent:
      return vsan.modes.prohibit_snmp ? FcdStatus::kSnmpProhibited : FcdStatus::kDone;
    case Requester::kHost:
      return vsan.modes.prohibit_host_control ? FcdStatus::kHostControlProhibited
                                              : FcdStatus::kDone;
    case Requester::kUnknown:
      break;
  }
  return FcdStatus::kUnknownRequester;
}

VsanAccess Switch::change_vsan(std::uint32_t number, const Asker& asker) {
  if (const FcdStatus status = check_vsan(number); status != FcdStatus::kDone) return {status};
  Vsan& vsan = vsans_.at(static_cast<VsanNumber>(number));
  if (const FcdStatus status = check_requester(vsan, asker.requester); status != FcdStatus::kDone) {
    return {status};
  }
  if (sessions.locks.held_against(vsan.number, asker.connection)) return {FcdStatus::kLockBusy};
  return {FcdStatus::kDone, &vsan};
}

void Switch::changed(Vsan& vsan, const Asker& asker, Change change, std::string detail) {
  ++vsan.key_counter;  // wraps to 0, as a counter of 32 bits does
  touched.object(vsan_object(vsan.number));
  record(vsan.number, asker, change, std::move(detail));
}

void Switch::count_change_everywhere() {
  for (auto& [number, vsan] : vsans_) {
    ++vsan.key_counter;
    touched.object(vsan_object(number));
  }
}

void Switch::record(VsanNumber vsan, const Asker& asker, Change change, std::string detail) {
  std::uint32_t gone = history.append({.time = options_.clocks.seconds_since_1970(),
                                       .vsan = vsan,
                                       .requester = asker.requester,
                                       .change = change,
                                       .detail = std::move(detail)});
  touched.object(history_object(history.last_position()));
  for (; gone != 0; gone = history.drop_excess()) touched.object(history_object(gone));
}

FcdStatus Switch::get_lock(std::uint32_t number, const Asker& asker) {
  if (const FcdStatus status = check_vsan(number); status != FcdStatus::kDone) return status;
  if (asker.requester == Requester::kUnknown) return FcdStatus::kUnknownRequester;
  return sessions.locks.get(static_cast<VsanNumber>(number), asker,
                            options_.clocks.steady_seconds());
}

FcdStatus Switch::free_lock(std::uint32_t number, const Asker& asker) {
  // Also on a VSAN that lost FICON meanwhile: whoever disables it still frees the lock.
  if (!is_vsan(number)) return FcdStatus::kVsanOutOfRange;
  return sessions.locks.free(static_cast<VsanNumber>(number), asker);
}

FcdStatus Switch::reset_lock(std::uint32_t number, const Asker& asker) {
  if (!is_vsan(number)) return FcdStatus::kVsanOutOfRange;
  const auto vsan = static_cast<VsanNumber>(number);
  if (sessions.locks.reset(vsan)) record(vsan, asker, Change::kLockReset, {});
  return FcdStatus::kDone;
}

std::int64_t Switch::age_of(const Locks::Holder& holder) const {
  return options_.clocks.steady_seconds() - holder.since;
}

}  // namespace ficon::emulator
