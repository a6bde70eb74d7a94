/** How one kind of object is kept: as JSON in the table `state`, and back. */
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>

#include "model/switch.h"
#include "store/object_path.h"

namespace ficon::emulator {

struct StoredKind {
  const char* pattern;  // of the object's name
  /** The object's present state; null when it no longer exists. */
  std::optional<nlohmann::json> (*save)(const Switch&, const PathParts&);
  /** Puts it back. Throws when the value makes no sense; the store then refuses to start. */
  void (*load)(Switch&, const PathParts&, const nlohmann::json&);
};

/** The kinds of the switch itself: feature, limits, VSANs, history. */
std::optional<nlohmann::json> save_feature(const Switch&, const PathParts&);
void load_feature(Switch&, const PathParts&, const nlohmann::json&);
std::optional<nlohmann::json> save_debug(const Switch&, const PathParts&);
void load_debug(Switch&, const PathParts&, const nlohmann::json&);
std::optional<nlohmann::json> save_vsan(const Switch&, const PathParts&);
void load_vsan(Switch&, const PathParts&, const nlohmann::json&);
std::optional<nlohmann::json> save_host_data(const Switch&, const PathParts&);
void load_host_data(Switch&, const PathParts&, const nlohmann::json&);
std::optional<nlohmann::json> save_limits(const Switch&, const PathParts&);
void load_limits(Switch&, const PathParts&, const nlohmann::json&);
std::optional<nlohmann::json> save_history(const Switch&, const PathParts&);
void load_history(Switch&, const PathParts&, const nlohmann::json&);

/** The ports of the switch. */
std::optional<nlohmann::json> save_ports(const Switch&, const PathParts&);
void load_ports(Switch&, const PathParts&, const nlohmann::json&);
std::optional<nlohmann::json> save_prohibit_settings(const Switch&, const PathParts&);
void load_prohibit_settings(Switch&, const PathParts&, const nlohmann::json&);

/** The configuration files of a VSAN. */
std::optional<nlohmann::json> save_active_configuration(const Switch&, const PathParts&);
void load_active_configuration(Switch&, const PathParts&, const nlohmann::json&);
std::optional<nlohmann::json> save_file(const Switch&, const PathParts&);
void load_file(Switch&, const PathParts&, const nlohmann::json&);

}  // namespace ficon::emulator
