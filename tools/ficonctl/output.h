/** What a command shows: a table or sentences for people, JSON for scripts. */
#pragma once

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "failure.h"

namespace ficon::ctl {

using Json = nlohmann::ordered_json;

/** Columns aligned by their widest cell; the last one is never padded. */
class Table {
 public:
  explicit Table(std::vector<std::string> header) { rows_.push_back(std::move(header)); }
  void add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }
  bool has_rows() const { return rows_.size() > 1; }
  /** `bold_header`: for a terminal. */
  std::string text(bool bold_header = false) const;

 private:
  std::vector<std::vector<std::string>> rows_;
};

class Output {
 public:
  /**
   * Takes standard output for itself and turns everything else that is printed there, the
   * library's console lines above all, to standard error: what a script reads is the result alone.
   */
  Output();
  ~Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  bool json = false;
  bool color = false;  // by default: standard output is a terminal, and NO_COLOR is not set

  /** Whether people look at it: only then colour and progress make sense. */
  bool is_terminal() const { return terminal_; }

  void show(const Json& value, const Table& table);
  void show(const Json& value, const std::string& text);
  /** As it stands, with `json` or without: pictures and exported files. */
  void raw(const std::string& text);
  void fail(const Failure& failure);
  void fail_usage(const std::string& message, const std::string& hint);

 private:
  /** A result that cannot be written is a Failure: a script must not take its absence for one. */
  void write(const std::string& text);
  bool write_all(const std::string& text);
  void write_error(const std::string& status, const std::string& name, const std::string& message,
                   const std::string& hint);

  std::FILE* stream_;
  bool terminal_;
};

std::string hex(std::uint32_t value, int digits);

}  // namespace ficon::ctl
