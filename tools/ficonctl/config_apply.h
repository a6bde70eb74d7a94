/** Bringing about settings that lines of configuration ask for: all of them or none. */
#pragma once

#include "config_state.h"

namespace ficon::ctl {

/**
 * Changes what differs, and nothing else. Where the daemon refuses a change, those before it are
 * taken back and its Failure is thrown; the feature stays on, and a logging level that was never
 * set stays set.
 */
void bring_about(Session& session, const ConfigState& from, const ConfigState& to);

}  // namespace ficon::ctl
