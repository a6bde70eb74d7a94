/** The switch's own objects as JSON. */
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "store/hex.h"
#include "store/stored_kind.h"
#include "wire/host_data.h"

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

std::optional<json> save_debug(const Switch& model, const PathParts&) {
  if (!model.logging_level()) return std::nullopt;
  return json{{"logging_level", *model.logging_level()}};
}

void load_debug(Switch& model, const PathParts&, const json& value) {
  model.restore_logging_level(value.at("logging_level").get<std::uint32_t>());
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
  value["mih_timeout"] = vsan->mih_timeout.encoded;
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
  vsan.mih_timeout = {value.at("mih_timeout").get<std::uint8_t>()};
}

std::optional<json> save_host_data(const Switch& model, const PathParts& parts) {
  const Vsan* vsan = model.find_vsan(number_in(parts));
  if (vsan == nullptr) return std::nullopt;
  return json{{"bytes", to_hex(vsan->host_data)}};
}

void load_host_data(Switch& model, const PathParts& parts, const json& value) {
  const std::uint32_t number = number_in(parts);
  if (!is_vsan(number)) throw std::runtime_error("no such VSAN number");
  const auto text = value.at("bytes").get<std::string>();
  if (text.size() > 2 * wire::kHostDataSize) throw std::runtime_error("too many bytes");
  std::vector<std::uint8_t> bytes(text.size() / 2);
  from_hex(text, bytes);
  model.restore_vsan(static_cast<VsanNumber>(number)).host_data = std::move(bytes);
}

std::optional<json> save_limits(const Switch& model, const PathParts&) {
  const SwitchLimits& limits = model.limits();
  return json{{"get_next_type", static_cast<std::uint32_t>(limits.get_next_type)},
              {"max_ports", limits.max_ports},
              {"default_mih_timeout", limits.default_mih_timeout.encoded}};
}

void load_limits(Switch& model, const PathParts&, const json& value) {
  model.restore_limits({GetNextType{value.at("get_next_type").get<std::uint32_t>()},
                        value.at("max_ports").get<std::uint32_t>(),
                        {value.at("default_mih_timeout").get<std::uint8_t>()}});
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
