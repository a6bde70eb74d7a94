/** The switch services beside fcd: the FICON base library's and the feature manager's. */
#pragma once

#include "handlers/request.h"

namespace ficon::emulator {

Answer handle_enabled_vsans(const Request& request, Switch& model);
Bytes enabled_vsans_status_reply(ByteView request, FcdStatus status);

Answer handle_enable_feature(const Request& request, Switch& model);
Bytes enable_feature_status_reply(ByteView request, FcdStatus status);

}  // namespace ficon::emulator
