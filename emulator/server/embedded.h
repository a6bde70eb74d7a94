/** The emulator inside another process: what stands behind `embedded:DIR`. */
#pragma once

#include <cstddef>

namespace ficon::emulator {

/**
 * Makes sure that an emulator runs in this process on `directory` (created if need be), and
 * connects to it. All connections to one directory share one emulator, which has a thread of its
 * own and ends with the process.
 *
 * @return a connected descriptor, or -1 with a sentence in `error`
 */
int connect_embedded(const char* directory, char* error, std::size_t error_size);

}  // namespace ficon::emulator
