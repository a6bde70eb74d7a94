/** Configuration files: operations, changes and the list of files. */
#pragma once

#include "handlers/request.h"

namespace ficon::emulator {

Answer handle_file_operation(const Request& request, Switch& model);
Answer handle_file_change(const Request& request, Switch& model);
Answer handle_file_info(const Request& request, Switch& model);

/** The status reply of every request whose first TLV is the file request record. */
Bytes file_status_reply(ByteView request, FcdStatus status);

}  // namespace ficon::emulator
