#include "exchange/console.h"

#include <cstdarg>
#include <cstdio>

namespace ficon {

void console(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::vprintf(format, arguments);
  va_end(arguments);
}

}  // namespace ficon
