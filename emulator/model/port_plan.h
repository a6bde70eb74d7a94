/**
 * Which port number stands at which position of the port table, and which port address and which
 * interface belong to a number. Plain values and the rules that keep them free of collisions; who
 * may change them is the business of `port_operations.h`.
 *
 * A number reaches a port in two steps: it is reserved for a module or for the logical ports, and
 * it is assigned to a position there. A physical position has its interface from the chassis; a
 * logical interface is bound to one of the logical numbers.
 */
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "chassis/chassis.h"
#include "model/configuration_file.h"
#include "model/port_identity.h"
#include "wire/fcd_status.h"
#include "wire/port_plan.h"

namespace ficon::emulator {

using PortNumber = std::uint16_t;  // kNoPort: none

struct PortNumberRange {
  std::uint32_t first;
  std::uint32_t last;  // included

  bool operator==(const PortNumberRange&) const = default;
};

/** Whom numbers are reserved for: a module by its number from 1, or 0 for the logical ports. */
using NumberOwner = std::uint32_t;
inline constexpr NumberOwner kLogicalPorts = 0;
inline constexpr NumberOwner kNobody = 0xff;
inline constexpr std::uint32_t kModules = wire::kFirstLogicalPort / wire::kPortsPerModule;

/** The positions of an owner. */
struct PositionBlock {
  std::uint32_t first;
  std::uint32_t count;
};
constexpr PositionBlock positions_of(NumberOwner owner) {
  if (owner == kLogicalPorts) return {wire::kFirstLogicalPort, wire::kLogicalPorts};
  return {(owner - 1) * wire::kPortsPerModule, wire::kPortsPerModule};
}

/** A refusal and what exactly collides, for people. */
struct PlanVerdict {
  FcdStatus status = FcdStatus::kDone;
  std::string text{};
};

class PortPlan {
 public:
  /** Every module with the numbers it has by default, each address with the number of its value. */
  explicit PortPlan(const platform::Chassis& chassis);

  // Reading.
  PortNumber number_at(std::uint32_t position) const { return numbers_[position]; }
  std::optional<std::uint32_t> position_of(std::uint32_t number) const;
  PortNumber number_of_address(std::uint32_t address) const { return by_address_[address]; }
  /** kNoPort where the number has no address. */
  std::uint16_t address_of(std::uint32_t number) const;
  std::optional<NumberOwner> owner_of(std::uint32_t number) const;
  std::vector<PortNumberRange> reserved_for(NumberOwner owner) const;
  /** 0 for a number without an interface. */
  if_index_t interface_of(std::uint32_t number) const;
  /** The same of every number, a row each: what the port map sends. */
  std::vector<if_index_t> interfaces_by_number() const;
  PortNumber number_of_interface(if_index_t if_index) const;
  /** Where a physical interface stands; null for others. */
  std::optional<std::uint32_t> position_of_interface(if_index_t if_index) const;
  /** Every reserved number, ascending. */
  std::vector<PortNumber> numbers() const;

  // Changing: a refused change has changed nothing.
  /** Gives an owner these numbers in place of those it had, and its positions one each in order. */
  PlanVerdict reserve(NumberOwner owner, const std::vector<PortNumberRange>& ranges);
  /** Takes numbers away from an owner, none given: all that it has. */
  PlanVerdict release(NumberOwner owner, const std::vector<PortNumberRange>& ranges);
  FcdStatus assign(if_index_t if_index, std::uint32_t number);
  /** 512 takes the number that there is. */
  FcdStatus unassign(if_index_t if_index, std::uint32_t number);
  /** 512 leaves the address without a number. */
  FcdStatus bind_address(std::uint32_t address, std::uint32_t number);
  void swap_addresses(std::uint32_t first, std::uint32_t second);

  // Putting back what was stored; false when it makes no sense.
  bool restore_reservation(NumberOwner owner, const std::vector<PortNumberRange>& ranges);
  bool restore_number(std::uint32_t position, std::uint32_t number);
  bool restore_binding(std::uint32_t number, if_index_t if_index);
  bool restore_address(std::uint32_t address, std::uint32_t number);
  /** Nothing reserved, assigned or bound: what stored state is put into. */
  void clear();

  bool is_number(std::uint32_t number) const {
    return number < chassis_->ficon_ports && number != kNoPort && number != kControlUnitPort;
  }
  std::uint32_t rows() const { return chassis_->ficon_ports; }
  const std::map<PortNumber, if_index_t>& logical_bindings() const { return logical_; }

 private:
  PlanVerdict check_owner(NumberOwner owner) const;
  PlanVerdict check_ranges(NumberOwner owner, const std::vector<PortNumberRange>& ranges) const;
  void take_away(PortNumber number);
  std::optional<std::uint32_t> position_within(NumberOwner owner, std::uint32_t number) const;

  const platform::Chassis* chassis_;
  std::array<PortNumber, wire::kPortPositions> numbers_;  // by position
  std::array<PortNumber, kPortAddresses> by_address_;
  std::array<NumberOwner, wire::kPortPositions> owners_;  // by number; kNobody: not reserved
  std::map<PortNumber, if_index_t> logical_;  // numbers of the logical ports with an interface
};

/** "16-20", "18". */
std::string text_of(const PortNumberRange& range);
/** "module 3", "the logical ports". */
std::string name_of(NumberOwner owner);

}  // namespace ficon::emulator
