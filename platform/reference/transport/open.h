/** A handle for an endpoint that is known to be well-formed. */
#pragma once

#include <ficon_cmi.h>

#include <string>

namespace ficon::platform {

/** `fd`: a connected socket that the handle takes over, or -1 to connect with the first send. */
mts_handle_t open_handle(const std::string& endpoint, int fd);

}  // namespace ficon::platform
