/** The port manager's service, and the description of the chassis. */
#pragma once

#include "handlers/request.h"

namespace ficon::emulator {

Answer handle_chassis_description(const Request& request, Switch& model);
Bytes chassis_description_status_reply(ByteView request, FcdStatus status);

Answer handle_port_config(const Request& request, Switch& model);
Answer handle_transceivers(const Request& request, Switch& model);
Answer handle_trunk_vsans(const Request& request, Switch& model);
Answer handle_module_ports(const Request& request, Switch& model);
Answer handle_auto_created(const Request& request, Switch& model);
Answer handle_set_condition(const Request& request, Switch& model);
Bytes port_manager_status_reply(ByteView request, FcdStatus status);

}  // namespace ficon::emulator
