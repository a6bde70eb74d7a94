/** The chassis that the functions without a handle speak of. */
#pragma once

#include <memory>
#include <string>

#include "chassis/chassis.h"

namespace ficon::platform {

/**
 * The chassis behind the endpoint opened last: asked for once, then kept until another endpoint is
 * opened. The built-in one before that, and while the emulator does not answer. Any thread.
 */
std::shared_ptr<const Chassis> current_chassis();

/** The transport says which endpoint was opened. */
void chassis_endpoint_opened(const std::string& endpoint);

}  // namespace ficon::platform
