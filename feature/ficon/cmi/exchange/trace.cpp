#include "exchange/trace.h"

#include <platform/diagnostics.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace ficon {
namespace {

constexpr std::uint32_t kHistoryId = 0x730000;
constexpr std::uint32_t kHistorySubtype = 101;
constexpr std::uint32_t kDebugLevel = 1;

}  // namespace

void trace(const char* format, ...) {
  char text[512];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);

  if (sdwrap_hist_event_subtype_check(kHistoryId, kHistorySubtype) == 0) {
    sdwrap_hist_event(kHistoryId, static_cast<std::uint32_t>(std::strlen(text)) + 1, text);
  }
  if (sdwrap_chk_int(kHistorySubtype, 0, 0, 1) != 0) {
    buginf(kDebugLevel, sdwrap_dbg_modname, 0, "%s", text);
  }
}

}  // namespace ficon
