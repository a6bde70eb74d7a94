/** The emulator's log: lines on standard error; complaints about clients are rate-limited. */
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ficon::emulator {

enum class LogLevel { kError, kWarning, kInfo, kDebug };

class Log {
 public:
  explicit Log(LogLevel level) : level_(level) {}

  void error(std::string_view line) { write(LogLevel::kError, line); }
  void warning(std::string_view line) { write(LogLevel::kWarning, line); }
  void info(std::string_view line) { write(LogLevel::kInfo, line); }
  void debug(std::string_view line) { write(LogLevel::kDebug, line); }

  /** A warning that a client can provoke: a few a second, the rest counted. */
  void complaint(std::string_view line);

 private:
  void write(LogLevel level, std::string_view line);

  LogLevel level_;
  std::int64_t second_ = 0;
  unsigned written_ = 0;
  unsigned suppressed_ = 0;
};

}  // namespace ficon::emulator
