/** The host data of a VSAN: read whole, written in pieces. */
#pragma once

#include "handlers/request.h"

namespace ficon::emulator {

Answer handle_get_host_data(const Request& request, Switch& model);
Bytes get_host_data_status_reply(ByteView request, FcdStatus status);

Answer handle_set_host_data(const Request& request, Switch& model);
Bytes set_host_data_status_reply(ByteView request, FcdStatus status);

}  // namespace ficon::emulator
