/** The ports of a configuration file as people see them, and what differs between two. */
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <string>
#include <vector>

#include "output.h"
#include "parse.h"
#include "wire/port_plan.h"

namespace ficon::ctl {

inline constexpr std::uint32_t kLastPortAddress = 0xfd;
inline constexpr std::size_t kPortCount = kLastPortAddress + 1;
inline constexpr std::size_t kPortNameLength = 24;

using PortSet = std::bitset<256>;

struct Port {
  std::uint32_t port_number = wire::kNoPort;
  std::uint32_t if_index = 0;
  bool installed = false;
  bool blocked = false;
  std::string name;
  PortSet prohibited;
};

/** By port address, 00 to fd. */
using PortTable = std::array<Port, kPortCount>;

/** Ranges and lists of port addresses, in bare hexadecimal: `1a-2f,40`. */
std::vector<std::uint32_t> parse_port_addresses(const std::string& text);

/** Two digits. */
std::string address_text(std::uint32_t address);
/** `1a-2f,40`, or "none". */
std::string addresses_text(const PortSet& addresses);
PortSet to_set(const std::vector<std::uint32_t>& addresses);

/** One line a difference, for people: "1a: blocked", "1a: no longer prohibited to 20-2f". */
std::vector<std::string> differences(const PortTable& before, const PortTable& after);

/** What an operator should look at: names twice, one-sided prohibits, ports not installed. */
std::vector<std::string> findings(const PortTable& ports);

/** The ports that are installed or have settings. */
std::vector<std::uint32_t> ports_of_interest(const PortTable& ports);

Json to_json(const PortTable& ports, const std::vector<std::uint32_t>& addresses);
Table to_table(const PortTable& ports);

}  // namespace ficon::ctl
