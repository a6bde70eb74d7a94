/** What lines of configuration make of the settings, and why some cannot be. */
#include <algorithm>

#include "chassis/current_chassis.h"
#include "config_state.h"
#include "interface_index/interface_index.h"
#include "mapped_ports.h"
#include "port_requests.h"
#include "wire/port_plan.h"

namespace ficon::ctl {
namespace {

using Kind = ConfigLine::Kind;

constexpr std::uint32_t kControlUnitPort = 0xfe;

std::string number_name(std::uint32_t number) {
  return "port number " + std::to_string(number);
}

std::optional<NumberOwner> module_in(std::uint32_t slot) {
  const auto chassis = platform::current_chassis();
  const platform::Module* module = chassis->module_in_slot(slot);
  return module == nullptr ? std::nullopt : std::optional(module->number);
}

NumberOwner owner_of(const ConfigLine& line) {
  if (line.kind == Kind::kLogicalNumbers || line.kind == Kind::kNoLogicalNumbers) {
    return kLogicalPorts;
  }
  if (const auto module = module_in(line.value)) return *module;
  throw UsageError("there is no module in slot " + std::to_string(line.value));
}

void reserve(const ConfigLine& line, PortPlan& plan) {
  const NumberOwner owner = owner_of(line);
  const std::uint32_t room = positions_of(owner).count;
  if (line.numbers.size() > room) {
    throw UsageError(std::to_string(line.numbers.size()) + " port numbers are more than the " +
                     std::to_string(room) + " positions of " + name_of(owner));
  }
  Reservation checked(ranges_of(line.numbers));  // it must fit a request
  if (std::ranges::find(line.numbers, kControlUnitPort) != line.numbers.end()) {
    throw UsageError(number_name(kControlUnitPort) + " belongs to the control unit port");
  }
  plan.reserve(owner, line.numbers);
}

void remove_logical(const ConfigLine& line, PortPlan& plan) {
  std::vector<std::uint32_t> left = plan.all_numbers(kLogicalPorts);
  std::erase_if(left, [&](std::uint32_t number) {
    return std::ranges::find(line.numbers, number) != line.numbers.end();
  });
  plan.reserve(kLogicalPorts, left);
}

void bind(const ConfigLine& line, PortPlan& plan) {
  const std::string name = platform::interface_name(line.if_index);
  if (position_of(line.if_index)) {
    throw UsageError(name + " has its port number from its slot");
  }
  const auto chassis = platform::current_chassis();
  if (chassis->port(line.if_index)->auto_created) {
    throw UsageError(name + " was made by the system and gets no port number");
  }
  if (!plan.is_reserved(kLogicalPorts, line.value)) {
    throw UsageError(number_name(line.value) + " is not reserved for the logical ports");
  }
  plan.bind(line.if_index, line.value);
}

void set_address(const ConfigLine& line, PortPlan& plan) {
  const auto number = plan.number_of(line.if_index);
  if (!number) {
    throw UsageError(platform::interface_name(line.if_index) + " has no port number");
  }
  plan.set_address(*number, line.value);
}

void take(const ConfigLine& line, ConfigState& state) {
  switch (line.kind) {
    case Kind::kFeature:
      state.feature = true;
      return;
    case Kind::kVsan:
      if (!state.feature) throw UsageError("\"feature ficon\" is missing: the feature is off");
      state.vsans.insert(line.value);
      return;
    case Kind::kDefaultProhibit:
      state.default_prohibit = true;
      return;
    case Kind::kMihTimeout:
      state.mih_timeout = line.value;
      return;
    case Kind::kSlotNumbers:
    case Kind::kNoSlotNumbers:
    case Kind::kLogicalNumbers:
      return reserve(line, state.ports);
    case Kind::kNoLogicalNumbers:
      return remove_logical(line, state.ports);
    case Kind::kPortNumber:
      return bind(line, state.ports);
    case Kind::kPortAddress:
      return set_address(line, state.ports);
    case Kind::kLoggingLevel:
      state.logging_level = line.value;
      return;
  }
}

/** Numbers of a line that somebody else has after all lines. */
void check_owners(const ConfigLine& line, const PortPlan& plan) {
  const NumberOwner owner = owner_of(line);
  for (const auto& [other, numbers] : plan.reserved) {
    if (other == owner) continue;
    for (const std::uint32_t number : line.numbers) {
      if (!numbers.contains(number)) continue;
      throw UsageError(number_name(number) + " is reserved for " + name_of(other));
    }
  }
}

/** An interface must not lose its number to another one unless lines say what becomes of it. */
void check_binding(const ConfigLine& line, const PortPlan& before, const PortPlan& after) {
  const auto bound = before.logical.find(line.value);
  if (bound == before.logical.end() || bound->second == line.if_index) return;
  if (after.number_of(bound->second)) return;
  throw UsageError(number_name(line.value) + " belongs to " +
                   platform::interface_name(bound->second));
}

void check(const ConfigLine& line, const ConfigState& before, const ConfigState& after) {
  if (line.kind == Kind::kSlotNumbers || line.kind == Kind::kLogicalNumbers) {
    check_owners(line, after.ports);
  }
  if (line.kind == Kind::kPortNumber) check_binding(line, before.ports, after.ports);
  if (!holds(line, after)) throw UsageError("another line says otherwise");
}

void require_interface(const ConfigLine& line) {
  if (line.if_index == 0 || platform::current_chassis()->port(line.if_index) != nullptr) return;
  throw UsageError("this switch has no " + platform::interface_name(line.if_index));
}

}  // namespace

bool holds(const ConfigLine& line, const ConfigState& state) {
  const PortPlan& ports = state.ports;
  switch (line.kind) {
    case Kind::kFeature:
      return state.feature;
    case Kind::kVsan:
      return state.vsans.contains(line.value);
    case Kind::kDefaultProhibit:
      return state.default_prohibit;
    case Kind::kMihTimeout:
      return state.mih_timeout == line.value;
    case Kind::kSlotNumbers:
    case Kind::kNoSlotNumbers:
    case Kind::kLogicalNumbers:
      return ports.shown_numbers(owner_of(line)) == line.numbers;
    case Kind::kNoLogicalNumbers: {
      const auto shown = ports.shown_numbers(kLogicalPorts);
      return std::ranges::none_of(line.numbers, [&](std::uint32_t number) {
        return std::ranges::find(shown, number) != shown.end();
      });
    }
    case Kind::kPortNumber:
      return ports.number_of(line.if_index) == line.value;
    case Kind::kPortAddress: {
      const auto number = ports.number_of(line.if_index);
      return number && ports.address_of(*number).value_or(wire::kNoPort) == line.value;
    }
    case Kind::kLoggingLevel:
      return state.logging_level == line.value;
  }
  return false;
}

ConfigState with_lines(ConfigState state, const std::vector<ConfigLine>& lines) {
  const ConfigState before = state;
  std::vector<ConfigLine> ordered = lines;
  std::ranges::stable_sort(ordered, {}, &ConfigLine::kind);
  std::map<std::size_t, std::string> wrong;
  const auto judge = [&](const ConfigLine& line, auto step) {
    if (wrong.contains(line.line)) return;
    try {
      step(line);
    } catch (const UsageError& error) {
      wrong[line.line] = error.what();
    }
  };
  for (const ConfigLine& each : ordered) {
    judge(each, [&](const ConfigLine& line) {
      require_interface(line);
      if (!holds(line, state)) take(line, state);
    });
  }
  for (const ConfigLine& each : ordered) {
    judge(each, [&](const ConfigLine& line) { check(line, before, state); });
  }
  Complaints complaints;
  for (const auto& [line, what] : wrong) complaints.add(line, what);
  complaints.settle();
  return state;
}

}  // namespace ficon::ctl
