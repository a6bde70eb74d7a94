/** The plan of port numbers and port addresses, as lines of configuration change it. */
#pragma once

#include <ficon_cmi.h>

#include <array>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "parse.h"
#include "port_table.h"
#include "wire/port_plan.h"

namespace ficon::ctl {

/** Whom port numbers are reserved for: a module by its number, or 0 for the logical ports. */
using NumberOwner = std::uint32_t;
inline constexpr NumberOwner kLogicalPorts = 0;
inline constexpr NumberOwner kLastModule = wire::kFirstLogicalPort / wire::kPortsPerModule;

struct PortPlan {
  std::array<std::uint32_t, wire::kPortPositions> number_at;  // wire::kNoPort: none
  std::array<std::uint32_t, kPortCount> number_of_address;    // the same
  std::map<NumberOwner, std::set<std::uint32_t>> reserved;    // owners with numbers
  std::map<std::uint32_t, if_index_t> logical;                // by their port numbers

  bool operator==(const PortPlan&) const = default;

  /** In front of the owner's first position without one: what configuration text shows. */
  std::vector<std::uint32_t> shown_numbers(NumberOwner owner) const;
  /** All that are reserved for the owner: in the order of their positions, then the others. */
  std::vector<std::uint32_t> all_numbers(NumberOwner owner) const;
  bool is_reserved(NumberOwner owner, std::uint32_t number) const;
  std::optional<std::uint32_t> number_of(if_index_t if_index) const;
  std::optional<std::uint32_t> address_of(std::uint32_t number) const;

  /** Gives an owner these numbers in place of all others, one a position in their order. */
  void reserve(NumberOwner owner, const std::vector<std::uint32_t>& numbers);
  void bind(if_index_t if_index, std::uint32_t number);
  void unbind(if_index_t if_index);
  /** wire::kNoPort: the number has no address any more. */
  void set_address(std::uint32_t number, std::uint32_t address);
};

/** An owner's positions. */
struct Positions {
  std::uint32_t first;
  std::uint32_t count;
};
constexpr Positions positions_of(NumberOwner owner) {
  if (owner == kLogicalPorts) return {wire::kFirstLogicalPort, wire::kLogicalPorts};
  return {(owner - 1) * wire::kPortsPerModule, wire::kPortsPerModule};
}

/** Where a port of a module stands; nothing for other interfaces. */
std::optional<std::uint32_t> position_of(if_index_t if_index);

/** Numbers that follow one another, joined. */
std::vector<NumberRange> ranges_of(const std::vector<std::uint32_t>& numbers);

}  // namespace ficon::ctl
