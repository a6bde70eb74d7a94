/** The product identification block: a range of records. */
#pragma once

#include "handlers/request.h"

namespace ficon::emulator {

Answer handle_pib(const Request& request, Switch& model);
Bytes pib_status_reply(ByteView request, FcdStatus status);

}  // namespace ficon::emulator
