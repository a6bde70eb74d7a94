/** `--verbose`: each exchange with the daemon as one line to standard error. */
#pragma once

#include <optional>

#include "transport/endpoint.h"
#include "wire/status.h"

namespace ficon::ctl {

/**
 * The status that a reply carries, where its opcode and form say where it stands: the lock record,
 * the FICON state's header, and every TLV array with a header TLV.
 */
std::optional<Status> status_of_reply(const ficon_mts_event_t& event);

/** An observer for `ficon_mts_observe`. */
void print_exchange(const ficon_mts_event_t* event, void* context);

}  // namespace ficon::ctl
