/** The port map: its tables, the states of interfaces, the walk, and the look-up by FCID. */
#pragma once

#include "handlers/request.h"
#include "wire/port_info_request.h"

namespace ficon::emulator {

class TlvMessage;

/** The selectors of opcode 7856 that ask for the port map. */
Answer port_map_tables(const wire::PortInfoRequest& asked, const TlvMessage& message,
                       const Switch& model);

Answer handle_interface_states(const Request& request, Switch& model);
Bytes interface_states_status_reply(ByteView request, FcdStatus status);

Answer handle_portmap_walk(const Request& request, Switch& model);
Bytes portmap_walk_status_reply(ByteView request, FcdStatus status);

Answer handle_portmap_fcid(const Request& request, Switch& model);
Bytes portmap_fcid_status_reply(ByteView request, FcdStatus status);

}  // namespace ficon::emulator
