#include "output.h"

#include <unistd.h>

#include <algorithm>

namespace ficon::ctl {
namespace {

constexpr std::size_t kColumnGap = 2;

/** Columns on the screen: bytes that continue a UTF-8 character take none. */
std::size_t width(const std::string& text) {
  return static_cast<std::size_t>(
      std::ranges::count_if(text, [](char c) { return (c & 0xc0) != 0x80; }));
}

}  // namespace

std::string Table::text() const {
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
    text += '\n';
  }
  return text;
}

Output::Output() {
  terminal_ = isatty(STDOUT_FILENO) != 0;
  const int own = dup(STDOUT_FILENO);
  dup2(STDERR_FILENO, STDOUT_FILENO);
  stream_ = fdopen(own, "w");
  color = terminal_;
}

Output::~Output() {
  std::fclose(stream_);
}

void Output::write(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stream_);
  std::fflush(stream_);
}

void Output::show(const Json& value, const Table& table) {
  show(value, table.text());
}

void Output::show(const Json& value, const std::string& text) {
  if (json) {
    write(value.dump(2) + "\n");
  } else {
    write(text.ends_with('\n') || text.empty() ? text : text + "\n");
  }
}

void Output::raw(const std::string& text) {
  write(text);
}

void Output::fail(const Failure& failure) {
  if (json) {
    Json error{{"status", hex(failure.status(), 8)},
               {"name", failure.name()},
               {"message", failure.what()},
               {"hint", failure.hint()}};
    write(Json{{"error", error}}.dump(2) + "\n");
    return;
  }
  std::fprintf(stderr, "ficonctl: %s", failure.what());
  if (failure.status() != 0) {
    std::fprintf(stderr, " (%s, %s)", hex(failure.status(), 8).c_str(), failure.name().c_str());
  }
  std::fprintf(stderr, "\n  try: %s\n", failure.hint().c_str());
}

void Output::fail_usage(const std::string& message) {
  if (json) {
    write(Json{{"error", {{"name", "usage"}, {"message", message}}}}.dump(2) + "\n");
  } else {
    std::fprintf(stderr, "ficonctl: %s\n", message.c_str());
  }
}

std::string hex(std::uint32_t value, int digits) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%0*x", digits, value);
  return text;
}

}  // namespace ficon::ctl
