/** The rules for the settings of a VSAN. Setting what already is changes and records nothing. */
#include <string>

#include "model/switch.h"

namespace ficon::emulator {
namespace {

/** The host's own limits: taking the switch offline only where it may. */
bool host_may_not(const Vsan& vsan, const Asker& asker, const ModeChange& change) {
  return asker.requester == Requester::kHost && change.mode == &kSwitchOffline &&
         !vsan.modes.host_control_switch_offline;
}

void describe(std::string& detail, const ModeChange& change) {
  if (!detail.empty()) detail += ", ";
  detail += change.mode->name;
  detail += change.value != 0 ? " on" : " off";
}

}  // namespace

FcdStatus Switch::set_modes(std::uint32_t number, const Asker& asker,
                            std::span<const ModeChange> changes) {
  const VsanAccess access = change_vsan(number, asker);
  if (access.status != FcdStatus::kDone) return access.status;
  Vsan& vsan = *access.vsan;
  Modes wanted = vsan.modes;
  std::string detail;
  for (const ModeChange& change : changes) {
    if (change.value > 1) return change.mode->bad_value;
    if (host_may_not(vsan, asker, change)) return FcdStatus::kHostOfflineProhibited;
    bool& mode = wanted.*change.mode->field;
    if (mode != (change.value != 0)) describe(detail, change);
    mode = change.value != 0;
  }
  if (wanted == vsan.modes) return FcdStatus::kDone;
  const bool begins_saving = wanted.auto_save && !vsan.modes.auto_save;
  vsan.modes = wanted;
  if (begins_saving) {
    vsan.files.named[kIplFile] = vsan.files.active;
    touched.object(file_object(vsan.number, kIplFile));
  }
  changed(vsan, asker, Change::kModes, std::move(detail));
  return FcdStatus::kDone;
}

FcdStatus Switch::set_codepage(std::uint32_t number, const Asker& asker, std::uint32_t codepage) {
  const VsanAccess access = change_vsan(number, asker);
  if (access.status != FcdStatus::kDone) return access.status;
  if (!is_offered_codepage(codepage)) return FcdStatus::kCodepageNotOffered;
  if (access.vsan->codepage == codepage) return FcdStatus::kDone;
  access.vsan->codepage = codepage;
  changed(*access.vsan, asker, Change::kCodepage, std::to_string(codepage));
  return FcdStatus::kDone;
}

FcdStatus Switch::set_clock(std::uint32_t number, const Asker& asker, TimestampClock clock) {
  const VsanAccess access = change_vsan(number, asker);
  if (access.status != FcdStatus::kDone) return access.status;
  Vsan& vsan = *access.vsan;
  if (asker.requester == Requester::kHost && !vsan.modes.host_clock_set_allowed) {
    return FcdStatus::kHostClockProhibited;
  }
  if (vsan.clock == clock) return FcdStatus::kDone;
  vsan.clock = clock;
  changed(vsan, asker, Change::kClock, clock == TimestampClock{} ? "cleared" : "set");
  return FcdStatus::kDone;
}

FcdStatus Switch::set_fcid_last_byte(std::uint32_t number, const Asker& asker, std::uint8_t value) {
  const VsanAccess access = change_vsan(number, asker);
  if (access.status != FcdStatus::kDone) return access.status;
  if (access.vsan->fcid_last_byte == value) return FcdStatus::kDone;
  access.vsan->fcid_last_byte = value;
  changed(*access.vsan, asker, Change::kFcidLastByte, std::to_string(value));
  return FcdStatus::kDone;
}

FcdStatus Switch::increment_key_counter(std::uint32_t number, const Asker& asker) {
  const VsanAccess access = change_vsan(number, asker);
  if (access.status != FcdStatus::kDone) return access.status;
  ++access.vsan->key_counter;
  touched.object(vsan_object(access.vsan->number));
  return FcdStatus::kDone;
}

FcdStatus Switch::test_and_increment_key_counter(std::uint32_t number, const Asker& asker,
                                                 std::uint32_t expected) {
  const VsanAccess access = change_vsan(number, asker);
  if (access.status != FcdStatus::kDone) return access.status;
  if (access.vsan->key_counter != expected) return FcdStatus::kKeyCounterStale;
  return increment_key_counter(number, asker);
}

}  // namespace ficon::emulator
