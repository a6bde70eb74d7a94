/** Opcode 7856: what a configuration file holds for ports, by port address or by interface. */
#pragma once

#include "handlers/request.h"

namespace ficon::emulator {

Answer handle_port_info(const Request& request, Switch& model);
Bytes port_info_status_reply(ByteView request, FcdStatus status);

}  // namespace ficon::emulator
