/** What the configuration text needs beside fcd's requests: where it is, and keeping it. */
#pragma once

#include "handlers/request.h"

namespace ficon::emulator {

Answer handle_store_path(const Request& request, Switch& model);
Answer handle_save_startup(const Request& request, Switch& model);
Answer handle_set_logging_level(const Request& request, Switch& model);
Bytes configuration_status_reply(ByteView request, FcdStatus status);

}  // namespace ficon::emulator
