#include "file_text.h"

#include <algorithm>

#include "file_client.h"

namespace ficon::ctl {
namespace {

constexpr const char* kFormat = "ficon-configuration-file";

[[noreturn]] void refuse(const std::string& where, const std::string& expected) {
  throw UsageError("import: " + where + ": " + expected);
}

template <class T>
T member(const Json& object, const char* name, const T& otherwise, const std::string& where) {
  if (!object.contains(name)) return otherwise;
  try {
    return object.at(name).get<T>();
  } catch (const Json::type_error&) {
    refuse(where, std::string("\"") + name + "\" is of the wrong type");
  }
}

void check_members(const Json& object, const std::vector<std::string>& known,
                   const std::string& where) {
  for (const auto& [name, value] : object.items()) {
    if (std::ranges::find(known, name) != known.end()) continue;
    refuse(where, "unknown member \"" + name + "\"" + did_you_mean(name, known));
  }
}

void read_port(const Json& entry, std::size_t index, PortTable& ports, PortSet& seen) {
  const std::string where = "port " + std::to_string(index + 1);
  if (!entry.is_object()) refuse(where, "expected an object");
  check_members(entry, {"address", "name", "blocked", "prohibited"}, where);
  const auto text = member<std::string>(entry, "address", "", where);
  if (text.empty()) refuse(where, "expected an \"address\" from 00 to fd");
  const auto addresses = parse_port_addresses(text);
  if (addresses.size() != 1) refuse(where, "expected one address, not \"" + text + "\"");
  const std::uint32_t address = addresses.front();
  if (seen[address]) refuse(where, "address " + text + " stands twice");
  seen.set(address);
  Port& port = ports[address];
  port.name = member<std::string>(entry, "name", "", where);
  port.blocked = member<bool>(entry, "blocked", false, where);
  const auto prohibited = member<std::string>(entry, "prohibited", "", where);
  if (!prohibited.empty()) port.prohibited = to_set(parse_port_addresses(prohibited));
  if (port.prohibited[address]) refuse(where, "a port cannot be prohibited to itself");
}

void check_symmetry(const PortTable& ports) {
  for (std::uint32_t a = 0; a < kPortCount; ++a) {
    for (std::uint32_t b = 0; b < kPortCount; ++b) {
      if (ports[a].prohibited[b] == ports[b].prohibited[a]) continue;
      refuse("port " + address_text(a),
             "the prohibit with " + address_text(b) + " stands on one side only");
    }
  }
}

}  // namespace

Json file_to_json(const FileText& file) {
  Json ports = Json::array();
  for (std::uint32_t a = 0; a < kPortCount; ++a) {
    const Port& port = file.ports[a];
    if (!port.blocked && port.name.empty() && port.prohibited.none()) continue;
    Json entry{{"address", address_text(a)}};
    if (!port.name.empty()) entry["name"] = port.name;
    if (port.blocked) entry["blocked"] = true;
    if (port.prohibited.any()) entry["prohibited"] = addresses_text(port.prohibited);
    ports.push_back(entry);
  }
  return {{"format", kFormat}, {"version", 1}, {"description", file.description}, {"ports", ports}};
}

FileText file_from_json(const std::string& text) {
  Json json;
  try {
    json = Json::parse(text);
  } catch (const Json::exception& error) {  // a number can be too large for any type, too
    const std::string what = error.what();  // begins with a name of the kind of error, in brackets
    throw UsageError("import: no JSON: " + what.substr(what.find("] ") + 2));
  }
  if (!json.is_object()) refuse("the text", "expected an object");
  check_members(json, {"format", "version", "description", "ports"}, "the text");
  if (member<std::string>(json, "format", "", "the text") != kFormat) {
    refuse("the text", std::string("expected \"format\": \"") + kFormat + "\"");
  }
  if (member<Json>(json, "version", 0, "the text") != 1) refuse("the text", "expected version 1");
  FileText file{};
  file.description = member<std::string>(json, "description", "", "the text");
  if (file.description.size() > kDescriptionLength) {
    refuse("description", "longer than 24 characters");
  }
  const Json ports = member<Json>(json, "ports", Json::array(), "the text");
  if (!ports.is_array()) refuse("ports", "expected an array");
  PortSet seen;
  for (std::size_t i = 0; i < ports.size(); ++i) read_port(ports[i], i, file.ports, seen);
  check_symmetry(file.ports);
  return file;
}

}  // namespace ficon::ctl
