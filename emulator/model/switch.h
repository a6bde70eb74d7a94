/**
 * The switch: the root of the model. Plain state and rules; it knows no message and no database.
 *
 * Each rule answers kDone or the status that refuses, and a refused rule has changed nothing.
 * Every change of a VSAN begins with `change_vsan` and ends with `changed`, so that who may
 * change, the key counter, the history and the store are never forgotten.
 */
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "model/hardware.h"
#include "model/history.h"
#include "model/port_identity.h"
#include "model/port_plan.h"
#include "model/prohibit_settings.h"
#include "model/sessions.h"
#include "model/touched.h"
#include "model/vsan.h"

namespace ficon::emulator {

/** The time of day for what is recorded, and a clock that never steps back for ages. */
struct Clocks {
  std::function<std::int64_t()> seconds_since_1970;
  std::function<std::int64_t()> steady_seconds;

  static Clocks of_the_system();
};

struct SwitchOptions {
  std::string store_path = {};  // told to whoever generates configuration text from it
  std::size_t history_capacity = 8192;
  std::size_t max_file_contents = 1024 * 1024;  // bytes of one file
  std::size_t max_files = 64;                   // of a VSAN, IPL among them
  std::shared_ptr<Hardware> hardware = read_hardware({});
  Clocks clocks = Clocks::of_the_system();
};

/** A VSAN, or the status that refuses it. */
struct VsanAccess {
  FcdStatus status = FcdStatus::kDone;
  Vsan* vsan = nullptr;
};

struct ModeChange {
  const ModeField* mode;
  std::uint8_t value;
};

class Switch {
 public:
  explicit Switch(SwitchOptions options = {});

  // Reading.
  bool feature_enabled() const { return feature_enabled_; }
  const std::map<VsanNumber, Vsan>& vsans() const { return vsans_; }
  const Vsan* find_vsan(std::uint32_t number) const;
  /** The FICON VSAN behind `number` in ascending order, or null. */
  const Vsan* next_vsan(std::uint32_t number) const;
  /** Why a VSAN cannot be looked at: its number, or FICON off; kDone when it can. */
  FcdStatus check_vsan(std::uint32_t number) const;

  /** Of the feature's debug output, where one was set. */
  std::optional<std::uint32_t> logging_level() const { return logging_level_; }
  FcdStatus set_logging_level(std::uint32_t level);
  void restore_logging_level(std::uint32_t level) { logging_level_ = level; }

  // The feature and FICON on a VSAN.
  /** @return whether it was off until now */
  bool enable_feature();
  FcdStatus enable_ficon(std::uint32_t vsan, const Asker& asker);
  FcdStatus disable_ficon(std::uint32_t vsan, const Asker& asker);

  // Settings of a VSAN.
  /** All of the modes or, when one value is neither 0 nor 1, none. */
  FcdStatus set_modes(std::uint32_t vsan, const Asker& asker, std::span<const ModeChange> changes);
  FcdStatus set_codepage(std::uint32_t vsan, const Asker& asker, std::uint32_t codepage);
  FcdStatus set_clock(std::uint32_t vsan, const Asker& asker, TimestampClock clock);
  FcdStatus set_fcid_last_byte(std::uint32_t vsan, const Asker& asker, std::uint8_t value);
  FcdStatus increment_key_counter(std::uint32_t vsan, const Asker& asker);
  FcdStatus test_and_increment_key_counter(std::uint32_t vsan, const Asker& asker,
                                           std::uint32_t expected);

  // Limits; the MIH time-out of a VSAN is its own or, set to 0, the switch's.
  const SwitchLimits& limits() const { return limits_; }
  FcdStatus set_get_next_type(std::uint32_t type);
  FcdStatus set_max_ports(std::uint32_t count);
  FcdStatus set_default_mih_timeout(std::uint32_t encoded);
  FcdStatus set_mih_timeout(std::uint32_t vsan, const Asker& asker, std::uint32_t encoded);
  MihTimeout mih_timeout(const Vsan& vsan) const;

  // The lock.
  FcdStatus get_lock(std::uint32_t vsan, const Asker& asker);
  FcdStatus free_lock(std::uint32_t vsan, const Asker& asker);
  FcdStatus reset_lock(std::uint32_t vsan, const Asker& asker);
  /** Seconds that the lock has been held. */
  std::int64_t age_of(const Locks::Holder& holder) const;

  // Ports; what can be done with them stands in port_operations.h.
  platform::Chassis& chassis() { return options_.hardware->chassis; }
  const platform::Chassis& chassis() const { return options_.hardware->chassis; }
  PortPlan& port_plan() { return port_plan_; }
  const PortPlan& port_plan() const { return port_plan_; }
  const ProhibitSettings& prohibit_settings() const { return prohibit_settings_; }
  /** The port behind a port address; nothing of it where the chassis has none there. */
  PortIdentity port_identity(std::uint32_t port_address) const;
  /** The FICON VSAN that the port behind an address has an FCID in; null where it has none. */
  const Vsan* vsan_with_fcid(std::uint32_t port_address) const;

  // Configuration files; what can be done with them stands in file_operations.h.
  /** What a new file of a VSAN begins with. */
  ConfigurationFile new_file(const Vsan& vsan) const;
  const SwitchOptions& options() const { return options_; }

  // The frame of every change.
  /** Whether `asker` may change the VSAN now: number, FICON, requester, prohibitions, lock. */
  VsanAccess change_vsan(std::uint32_t vsan, const Asker& asker);
  /** After a change: counts it, records it and has the VSAN stored. */
  void changed(Vsan& vsan, const Asker& asker, Change change, std::string detail);
  /** After a change that concerns every VSAN: counts it in each, and has them stored. */
  void count_change_everywhere();
  /** Into the history alone: a change of the switch (VSAN 0) or one that no counter counts. */
  void record(VsanNumber vsan, const Asker& asker, Change change, std::string detail);

  // The history, what the store has still to learn, and what belongs to connections.
  History history;
  Touched touched;
  Sessions sessions;

  // Putting back what was stored: no rule is asked and nothing is touched.
  void restore_feature(bool enabled) { feature_enabled_ = enabled; }
  void restore_limits(const SwitchLimits& limits) { limits_ = limits; }
  void restore_prohibit_settings(const ProhibitSettings& settings) {
    prohibit_settings_ = settings;
  }
  Vsan& restore_vsan(VsanNumber number) { return vsans_.try_emplace(number, number).first->second; }

 private:
  PortSet ports_in_access_lists(const Vsan& vsan) const;
  void limits_changed(std::string detail);
  FcdStatus check_requester(const Vsan& vsan, Requester requester) const;

  SwitchOptions options_;
  bool feature_enabled_ = false;
  std::optional<std::uint32_t> logging_level_;
  SwitchLimits limits_;
  PortPlan port_plan_;
  ProhibitSettings prohibit_settings_;
  std::map<VsanNumber, Vsan> vsans_;
};

/** The names of the switch's own objects in the store. */
inline constexpr std::string_view kFeatureObject = "feature";
inline constexpr std::string_view kDebugObject = "debug";
inline constexpr std::string_view kLimitsObject = "limits";
inline constexpr std::string_view kPortsObject = "ports";
inline constexpr std::string_view kProhibitSettingsObject = "prohibit-settings";
std::string history_object(std::uint32_t position);

}  // namespace ficon::emulator
