/** One VSAN with FICON: its settings and the rules for changing them. */
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "model/configuration_file.h"
#include "model/limits.h"
#include "wire/fcd_status.h"

namespace ficon::emulator {

using VsanNumber = std::uint16_t;
inline constexpr VsanNumber kFirstVsan = 1;
inline constexpr VsanNumber kLastVsan = 4093;

constexpr bool is_vsan(std::uint32_t number) {
  return number >= kFirstVsan && number <= kLastVsan;
}

/** The settings that are a mode: 0 or 1, each with the status that names it when it is neither. */
struct Modes {
  bool switch_offline = false;
  bool host_control_switch_offline = true;  // the host may take the switch offline
  bool prohibit_host_control = false;
  bool clock_alert_mode = false;
  bool user_alert_mode = false;
  bool prohibit_snmp = false;
  bool auto_save = false;
  bool host_clock_set_allowed = true;

  bool operator==(const Modes&) const = default;
};

struct ModeField {
  bool Modes::*field;
  FcdStatus bad_value;
  const char* name;
};

inline constexpr ModeField kSwitchOffline{&Modes::switch_offline, FcdStatus::kBadSwitchOffline,
                                          "switch offline"};
inline constexpr ModeField kHostControlSwitchOffline{&Modes::host_control_switch_offline,
                                                     FcdStatus::kBadHostControlSwitchOffline,
                                                     "host control switch offline"};
inline constexpr ModeField kProhibitHostControl{
    &Modes::prohibit_host_control, FcdStatus::kBadProhibitHostControl, "prohibit host control"};
inline constexpr ModeField kClockAlertMode{&Modes::clock_alert_mode, FcdStatus::kBadClockAlertMode,
                                           "clock alert mode"};
inline constexpr ModeField kUserAlertMode{&Modes::user_alert_mode, FcdStatus::kBadUserAlertMode,
                                          "user alert mode"};
inline constexpr ModeField kProhibitSnmp{&Modes::prohibit_snmp, FcdStatus::kBadProhibitSnmp,
                                         "prohibit SNMP"};
inline constexpr ModeField kAutoSave{&Modes::auto_save, FcdStatus::kBadAutoSave,
                                     "automatic saving"};
inline constexpr ModeField kHostClockSetAllowed{
    &Modes::host_clock_set_allowed, FcdStatus::kBadHostClockSetAllowed, "host clock set allowed"};

/** The code pages on offer: the EBCDIC pages of FICON's countries. */
inline constexpr std::uint32_t kCodepages[] = {37,   273,  277,  278,  280,  284,  285,
                                               297,  500,  871,  1047, 1140, 1141, 1142,
                                               1143, 1144, 1145, 1146, 1147, 1148, 1149};
inline constexpr std::uint32_t kDefaultCodepage = 37;
bool is_offered_codepage(std::uint32_t codepage);

/** The time-stamp clock: two words that are kept and given back as they came. */
struct TimestampClock {
  std::uint32_t first = 0;
  std::uint32_t second = 0;

  bool operator==(const TimestampClock&) const = default;
};

/** What the state word of the VSAN information says. */
enum class VsanState : std::uint32_t { kOffline = 1, kUp = 2 };

struct Vsan {
  explicit Vsan(VsanNumber vsan) : number(vsan) {}

  VsanNumber number;
  Modes modes;
  std::uint32_t key_counter = 0;
  std::uint32_t codepage = kDefaultCodepage;
  TimestampClock clock;
  std::uint8_t fcid_last_byte = 0;
  MihTimeout mih_timeout;  // 0: the switch's
  std::vector<std::uint8_t> host_data;
  ConfigurationFiles files;

  VsanState state() const { return modes.switch_offline ? VsanState::kOffline : VsanState::kUp; }
};

/** The name under which a VSAN's own settings are stored, and the path of what lies below it. */
std::string vsan_object(VsanNumber number);

}  // namespace ficon::emulator
