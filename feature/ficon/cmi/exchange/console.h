/** The library's lines on standard output: for whoever runs the process, never a result. */
#pragma once

namespace ficon {

[[gnu::format(printf, 1, 2)]] void console(const char* format, ...);

inline constexpr char kNoTlvs[] = "invalid cmi payload: no tlvs present\n";

}  // namespace ficon
