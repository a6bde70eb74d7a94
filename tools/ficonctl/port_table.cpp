#include "port_table.h"

#include <cstdio>
#include <map>

namespace ficon::ctl {
namespace {

bool has_settings(const Port& port) {
  return port.blocked || !port.name.empty() || port.prohibited.any();
}

void compare_prohibits(std::vector<std::string>& lines, const std::string& address,
                       const PortSet& before, const PortSet& after) {
  const PortSet added = after & ~before;
  const PortSet removed = before & ~after;
  if (added.any()) lines.push_back(address + ": prohibited to " + addresses_text(added));
  if (removed.any()) lines.push_back(address + ": allowed to " + addresses_text(removed));
}

}  // namespace

std::vector<std::uint32_t> parse_port_addresses(const std::string& text) {
  return expand(parse_ranges(text, "port addresses", [](const std::string& part) {
    const std::uint32_t address = parse_hex(part, 0xff, "port address");
    if (address == wire::kControlUnitPort) {
      throw UsageError("port address fe is the control unit port: it cannot be changed");
    }
    if (address > kLastPortAddress) throw UsageError("port address ff is no port; use 00 to fd");
    return address;
  }));
}

std::string address_text(std::uint32_t address) {
  char text[8];
  std::snprintf(text, sizeof text, "%02x", address);
  return text;
}

std::string addresses_text(const PortSet& addresses) {
  std::string text;
  for (std::uint32_t first = 0; first < addresses.size(); ++first) {
    if (!addresses[first]) continue;
    std::uint32_t last = first;
    while (last + 1 < addresses.size() && addresses[last + 1]) ++last;
    if (!text.empty()) text += ',';
    text += address_text(first);
    if (last != first) text += "-" + address_text(last);
    first = last;
  }
  return text.empty() ? "none" : text;
}

PortSet to_set(const std::vector<std::uint32_t>& addresses) {
  PortSet set;
  for (const std::uint32_t address : addresses) set.set(address);
  return set;
}

std::vector<std::string> differences(const PortTable& before, const PortTable& after) {
  std::vector<std::string> lines;
  for (std::uint32_t i = 0; i < kPortCount; ++i) {
    const std::string address = address_text(i);
    if (before[i].blocked != after[i].blocked) {
      lines.push_back(address + (after[i].blocked ? ": blocked" : ": unblocked"));
    }
    if (before[i].name != after[i].name) {
      lines.push_back(address + ": named \"" + after[i].name + "\" instead of \"" + before[i].name +
                      "\"");
    }
    compare_prohibits(lines, address, before[i].prohibited, after[i].prohibited);
  }
  return lines;
}

std::vector<std::string> findings(const PortTable& ports) {
  std::vector<std::string> lines;
  std::map<std::string, PortSet> by_name;
  PortSet unnamed;
  for (std::uint32_t i = 0; i < kPortCount; ++i) {
    const Port& port = ports[i];
    if (!port.name.empty()) by_name[port.name].set(i);
    if (port.installed && port.name.empty()) unnamed.set(i);
    if (!port.installed && has_settings(port)) {
      lines.push_back(address_text(i) + " has settings but is not installed");
    }
    for (std::uint32_t other = 0; other < kPortCount; ++other) {
      if (port.prohibited[other] && !ports[other].prohibited[i]) {
        lines.push_back(address_text(i) + " prohibits " + address_text(other) +
                        ", which does not prohibit it");
      }
    }
  }
  for (const auto& [name, addresses] : by_name) {
    if (addresses.count() > 1) {
      lines.push_back("the name \"" + name + "\" is given to " + addresses_text(addresses));
    }
  }
  if (unnamed.any()) lines.push_back("installed without a name: " + addresses_text(unnamed));
  return lines;
}

std::vector<std::uint32_t> ports_of_interest(const PortTable& ports) {
  std::vector<std::uint32_t> addresses;
  for (std::uint32_t i = 0; i < kPortCount; ++i) {
    if (ports[i].installed || has_settings(ports[i])) addresses.push_back(i);
  }
  return addresses;
}

Json to_json(const PortTable& ports, const std::vector<std::uint32_t>& addresses) {
  Json list = Json::array();
  for (const std::uint32_t address : addresses) {
    const Port& port = ports[address];
    list.push_back(
        {{"address", address_text(address)},
         {"port-number", port.port_number == wire::kNoPort ? Json() : Json(port.port_number)},
         {"if-index", port.if_index},
         {"installed", port.installed},
         {"name", port.name},
         {"blocked", port.blocked},
         {"prohibited", port.prohibited.none() ? "" : addresses_text(port.prohibited)}});
  }
  return list;
}

Table to_table(const PortTable& ports) {
  Table table({"ADDRESS", "NUMBER", "INSTALLED", "BLOCKED", "NAME", "PROHIBITED TO"});
  for (const std::uint32_t address : ports_of_interest(ports)) {
    const Port& port = ports[address];
    table.add({address_text(address),
               port.port_number == wire::kNoPort ? "-" : std::to_string(port.port_number),
               port.installed ? "yes" : "no", port.blocked ? "yes" : "no",
               port.name.empty() ? "-" : port.name,
               port.prohibited.none() ? "-" : addresses_text(port.prohibited)});
  }
  return table;
}

}  // namespace ficon::ctl
