/**
 * Event history and debug output. Both are off until somebody wants to look:
 *
 *   FICON_EVENT_LOG=FILE  events are appended to FILE, one line each; a full one becomes FILE.1
 *   FICON_DEBUG=1         debug output goes to standard error
 */
#include <platform/diagnostics.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <string>
#include <string_view>

namespace {

std::mutex event_mutex;

/** A history, not an archive: at most twice this much is kept. */
constexpr long kFullLog = 1024 * 1024;

const char* event_log() {
  return std::getenv("FICON_EVENT_LOG");
}

bool debugging() {
  const char* value = std::getenv("FICON_DEBUG");
  return value != nullptr && std::string_view(value) != "0";
}

std::string time_of_day() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  gmtime_r(&now, &parts);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text;
}

/** One event is one line, however many lines its text has. */
std::string one_line(const void* data, std::uint32_t length) {
  std::string text(static_cast<const char*>(data), length);
  text.erase(std::min(text.find('\0'), text.size()));
  while (!text.empty() && text.back() == '\n') text.pop_back();
  std::ranges::replace(text, '\n', ' ');
  return text;
}

}  // namespace

const char* sdwrap_dbg_modname = "ficon";

int32_t sdwrap_hist_event_subtype_check(uint32_t /*id*/, uint32_t /*subtype*/) {
  return event_log() == nullptr ? 1 : 0;  // 0: events of this kind are wanted
}

void sdwrap_hist_event(uint32_t id, uint32_t length, const void* data) {
  const char* path = event_log();
  if (path == nullptr) return;
  const std::lock_guard guard(event_mutex);
  std::FILE* log = std::fopen(path, "ae");
  if (log == nullptr) return;
  std::fprintf(log, "%s 0x%x %s\n", time_of_day().c_str(), id, one_line(data, length).c_str());
  const bool full = std::ftell(log) >= kFullLog;
  std::fclose(log);
  if (full) std::rename(path, (std::string(path) + ".1").c_str());
}

int32_t sdwrap_chk_int(uint32_t /*arg1*/, uint32_t /*arg2*/, uint32_t /*arg3*/, uint32_t /*arg4*/) {
  return debugging() ? 1 : 0;
}

void buginf(uint32_t /*level*/, const char* module, uint32_t /*arg3*/, const char* format, ...) {
  if (!debugging()) return;
  std::va_list arguments;
  va_start(arguments, format);
  std::fprintf(stderr, "%s: ", module);
  std::vfprintf(stderr, format, arguments);
  va_end(arguments);
}
