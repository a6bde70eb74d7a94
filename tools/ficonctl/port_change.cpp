#include "port_change.h"

#include <algorithm>

#include "chassis/current_chassis.h"
#include "mapped_ports.h"
#include "port_requests.h"
#include "wire/port_plan.h"

namespace ficon::ctl {
namespace {

/** Takes the addresses away that change, so that none of them is in the way of another. */
void clear_addresses(Session& session, const PortPlan& from, const PortPlan& to) {
  for (std::uint16_t address = 0; address < kPortCount; ++address) {
    const std::uint32_t number = from.number_of_address[address];
    if (number == wire::kNoPort || number == to.number_of_address[address]) continue;
    session.require("cannot free port address " + address_text(address), ficon_cmi_set_pa_pn,
                    address, wire::kNoPort);
  }
}

void set_addresses(Session& session, const PortPlan& from, const PortPlan& to) {
  for (std::uint16_t address = 0; address < kPortCount; ++address) {
    const std::uint32_t number = to.number_of_address[address];
    if (number == wire::kNoPort || number == from.number_of_address[address]) continue;
    session.require("cannot bind port address " + address_text(address), ficon_cmi_set_pa_pn,
                    address, static_cast<std::uint16_t>(number));
  }
}

bool same_numbers(const PortPlan& from, const PortPlan& to, NumberOwner owner) {
  const auto [first, count] = positions_of(owner);
  return from.all_numbers(owner) == to.all_numbers(owner) &&
         std::equal(from.number_at.begin() + first, from.number_at.begin() + first + count,
                    to.number_at.begin() + first);
}

/** Before anybody takes numbers, those that others are to have are released. */
void release(Session& session, const PortPlan& from, const PortPlan& to, NumberOwner owner) {
  std::vector<std::uint32_t> released = from.all_numbers(owner);
  std::erase_if(released, [&](std::uint32_t number) { return to.is_reserved(owner, number); });
  if (released.empty()) return;
  std::ranges::sort(released);
  Reservation ranges(ranges_of(released));
  ask(session, kRelease, owner, ranges, "cannot release port numbers of " + name_of(owner));
}

/** The numbers in their order; afterwards they stand from the owner's first position on. */
void reserve(Session& session, const PortPlan& to, NumberOwner owner) {
  const std::vector<std::uint32_t> numbers = to.all_numbers(owner);
  if (numbers.empty()) return;
  Reservation ranges(ranges_of(numbers));
  ask(session, kReserve, owner, ranges, "cannot reserve port numbers for " + name_of(owner));
}

/** Interfaces of a module whose numbers are not simply in the order of their positions. */
void place(Session& session, const PortPlan& to, NumberOwner owner) {
  PortPlan reserved{};
  reserved.reserve(owner, to.all_numbers(owner));
  std::vector<std::pair<if_index_t, std::uint32_t>> moved;
  for (const if_index_t if_index : platform::current_chassis()->interfaces()) {
    const auto position = position_of(if_index);
    if (!position || *position / wire::kPortsPerModule + 1 != owner) continue;
    const std::uint32_t number = to.number_at[*position];
    if (reserved.number_at[*position] == number) continue;
    if (reserved.number_at[*position] != wire::kNoPort) {
      assign_number(session, if_index, wire::kNoPort);
    }
    if (number != wire::kNoPort) moved.emplace_back(if_index, number);
  }
  for (const auto& [if_index, number] : moved) assign_number(session, if_index, number);
}

/** Releasing and reserving keep the interfaces of logical numbers that stay. */
void bind_logical(Session& session, const PortPlan& from, const PortPlan& to) {
  for (const auto& [number, if_index] : from.logical) {
    const auto kept = to.logical.find(number);
    const bool same = kept != to.logical.end() && kept->second == if_index;
    if (!same && to.is_reserved(kLogicalPorts, number)) {
      assign_number(session, if_index, wire::kNoPort);
    }
  }
  for (const auto& [number, if_index] : to.logical) {
    const auto before = from.logical.find(number);
    const bool same = before != from.logical.end() && before->second == if_index;
    if (!same) assign_number(session, if_index, number);
  }
}

}  // namespace

void change_ports(Session& session, const PortPlan& from, const PortPlan& to) {
  clear_addresses(session, from, to);
  std::vector<NumberOwner> owners;
  for (NumberOwner owner = 0; owner <= kLastModule; ++owner) {
    if (!same_numbers(from, to, owner)) owners.push_back(owner);
  }
  for (const NumberOwner owner : owners) release(session, from, to, owner);
  for (const NumberOwner owner : owners) {
    reserve(session, to, owner);
    if (owner != kLogicalPorts) place(session, to, owner);
  }
  bind_logical(session, from, to);
  set_addresses(session, from, to);
}

}  // namespace ficon::ctl
