/** The socket that clients of other processes connect to. */
#pragma once

#include <string>

namespace ficon::emulator {

/**
 * Listens on a path with mode 0660. A socket left behind by a dead process is replaced; one that
 * somebody answers on is not.
 *
 * @return the descriptor; throws std::runtime_error with a sentence
 */
int listen_at(const std::string& path);

}  // namespace ficon::emulator
