/** FICON on or off on a VSAN. */
#pragma once

#include "handlers/request.h"

namespace ficon::emulator {

Answer handle_ficon_state(const Request& request, Switch& model);
Bytes ficon_state_status_reply(ByteView request, FcdStatus status);

}  // namespace ficon::emulator
