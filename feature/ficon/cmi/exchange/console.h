/** The library's lines on standard output: for whoever runs the process, never a result. */
#pragma once

namespace ficon {

[[gnu::format(printf, 1, 2)]] void console(const char* format, ...);

/** Without the "CMI_ERROR: " that the traced parsers put in front of it: intended. */
inline constexpr char kNoTlvs[] = "invalid cmi payload: no tlvs present\n";

}  // namespace ficon
