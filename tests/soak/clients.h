/** The processes that use the daemon until they are told to stop. */
#pragma once

#include <string>

#include "shared.h"

namespace ficon::soak {

/** Changes a VSAN of its own through the library and reads what it likes. */
void run_writer(Shared& shared, std::uint32_t index, const std::string& endpoint);
/** Runs ficonctl, one command after another. */
void run_tool(Shared& shared, const std::string& endpoint);

/** Checks a writer's promises against what the daemon says. */
bool keeps_promises(Writer& writer, std::uint32_t index, const std::string& endpoint);
bool enable_vsan(std::uint32_t index, const std::string& endpoint);

}  // namespace ficon::soak
