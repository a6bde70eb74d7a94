/** The swap of two ports, named by port number or by interface. */
#pragma once

#include "handlers/request.h"

namespace ficon::emulator {

Answer handle_swap_ports(const Request& request, Switch& model);
Answer handle_swap_interfaces(const Request& request, Switch& model);
Bytes port_swap_status_reply(ByteView request, FcdStatus status);

}  // namespace ficon::emulator
