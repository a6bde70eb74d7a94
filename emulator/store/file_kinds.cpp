/** Configuration files in the store: a header, and the ports that have settings. */
#include <nlohmann/json.hpp>

#include "store/hex.h"
#include "store/stored_kind.h"

namespace ficon::emulator {
namespace {

using nlohmann::json;

std::vector<std::uint32_t> addresses_in(const PortSet& set) {
  std::vector<std::uint32_t> addresses;
  for (std::uint32_t a = 0; a < kPortAddresses; ++a) {
    if (set[a]) addresses.push_back(a);
  }
  return addresses;
}

json to_json(const ConfigurationFile& file) {
  json ports = json::array();
  for (std::uint32_t address = 0; address < kPortAddresses; ++address) {
    const PortSettings& port = file.port(address);
    if (port == PortSettings{}) continue;
    ports.push_back({{"address", address},
                     {"blocked", port.blocked},
                     {"name", to_hex(port.name)},
                     {"prohibited", addresses_in(port.prohibited)}});
  }
  return {{"header", to_hex(file.header)}, {"ports", ports}, {"notes", to_hex(file.notes)}};
}

ConfigurationFile from_json(const json& value) {
  ConfigurationFile file;
  from_hex(value.at("header").get<std::string>(), file.header);
  const auto notes = value.at("notes").get<std::string>();
  file.notes.resize(notes.size() / 2);
  from_hex(notes, file.notes);
  for (const json& entry : value.at("ports")) {
    const auto address = entry.at("address").get<std::uint32_t>();
    if (check_port_address(address) != FcdStatus::kDone) {
      throw std::runtime_error("a port address is none");
    }
    PortSettings port;
    port.blocked = entry.at("blocked").get<bool>();
    from_hex(entry.at("name").get<std::string>(), port.name);
    for (const json& other : entry.at("prohibited")) {
      const auto with = other.get<std::uint32_t>();
      if (check_port_address(with) != FcdStatus::kDone) {
        throw std::runtime_error("a prohibit concerns no port");
      }
      port.prohibited.set(with);
    }
    file.restore_port(address, port);
  }
  if (!file.is_consistent()) throw std::runtime_error("a prohibit stands on one side only");
  return file;
}

std::uint32_t vsan_in(const PathParts& parts) {
  return path_number(parts.at(0)).value_or(0);
}

Vsan& owner(Switch& model, const PathParts& parts) {
  const std::uint32_t number = vsan_in(parts);
  if (model.find_vsan(number) == nullptr) throw std::runtime_error("its VSAN is not there");
  return model.restore_vsan(static_cast<VsanNumber>(number));
}

}  // namespace

std::optional<json> save_active_configuration(const Switch& model, const PathParts& parts) {
  const Vsan* vsan = model.find_vsan(vsan_in(parts));
  return vsan == nullptr ? std::nullopt : std::optional(to_json(vsan->files.active));
}

void load_active_configuration(Switch& model, const PathParts& parts, const json& value) {
  owner(model, parts).files.active = from_json(value);
}

std::optional<json> save_file(const Switch& model, const PathParts& parts) {
  const Vsan* vsan = model.find_vsan(vsan_in(parts));
  const auto name = file_name_from(parts.at(1));
  if (vsan == nullptr || !name || !vsan->files.named.contains(*name)) return std::nullopt;
  return to_json(vsan->files.named.at(*name));
}

void load_file(Switch& model, const PathParts& parts, const json& value) {
  const auto name = file_name_from(parts.at(1));
  if (!name) throw std::runtime_error("its name is no file name");
  owner(model, parts).files.named[*name] = from_json(value);
}

}  // namespace ficon::emulator
