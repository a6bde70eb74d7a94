/** Applying configuration text: a plan of what differs, carried out whole or taken back. */
#pragma once

#include <string>
#include <vector>

#include "config_text.h"
#include "session.h"

namespace ficon::ctl {

/** The lines of `wanted` that the running configuration does not have yet. */
std::vector<ConfigLine> plan_config(Session& session, const std::vector<ConfigLine>& wanted);

/** Carries the plan out. Where a line is refused, the lines before it are taken back. */
void carry_out(Session& session, const std::vector<ConfigLine>& plan);

}  // namespace ficon::ctl
