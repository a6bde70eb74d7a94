/**
 * The debug trace: the event history when it takes the library's events, and the debug channel when
 * it is on. Never a result.
 */
#pragma once

namespace ficon {

/** Text beyond 511 characters is cut. */
[[gnu::format(printf, 1, 2)]] void trace(const char* format, ...);

}  // namespace ficon
