#include "server/log.h"

#include <chrono>
#include <cstdio>

namespace ficon::emulator {
namespace {

constexpr unsigned kComplaintsASecond = 10;

constexpr const char* kLevelNames[] = {"error", "warning", "info", "debug"};

std::int64_t steady_second() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::seconds>(now).count();
}

}  // namespace

void Log::write(LogLevel level, std::string_view line) {
  if (level > level_) return;
  std::fprintf(stderr, "fcd-emulator: %s: %.*s\n", kLevelNames[static_cast<int>(level)],
               static_cast<int>(line.size()), line.data());
}

void Log::complaint(std::string_view line) {
  if (const std::int64_t now = steady_second(); now != second_) {
    if (suppressed_ != 0) warning(std::to_string(suppressed_) + " more complaints not shown");
    second_ = now;
    written_ = 0;
    suppressed_ = 0;
  }
  if (written_ == kComplaintsASecond) {
    ++suppressed_;
    return;
  }
  ++written_;
  warning(line);
}

}  // namespace ficon::emulator
