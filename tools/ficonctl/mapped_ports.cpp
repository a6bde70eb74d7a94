#include "mapped_ports.h"

#include <platform/ficon_base.h>
#include <platform/port_manager.h>

#include <algorithm>
#include <array>

#include "interface_index/interface_index.h"
#include "port_table.h"
#include "wire/fcd_status.h"
#include "wire/port_plan.h"

namespace ficon::ctl {
namespace {

constexpr std::uint32_t kNumbersAtOnce = 256;
constexpr std::uint32_t kEntriesAtOnce = 36;

void check(Session& session, std::uint32_t status, const std::string& what) {
  if (status != 0) throw session.failure(status, "cannot read the port map of " + what);
}

std::optional<std::uint32_t> byte_or_none(std::uint8_t byte) {
  return byte == wire::kNoPortByte ? std::nullopt : std::optional<std::uint32_t>(byte);
}

/** A block of positions, read from its begin in spans of what an answer holds. */
std::vector<MappedPort> read_positions(Session& session, std::uint32_t module, bool logical,
                                       std::uint32_t first, std::uint32_t count) {
  const std::string what = logical ? "the logical ports" : "module " + std::to_string(module);
  std::vector<MappedPort> ports;
  while (ports.size() < count) {
    std::array<ficon_cmi_portmap_entry_t, kEntriesAtOnce> entries{};
    std::uint32_t read = 0;
    const auto start = static_cast<std::uint32_t>(ports.size());
    check(session,
          ficon_cmi_get_portmap_entry(session.handle(), Session::word_a(), Session::word_b(),
                                      session.wait(), module, start, logical ? 1 : 0,
                                      entries.data(), &read),
          what);
    if (read == 0 || read > kEntriesAtOnce) break;
    for (std::uint32_t i = 0; i < read; ++i) {
      const ficon_cmi_portmap_entry_t& entry = entries[i];
      ports.push_back({first + start + i, byte_or_none(entry.port_number),
                       byte_or_none(entry.port_address), ntoh_if_index(entry.if_index),
                       entry.state});
    }
  }
  return ports;
}

}  // namespace

PortStateName state_name(std::uint8_t state) {
  constexpr PortStateName kNames[] = {
      {"inter-switch", '=', "#3b6fb6", 34}, {"failed", '!', "#c0392b", 31},
      {"offline", '.', "#b0b0b0", 90},      {"shut down", 'x', "#d9a520", 33},
      {"online", '+', "#2e8b57", 32},       {"unknown", '?', "#707070", 37},
  };
  return kNames[std::min<std::size_t>(state, std::size(kNames) - 1)];
}

std::uint32_t largest_port_number(Session& session) {
  session.handle();  // what it says of is the chassis behind the endpoint that was opened
  return ficon_cmi_get_max_portnumber();
}

std::uint32_t parse_port_number(Session& session, const std::string& text) {
  return parse_number(text, 0, largest_port_number(session), "port number");
}

MappedPort look_up(Session& session, if_index_t if_index, std::uint16_t port_number) {
  constexpr std::uint32_t kExact = 1;
  std::uint16_t port_address = wire::kNoPort;
  const std::uint32_t status =
      ficon_send_get_portmap(session.handle(), Session::word_a(), Session::word_b(), session.wait(),
                             kExact, 0, &if_index, &port_number, &port_address);
  if (status != 0 && status != static_cast<std::uint32_t>(FcdStatus::kNoSuchPort)) {
    throw session.failure(status, "cannot find the port");
  }
  return {std::nullopt, key_or_none(port_number), key_or_none(port_address), if_index};
}

std::vector<MappedPort> read_port_numbers(Session& session, std::uint32_t first,
                                          std::uint32_t last) {
  std::vector<MappedPort> ports;
  for (std::uint32_t from = first; from <= last; from += kNumbersAtOnce) {
    const std::uint32_t to = std::min(last, from + kNumbersAtOnce - 1);
    std::vector<ficon_cmi_portmap_full_entry_t> entries(to - from + 1);
    for (auto& entry : entries) entry = {0, wire::kNoPortByte, 0};
    check(session,
          ficon_cmi_get_portmap_full(session.handle(), Session::word_a(), Session::word_b(),
                                     session.wait(), from, to, entries.data()),
          "port numbers " + std::to_string(from) + " to " + std::to_string(to));
    // The array's begin is cleared: 00 may be the first port's address, or none.
    if (entries[0].if_index == 0 && entries[0].port_address == 0) {
      const MappedPort known = look_up(session, 0, static_cast<std::uint16_t>(from));
      if (!known.port_address) entries[0].port_address = wire::kNoPortByte;
    }
    for (std::uint32_t i = 0; i < entries.size(); ++i) {
      ports.push_back({std::nullopt, from + i, byte_or_none(entries[i].port_address),
                       entries[i].if_index, entries[i].state});
    }
  }
  return ports;
}

std::vector<MappedPort> read_module(Session& session, std::uint32_t module) {
  return read_positions(session, module, false, (module - 1) * wire::kPortsPerModule,
                        wire::kPortsPerModule);
}

std::vector<MappedPort> read_logical(Session& session) {
  return read_positions(session, 0, true, wire::kFirstLogicalPort, wire::kLogicalPorts);
}

std::vector<MappedPort> with_interface(const std::vector<MappedPort>& ports) {
  std::vector<MappedPort> kept;
  std::ranges::copy_if(ports, std::back_inserter(kept),
                       [](const MappedPort& port) { return port.if_index != 0; });
  return kept;
}

std::optional<std::uint32_t> key_or_none(std::uint16_t key) {
  return key == wire::kNoPort ? std::nullopt : std::optional<std::uint32_t>(key);
}

std::string interface_text(if_index_t if_index) {
  return if_index == 0 ? "-" : platform::interface_name(if_index);
}

std::string number_text(const std::optional<std::uint32_t>& port_number) {
  return port_number ? std::to_string(*port_number) : "-";
}

std::string port_address_text(const std::optional<std::uint32_t>& port_address) {
  return port_address ? address_text(*port_address) : "-";
}

if_index_t parse_interface_name(const std::string& text) {
  if (const auto if_index = platform::parse_interface(text)) return *if_index;
  const std::string slots = std::to_string(platform::kSlots);
  const std::string ports = std::to_string(platform::kPortsPerSlot);
  const std::string numbers = std::to_string(platform::kLogicalNumbers);
  throw UsageError("\"" + text + "\" is no interface: fc1/1 to fc" + slots + '/' + ports +
                   ", port-channel1 to port-channel" + numbers + ", fcip1 to fcip" + numbers);
}

Json to_json(const MappedPort& port) {
  Json json;
  if (port.position) json["position"] = *port.position;
  json["port-number"] = port.port_number ? Json(*port.port_number) : Json();
  json["port-address"] = port.port_address ? Json(*port.port_address) : Json();
  json["if-index"] = port.if_index;
  json["interface"] = port.if_index == 0 ? Json() : Json(interface_text(port.if_index));
  json["state"] = state_name(port.state).name;
  return json;
}

Table to_table(const std::vector<MappedPort>& ports) {
  // Ports that were asked for by number do not say where in the port table they stand.
  const bool positions =
      std::ranges::any_of(ports, [](const MappedPort& port) { return port.position.has_value(); });
  std::vector<std::string> header{"NUMBER", "ADDRESS", "INTERFACE", "IF-INDEX", "STATE"};
  if (positions) header.insert(header.begin(), "POSITION");
  Table table(header);
  for (const MappedPort& port : ports) {
    std::vector<std::string> row{
        number_text(port.port_number), port_address_text(port.port_address),
        interface_text(port.if_index), port.if_index == 0 ? "-" : hex(port.if_index, 8),
        state_name(port.state).name};
    if (positions) row.insert(row.begin(), number_text(port.position));
    table.add(row);
  }
  return table;
}

}  // namespace ficon::ctl
