/** The settings of a VSAN: changed by operation, read by number or in order. */
#pragma once

#include "handlers/request.h"

namespace ficon::emulator {

Answer handle_vsan_config(const Request& request, Switch& model);
Answer handle_vsan_info(const Request& request, Switch& model);

}  // namespace ficon::emulator
