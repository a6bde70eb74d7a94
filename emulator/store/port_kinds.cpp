/** The port plan and the prohibit settings as JSON, and as records of the saved configuration. */
#include <nlohmann/json.hpp>

#include "store/saved_config.h"
#include "store/stored_kind.h"
#include "wire/port_map.h"
#include "wire/saved_config.h"

namespace ficon::emulator {
namespace {

using nlohmann::json;

void require(bool sense, const char* otherwise) {
  if (!sense) throw std::runtime_error(otherwise);
}

template <class Record>
void append(std::string& bytes, const Record& record) {
  bytes.append(reinterpret_cast<const char*>(&record), sizeof record);
}

json reservations_of(const PortPlan& plan) {
  json list = json::array();
  for (NumberOwner owner = 0; owner <= kModules; ++owner) {
    for (const PortNumberRange& range : plan.reserved_for(owner)) {
      list.push_back({{"module", owner}, {"first", range.first}, {"last", range.last}});
    }
  }
  return list;
}

}  // namespace

std::optional<json> save_ports(const Switch& model, const PathParts&) {
  const PortPlan& plan = model.port_plan();
  json positions = json::array();
  for (std::uint32_t p = 0; p < wire::kPortPositions; ++p) {
    if (plan.number_at(p) == kNoPort) continue;
    positions.push_back({{"position", p}, {"port_number", plan.number_at(p)}});
  }
  json addresses = json::array();
  for (std::uint32_t a = 0; a <= kLastUsablePortAddress; ++a) {
    if (plan.number_of_address(a) == kNoPort) continue;
    addresses.push_back({{"port_address", a}, {"port_number", plan.number_of_address(a)}});
  }
  json interfaces = json::array();
  for (const auto& [number, if_index] : plan.logical_bindings()) {
    interfaces.push_back({{"port_number", number}, {"if_index", if_index}});
  }
  return json{{"reserved", reservations_of(plan)},  // module 0: the logical ports
              {"positions", positions},
              {"addresses", addresses},
              {"logical_interfaces", interfaces}};
}

void load_ports(Switch& model, const PathParts&, const json& value) {
  PortPlan& plan = model.port_plan();
  plan.clear();
  const auto number = [](const json& entry, const char* field) {
    return entry.at(field).get<std::uint32_t>();
  };
  for (const json& entry : value.at("reserved")) {
    const PortNumberRange range{number(entry, "first"), number(entry, "last")};
    require(plan.restore_reservation(number(entry, "module"), {range}), "a reservation collides");
  }
  for (const json& entry : value.at("positions")) {
    require(plan.restore_number(number(entry, "position"), number(entry, "port_number")),
            "a position has a port number that is not its own");
  }
  for (const json& entry : value.at("addresses")) {
    require(plan.restore_address(number(entry, "port_address"), number(entry, "port_number")),
            "a port address has a port number that is none");
  }
  for (const json& entry : value.at("logical_interfaces")) {
    require(plan.restore_binding(number(entry, "port_number"), number(entry, "if_index")),
            "an interface has a port number that is not a logical one");
  }
}

std::optional<json> save_prohibit_settings(const Switch& model, const PathParts&) {
  const ProhibitSettings& settings = model.prohibit_settings();
  return json{{"prohibited_by_default", settings.prohibited_by_default},
              {"acl_not_fcid", settings.acl_not_fcid}};
}

void load_prohibit_settings(Switch& model, const PathParts&, const json& value) {
  model.restore_prohibit_settings(
      {.prohibited_by_default = value.at("prohibited_by_default").get<bool>(),
       .acl_not_fcid = value.at("acl_not_fcid").get<bool>()});
}

void write_port_records(const Switch& model, const PathParts&, SavedRecords& records) {
  const PortPlan& plan = model.port_plan();
  std::string addresses;
  std::string interfaces;
  for (std::uint32_t row = 0; row < plan.rows(); ++row) {
    wire::host16 number{};  // the generator takes the rows as they stand
    number.set(row < kPortAddresses ? plan.number_of_address(row) : kNoPort);
    append(addresses, number);
    wire::be32 if_index{};
    if_index.set(plan.interface_of(row));
    append(interfaces, if_index);
  }
  records[saved_config_key(wire::SavedRecord::kAddressToNumberMap)] = std::move(addresses);
  records[saved_config_key(wire::SavedRecord::kNumberToInterfaceMap)] = std::move(interfaces);
  for (std::uint32_t block = 0; block < wire::kPortTableBlocks; ++block) {
    std::string table;
    for (std::uint32_t p = 0; p < wire::kPortsPerBlock; ++p) {
      const PortNumber number = plan.number_at(block * wire::kPortsPerBlock + p);
      wire::PortTableEntry entry{};
      entry.port_number.set(number);
      entry.port_address.set(plan.address_of(number));
      append(table, entry);
    }
    records[saved_config_key(wire::SavedRecord::kPortTable, block)] = std::move(table);
  }
}

void write_default_prohibit_record(const Switch& model, const PathParts&, SavedRecords& records) {
  wire::host32 word{};
  word.set(model.prohibit_settings().prohibited_by_default ? 1 : 0);
  std::string value;
  append(value, word);
  records[saved_config_key(wire::SavedRecord::kDefaultProhibit)] = std::move(value);
}

}  // namespace ficon::emulator
