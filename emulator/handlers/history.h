/** The director history, a batch of entries at a time. */
#pragma once

#include "handlers/request.h"

namespace ficon::emulator {

Answer handle_history(const Request& request, Switch& model);
Bytes history_status_reply(ByteView request, FcdStatus status);

}  // namespace ficon::emulator
