#include "output.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace ficon::ctl {
namespace {

constexpr std::size_t kColumnGap = 2;
const std::string kBold = "\033[1m";
const std::string kPlain = "\033[0m";

/** Columns on the screen: bytes that continue a UTF-8 character take none. */
std::size_t width(const std::string& text) {
  return static_cast<std::size_t>(
      std::ranges::count_if(text, [](char c) { return (c & 0xc0) != 0x80; }));
}

/** Bytes that are no UTF-8, of a command line for one, are shown as such. */
std::string text_of(const Json& value) {
  return value.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace

std::string Table::text(bool bold_header) const {
  std::vector<std::size_t> widths;
  for (const auto& row : rows_) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], width(row[i]));
  }
  std::string text;
  for (const auto& row : rows_) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      text += row[i];
      if (i + 1 < row.size()) text.append(widths[i] - width(row[i]) + kColumnGap, ' ');
    }
    text.erase(text.find_last_not_of(' ') + 1);
    if (bold_header && &row == &rows_.front()) text = kBold + text + kPlain;
    text += '\n';
  }
  return text;
}

Output::Output() {
  terminal_ = isatty(STDOUT_FILENO) != 0;
  const int own = dup(STDOUT_FILENO);
  dup2(STDERR_FILENO, STDOUT_FILENO);
  stream_ = fdopen(own, "w");
  std::setvbuf(stdout, nullptr, _IOLBF, 0);  // in order with what is printed to standard error
  const char* no_color = std::getenv("NO_COLOR");
  color = terminal_ && (no_color == nullptr || *no_color == '\0');
}

Output::~Output() {
  std::fclose(stream_);
}

bool Output::write_all(const std::string& text) {
  return std::fwrite(text.data(), 1, text.size(), stream_) == text.size() &&
         std::fflush(stream_) == 0;
}

void Output::write(const std::string& text) {
  if (!write_all(text)) {
    throw Failure(0, "output-failed",
                  std::string("cannot write the result: ") + std::strerror(errno),
                  "look at where the output goes");
  }
}

void Output::show(const Json& value, const Table& table) {
  show(value, table.text(color));
}

void Output::show(const Json& value, const std::string& text) {
  if (json) {
    write(text_of(value));
  } else {
    write(text.ends_with('\n') || text.empty() ? text : text + "\n");
  }
}

void Output::raw(const std::string& text) {
  write(text);
}

void Output::write_error(const std::string& status, const std::string& name,
                         const std::string& message, const std::string& hint) {
  const Json error{{"status", status}, {"name", name}, {"message", message}, {"hint", hint}};
  // Where this fails too, the exit status alone has to say it.
  (void)write_all(text_of(Json{{"error", error}}));
}

void Output::fail(const Failure& failure) {
  const std::string status = hex(failure.status(), 8);
  if (json) return write_error(status, failure.name(), failure.what(), failure.hint());
  std::fprintf(stderr, "ficonctl: %s", failure.what());
  if (failure.status() != 0) {
    std::fprintf(stderr, " (%s, %s)", status.c_str(), failure.name().c_str());
  }
  std::fprintf(stderr, "\n  try: %s\n", failure.hint().c_str());
}

void Output::fail_usage(const std::string& message, const std::string& hint) {
  if (json) return write_error(hex(0, 8), "usage", message, hint);
  std::fprintf(stderr, "ficonctl: %s\n  try: %s\n", message.c_str(), hint.c_str());
}

std::string hex(std::uint32_t value, int digits) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%0*x", digits, value);
  return text;
}

}  // namespace ficon::ctl
