/** The next port that is really there: what a get-next walk in installed mode looks for. */
#pragma once

#include <ficon_cmi.h>

#include "exchange/allocation.h"
#include "exchange/caller.h"
#include "wire/status.h"

namespace ficon {

/**
 * Hands out the first port of `ports` that belongs to the VSAN and is usable, in a record of its
 * own, or none with a count of 0. `start` is the number that traces call the first one by.
 */
Status pick_installed_port(const Caller& caller, std::uint32_t vsan, std::uint32_t start,
                           const ficon_cmi_port_info_t* ports, std::uint32_t port_count,
                           ficon_cmi_port_info_t** picked, std::uint32_t* count);

}  // namespace ficon
