/** Ports as the port map has them: position, port number, port address, interface index, state. */
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "output.h"
#include "session.h"

namespace ficon::ctl {

struct MappedPort {
  std::optional<std::uint32_t> position;     // in the port table, where it was asked by position
  std::optional<std::uint32_t> port_number;  // none: nothing is assigned
  std::optional<std::uint32_t> port_address;
  if_index_t if_index = 0;
  std::uint8_t state = 5;
};

struct PortStateName {
  const char* name;
  char symbol;
  const char* color;  // of the picture
  int ansi;           // of the terminal
};
PortStateName state_name(std::uint8_t state);

/** Of the chassis behind the session's endpoint. */
std::uint32_t largest_port_number(Session& session);
/** Of that chassis; a UsageError for any other. */
std::uint32_t parse_port_number(Session& session, const std::string& text);
/** The port numbers from first to last, in as many requests as they need. */
std::vector<MappedPort> read_port_numbers(Session& session, std::uint32_t first,
                                          std::uint32_t last);
/** The port of an interface or a port number; as much of it as the switch knows. */
MappedPort look_up(Session& session, if_index_t if_index, std::uint16_t port_number);
/** The 64 positions of a module. */
std::vector<MappedPort> read_module(Session& session, std::uint32_t module);
/** The 256 positions of the logical ports. */
std::vector<MappedPort> read_logical(Session& session);
/** Those that have an interface. */
std::vector<MappedPort> with_interface(const std::vector<MappedPort>& ports);

/** A port number or port address, or nothing for wire::kNoPort. */
std::optional<std::uint32_t> key_or_none(std::uint16_t key);
/** "fc1/2", or "-" where there is none. */
std::string interface_text(if_index_t if_index);
std::string number_text(const std::optional<std::uint32_t>& port_number);
std::string port_address_text(const std::optional<std::uint32_t>& port_address);
/** The index of an interface's name; a UsageError where it is none. */
if_index_t parse_interface_name(const std::string& text);

Json to_json(const MappedPort& port);
Table to_table(const std::vector<MappedPort>& ports);

/** A picture of a module in the terminal, and as SVG. */
std::string grid_of(const std::vector<MappedPort>& ports, bool color);
std::string svg_of(const std::vector<MappedPort>& ports, const std::string& title);

}  // namespace ficon::ctl
