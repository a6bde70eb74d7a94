/** Port numbers: reserved, assigned to interfaces, and bound to port addresses. */
#pragma once

#include "handlers/request.h"

namespace ficon::emulator {

Answer handle_port_number_binding(const Request& request, Switch& model);
Bytes port_number_binding_status_reply(ByteView request, FcdStatus status);

Answer handle_set_port_number(const Request& request, Switch& model);
Bytes set_port_number_status_reply(ByteView request, FcdStatus status);

Answer handle_reserve_port_numbers(const Request& request, Switch& model);
Bytes reserve_port_numbers_status_reply(ByteView request, FcdStatus status);

Answer handle_bind_address_to_interface(const Request& request, Switch& model);
Bytes bind_address_to_interface_status_reply(ByteView request, FcdStatus status);

Answer handle_bind_address_to_number(const Request& request, Switch& model);
Bytes bind_address_to_number_status_reply(ByteView request, FcdStatus status);

}  // namespace ficon::emulator
