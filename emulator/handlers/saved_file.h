/** The stored contents of a file: read in slices, written at offsets. */
#pragma once

#include "handlers/request.h"

namespace ficon::emulator {

Answer handle_get_saved_file(const Request& request, Switch& model);
Answer handle_set_saved_file(const Request& request, Switch& model);

}  // namespace ficon::emulator
