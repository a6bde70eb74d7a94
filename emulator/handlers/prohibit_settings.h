/** The switch-wide settings of port prohibiting. */
#pragma once

#include "handlers/request.h"

namespace ficon::emulator {

Answer handle_prohibit_settings(const Request& request, Switch& model);
Bytes prohibit_settings_status_reply(ByteView request, FcdStatus status);

Answer handle_acl_downgrade(const Request& request, Switch& model);
Bytes acl_downgrade_status_reply(ByteView request, FcdStatus status);

}  // namespace ficon::emulator
