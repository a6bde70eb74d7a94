/** The alert modes: a VSAN can want its operators warned before they disrupt or set something. */
#pragma once

#include "command.h"

namespace ficon::ctl {

/** `--yes`: go on where an alert mode would ask. */
void add_yes_flag(CLI::App& action, Context& context);

/**
 * Where the VSAN's user alert mode is on: asks on a terminal; elsewhere refuses unless `--yes` was
 * given. `what` names the action ("disabling FICON").
 */
void confirm_disruption(Context& context, std::uint32_t vsan, const std::string& what);

/** Where the VSAN's clock alert mode is on: a line that the host normally owns the clock. */
void warn_of_clock(Context& context, std::uint32_t vsan);

}  // namespace ficon::ctl
