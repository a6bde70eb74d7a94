/** The process's way to an emulator of its own, where it has registered one. */
#pragma once

#include <string>

namespace ficon::platform {

/** A connected descriptor for an endpoint `embedded:DIR`, or -1 with a sentence in `error`. */
int connect_embedded(const std::string& endpoint, std::string* error = nullptr);

}  // namespace ficon::platform
