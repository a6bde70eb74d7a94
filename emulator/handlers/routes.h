/** Which handler answers which request. */
#pragma once

#include <span>

#include "handlers/request.h"

namespace ficon::emulator {

std::span<const Route> routes();

/** The route of a request, or null when nobody answers it. */
const Route* find_route(const Request& request);

}  // namespace ficon::emulator
