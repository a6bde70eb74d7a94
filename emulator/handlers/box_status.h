/** What the daemon says about itself as a whole. */
#pragma once

#include "handlers/request.h"

namespace ficon::emulator {

Answer handle_box_status(const Request& request, Switch& model);
Bytes box_status_reply(ByteView request, FcdStatus status);

}  // namespace ficon::emulator
