/** The fcd lock: get, free, reset, status. */
#pragma once

#include "handlers/request.h"

namespace ficon::emulator {

Answer handle_lock(const Request& request, Switch& model);
Bytes lock_status_reply(ByteView request, FcdStatus status);

}  // namespace ficon::emulator
