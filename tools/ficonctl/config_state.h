/** The settings that lines of configuration speak of, and what lines make of them. */
#pragma once

#include <optional>
#include <set>
#include <vector>

#include "config_line.h"
#include "port_plan.h"
#include "session.h"

namespace ficon::ctl {

struct ConfigState {
  bool feature = false;
  std::set<std::uint32_t> vsans;
  bool default_prohibit = false;
  std::uint32_t mih_timeout = 0;               // seconds
  std::optional<std::uint32_t> logging_level;  // none: never set
  PortPlan ports;

  bool operator==(const ConfigState&) const = default;
};

/** The running settings, out of the emulator's store and from the emulator itself. */
ConfigState read_state(Session& session);

/** Whether the line says what is so already. */
bool holds(const ConfigLine& line, const ConfigState& state);

/**
 * The settings after all of the lines. A UsageError names each line that cannot be, on this switch
 * or beside the others, and why.
 */
ConfigState with_lines(ConfigState state, const std::vector<ConfigLine>& lines);

}  // namespace ficon::ctl
