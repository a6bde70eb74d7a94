#include "ports/port_states.h"

namespace ficon {

wire::PortState state_from(const wire::InterfaceState& record) {
  using enum wire::PortState;
  if ((record.flags & wire::kInterfaceStateMask) == wire::kInterfaceOnline) return kOnline;
  if (record.flags & wire::kInterfaceFailed) return kFailed;
  return record.reason == wire::kReasonAdminDown ? kAdminDown : kOffline;
}

wire::InterfaceState interface_query(const pm_cmi_port_config_t& port) {
  wire::InterfaceState query{};
  set_interface(query.if_index, port.if_index);
  query.port.set(wire::kNoPort);
  query.port_vsan.set(port.port_vsan);
  query.detail.set(1);
  return query;
}

}  // namespace ficon
