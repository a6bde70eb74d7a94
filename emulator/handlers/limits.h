/** Get-next type, maximum ports and MIH time-out. */
#pragma once

#include "handlers/request.h"

namespace ficon::emulator {

Answer handle_get_next_type(const Request& request, Switch& model);
Answer handle_max_ports(const Request& request, Switch& model);
Bytes limit_status_reply(ByteView request, FcdStatus status);

/** Answers reading alone: setting is not awaited, and what was wrong with it is in the log. */
Answer handle_mih_timeout(const Request& request, Switch& model);
Bytes mih_timeout_status_reply(ByteView request, FcdStatus status);

}  // namespace ficon::emulator
