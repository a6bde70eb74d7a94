/** The map of port numbers, and the plan that it begins with. */
#include <platform/feature_services.h>
#include <platform/ficon_base.h>
#include <platform/port_manager.h>

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "chassis/current_chassis.h"
#include "interface_index/interface_index.h"
#include "wire/port_plan.h"

using namespace ficon;
using namespace ficon::platform;

int32_t MAX_FICON_PORTS = 0;

namespace {

/** The numbers, then "none" for the rest of the block. */
void fill_block(const std::vector<std::uint16_t>& numbers, std::uint32_t block,
                uint16_t* defaults) {
  std::fill_n(defaults, block, wire::kNoPort);
  std::copy(numbers.begin(), numbers.end(), defaults);
}

/** The port table's positions with the numbers that they have by default. */
void assign_defaults(const Chassis& chassis, std::uint32_t entries, ficon_port_pn_entry_t* table) {
  const auto assign = [&](std::uint32_t position, const std::vector<std::uint16_t>& numbers) {
    for (std::size_t i = 0; i < numbers.size() && position + i < entries; ++i) {
      table[position + i].port_number = numbers[i];
    }
  };
  for (const Module& module : chassis.modules) {
    assign((module.number - 1) * wire::kPortsPerModule, default_port_numbers(chassis, module));
  }
  assign(wire::kFirstLogicalPort, default_logical_port_numbers());
}

/** The address of a port number: its own before the lowest other one. */
std::vector<std::uint16_t> addresses_by_number(std::uint32_t ports, const uint16_t* pa_pn_map) {
  std::vector<std::uint16_t> addresses(ports, wire::kNoPort);
  for (std::uint32_t address = ports; address-- > 0;) {
    const std::uint16_t number = pa_pn_map[address];
    if (number < ports && addresses[number] != number) {
      addresses[number] = static_cast<std::uint16_t>(address);
    }
  }
  return addresses;
}

bool find_logical(if_index_t if_index, const uint32_t* pn_if_map,
                  const ficon_port_pn_entry_t* table, std::uint32_t* entry) {
  const if_index_t wanted = hton_if_index(if_index);
  const auto ports = static_cast<std::uint32_t>(MAX_FICON_PORTS);
  const auto* row = std::find(pn_if_map, pn_if_map + ports, wanted);
  const auto number = static_cast<std::uint32_t>(row - pn_if_map);
  if (number == ports) return false;
  for (std::uint32_t e = wire::kFirstLogicalPort; e < wire::kPortPositions; ++e) {
    if (table[e].port_number != number) continue;
    *entry = e;
    return true;
  }
  return false;
}

}  // namespace

int32_t ficon_get_max_ficon_ports(void) {
  MAX_FICON_PORTS = static_cast<std::int32_t>(current_chassis()->ficon_ports);
  return MAX_FICON_PORTS;
}

uint32_t ficon_cmi_get_max_portnumber(void) {
  return current_chassis()->ficon_ports - 1;
}

uint32_t ficon_pmap_get_pn_to_phyif(uint32_t port_number, if_index_t* if_index, uint32_t rows,
                                    const uint32_t* map) {
  if (port_number >= rows) return ERANGE;
  *if_index = ntoh_if_index(map[port_number]);
  return 0;
}

uint32_t ficon_pmap_get_next_if(if_index_t if_index, if_index_t* next) {
  const auto interfaces = current_chassis()->interfaces();
  const auto found = std::upper_bound(interfaces.begin(), interfaces.end(), if_index);
  if (found == interfaces.end()) return ENOENT;
  *next = *found;
  return 0;
}

uint32_t ficon_pmap_get_last_if(if_index_t* last) {
  const auto interfaces = current_chassis()->interfaces();
  if (interfaces.empty()) return ENOENT;
  *last = interfaces.back();
  return 0;
}

uint32_t ficon_get_default_pn(uint32_t slot, uint32_t logical, uint16_t* defaults) {
  if (logical != 0) {
    fill_block(default_logical_port_numbers(), wire::kLogicalPorts, defaults);
    return 0;
  }
  const auto chassis = current_chassis();
  const Module* module = chassis->module_in_slot(slot);
  fill_block(
      module == nullptr ? std::vector<std::uint16_t>{} : default_port_numbers(*chassis, *module),
      wire::kPortsPerModule, defaults);
  return module == nullptr ? ENODEV : 0;
}

uint32_t ficon_port_to_pn_init(uint32_t entries, ficon_port_pn_entry_t* table, uint32_t ports,
                               const uint16_t* pa_pn_map) {
  for (std::uint32_t e = 0; e < entries; ++e) table[e] = {wire::kNoPort, wire::kNoPort, {}};
  assign_defaults(*current_chassis(), entries, table);
  const auto addresses = addresses_by_number(ports, pa_pn_map);
  for (std::uint32_t e = 0; e < entries; ++e) {
    const std::uint16_t number = table[e].port_number;
    if (number < ports && number != wire::kNoPort) table[e].port_address = addresses[number];
  }
  return 0;
}

uint32_t ficon_pmap_get_if_to_index_with2pmaps(if_index_t if_index, uint32_t* entry,
                                               const uint32_t* pn_if_map,
                                               const ficon_port_pn_entry_t* port_table,
                                               uint32_t physical) {
  const auto interface = interface_of(if_index);
  if (!interface) return EINVAL;
  if (physical == 0) return find_logical(if_index, pn_if_map, port_table, entry) ? 0 : ENOENT;
  const auto chassis = current_chassis();
  const Module* module = chassis->module_in_slot(interface->slot + 1);
  if (module == nullptr || interface->number >= module->ports.size()) return ENODEV;
  *entry = (module->number - 1) * wire::kPortsPerModule + interface->number;
  return 0;
}

uint32_t ficonm_platform_lc_to_slot_b0(uint8_t lc, uint8_t* slot) {
  const auto chassis = current_chassis();
  const Module* module = chassis->module(lc + 1U);
  if (module == nullptr) return ENODEV;
  *slot = static_cast<std::uint8_t>(module->slot - 1);
  return 0;
}

uint32_t ficonm_platform_slot_to_lc_b0(uint8_t slot, uint8_t* lc) {
  const auto chassis = current_chassis();
  const Module* module = chassis->module_in_slot(slot + 1U);
  if (module == nullptr) return ENODEV;
  *lc = static_cast<std::uint8_t>(module->number - 1);
  return 0;
}

uint32_t get_platform_info(platform_info_t* info) {
  info->slot_count = current_chassis()->slots;
  return 0;
}

const char* srg_sw_ver_get(uint32_t /*which*/) {
  // The text outlives every later chassis: callers keep the pointer as long as they like.
  static std::mutex guard;
  static std::set<std::string> versions;
  const std::lock_guard lock(guard);
  return versions.insert(current_chassis()->software_version).first->c_str();
}
