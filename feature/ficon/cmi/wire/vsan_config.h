/** The settings of one VSAN: sent by the setters, returned by the VSAN information query. */
#pragma once

#include "wire/byte_order.h"

namespace ficon::wire {

enum class VsanOperation : std::uint32_t {
  kGet = 0,
  kMode = 1,
  kProhibitHostControl = 2,
  kHostControlSwitchOffline = 3,
  kClockAlertMode = 4,
  kUserAlertMode = 5,
  kProhibitSnmp = 6,
  kAutoSave = 7,
  kIncrementKeyCounter = 8,
  kTestAndIncrementKeyCounter = 9,
  kCodepage = 10,
  kSwitchOffline = 11,
  kSetTimestampClock = 12,
  kFcidLastByte = 13,
  kHostClockSetAllowed = 14,
  kClearTimestampClock = 15,
};

struct VsanConfig {
  be32 vsan;
  host32 state;  // replies only
  std::uint8_t switch_offline;
  std::uint8_t host_control_switch_offline;
  std::uint8_t prohibit_host_control;
  std::uint8_t clock_alert_mode;
  std::uint8_t user_alert_mode;
  std::uint8_t prohibit_snmp;
  std::uint8_t auto_save;
  std::uint8_t spare0;
  be32 key_counter;
  be32 codepage;  // in replies its readers take the four bytes as they stand
  bytes<1296> spare1;
  host32 timestamp_clock1;  // the clock's words are passed unswapped
  host32 timestamp_clock2;
  std::uint8_t fcid_last_byte;
  std::uint8_t host_clock_set_allowed;
  bytes<17> spare2;
};
static_assert(is_packed<VsanConfig, 1347>);
static_assert(offsetof(VsanConfig, state) == 4);
static_assert(offsetof(VsanConfig, switch_offline) == 8);
static_assert(offsetof(VsanConfig, host_control_switch_offline) == 9);
static_assert(offsetof(VsanConfig, prohibit_host_control) == 10);
static_assert(offsetof(VsanConfig, clock_alert_mode) == 11);
static_assert(offsetof(VsanConfig, user_alert_mode) == 12);
static_assert(offsetof(VsanConfig, prohibit_snmp) == 13);
static_assert(offsetof(VsanConfig, auto_save) == 14);
static_assert(offsetof(VsanConfig, key_counter) == 16);
static_assert(offsetof(VsanConfig, codepage) == 20);
static_assert(offsetof(VsanConfig, timestamp_clock1) == 1320);
static_assert(offsetof(VsanConfig, timestamp_clock2) == 1324);
static_assert(offsetof(VsanConfig, fcid_last_byte) == 1328);
static_assert(offsetof(VsanConfig, host_clock_set_allowed) == 1329);

}  // namespace ficon::wire
