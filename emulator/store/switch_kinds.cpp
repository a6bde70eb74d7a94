/** The switch's own objects as JSON. */
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "store/stored_kind.h"

namespace ficon::emulator {
namespace {

using nlohmann::json;

struct NamedMode {
  const char* name;
  bool Modes::*field;
};
constexpr NamedMode kModes[] = {
    {"switch_offline", &Modes::switch_offline},
    {"host_control_switch_offline", &Modes::host_control_switch_offline},
    {"prohibit_host_control", &Modes::prohibit_host_control},
    {"clock_alert_mode", &Modes::clock_alert_mode},
    {"user_alert_mode", &Modes::user_alert_mode},
    {"prohibit_snmp", &Modes::prohibit_snmp},
    {"auto_save", &Modes::auto_save},
    {"host_clock_set_allowed", &Modes::host_clock_set_allowed},
};

std::uint32_t number_in(const PathParts& parts) {
  const auto number = path_number(parts.at(0));
  if (!number) throw std::runtime_error("the name holds no number");
  return *number;
}

}  // namespace

std::optional<json> save_feature(const Switch& model, const PathParts&) {
  return json{{"enabled", model.feature_enabled()}};
}

void load_feature(Switch& model, const PathParts&, const json& value) {
  model.restore_feature(value.at("enabled").get<bool>());
}

std::optional<json> save_vsan(const Switch& model, const PathParts& parts) {
  const Vsan* vsan = model.find_vsan(number_in(parts));
  if (vsan == nullptr) return std::nullopt;
  json value;
  for (const NamedMode& mode : kModes) value[mode.name] = vsan->modes.*mode.field;
  value["key_counter"] = vsan->key_counter;
  value["codepage"] = vsan->codepage;
  value["clock"] = {vsan->clock.first, vsan->clock.second};
  value["fcid_last_byte"] = vsan->fcid_last_byte;
  return value;
}

void load_vsan(Switch& model, const PathParts& parts, const json& value) {
  const std::uint32_t number = number_in(parts);
  if (!is_vsan(number)) throw std::runtime_error("no such VSAN number");
  Vsan& vsan = model.restore_vsan(static_cast<VsanNumber>(number));
  for (const NamedMode& mode : kModes) vsan.modes.*mode.field = value.at(mode.name).get<bool>();
  vsan.key_counter = value.at("key_counter").get<std::uint32_t>();
  vsan.codepage = value.at("codepage").get<std::uint32_t>();
  vsan.clock = {value.at("clock").at(0).get<std::uint32_t>(),
                value.at("clock").at(1).get<std::uint32_t>()};
  vsan.fcid_last_byte = value.at("fcid_last_byte").get<std::uint8_t>();
}

std::optional<json> save_history(const Switch& model, const PathParts& parts) {
  const HistoryEntry* entry = model.history.at(number_in(parts));
  if (entry == nullptr) return std::nullopt;
  return json{{"time", entry->time},
              {"vsan", entry->vsan},
              {"requester", static_cast<std::uint8_t>(entry->requester)},
              {"change", static_cast<std::uint8_t>(entry->change)},
              {"detail", entry->detail}};
}

void load_history(Switch& model, const PathParts& parts, const json& value) {
  model.history.restore({.position = number_in(parts),
                         .time = value.at("time").get<std::int64_t>(),
                         .vsan = value.at("vsan").get<std::uint16_t>(),
                         .requester = Requester{value.at("requester").get<std::uint8_t>()},
                         .change = Change{value.at("change").get<std::uint8_t>()},
                         .detail = value.at("detail").get<std::string>()});
}

}  // namespace ficon::emulator
