/** The few operations of SQLite that the store needs, with errors as sentences. */
#pragma once

#include <sqlite3.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace ficon::emulator {

/** What is wrong with a store, in a sentence for whoever started the emulator. */
class StoreError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Database {
 public:
  /** Opens or creates the file. */
  explicit Database(const std::string& path);

  void run(const std::string& sql);
  std::int64_t number(const std::string& sql);
  std::string text(const std::string& sql);
  /** The rows of a query with two columns. */
  void each(const std::string& sql,
            const std::function<void(std::string_view, std::string_view)>& row);

  [[noreturn]] void fail() const;
  sqlite3* get() const { return handle_.get(); }

 private:
  struct Close {
    void operator()(sqlite3* handle) const { sqlite3_close(handle); }
  };
  std::unique_ptr<sqlite3, Close> handle_;
};

/** A prepared statement; run again and again with other values. */
class Statement {
 public:
  Statement(Database& database, std::string_view sql);

  /** Binds in order: text for `std::string_view`. */
  Statement& text(std::string_view value);
  Statement& blob(std::string_view value);
  /** @return whether there is a row */
  bool step();
  void run();
  std::string_view column(int index) const;
  void reset();

 private:
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  Database& database_;
  std::unique_ptr<sqlite3_stmt, Finalize> statement_;
  int bound_ = 0;
};

}  // namespace ficon::emulator
