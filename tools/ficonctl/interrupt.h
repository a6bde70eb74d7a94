/** Commands that stay until Ctrl-C: they end what they do, and then themselves. */
#pragma once

#include <chrono>

namespace ficon::ctl {

/** From here on, an interrupt or a termination is noted and ends nothing by itself. */
void watch_for_interrupt();
bool interrupted();

/** Waits so long, or until an interrupt. @return whether there was none */
bool pause_unless_interrupted(std::chrono::milliseconds duration);

}  // namespace ficon::ctl
