/** From one plan of port numbers and port addresses to another, request by request. */
#pragma once

#include "port_plan.h"
#include "session.h"

namespace ficon::ctl {

/** Throws a Failure where the daemon refuses; what was done before that stays done. */
void change_ports(Session& session, const PortPlan& from, const PortPlan& to);

}  // namespace ficon::ctl
