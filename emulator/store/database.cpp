#include "store/database.h"

namespace ficon::emulator {

Database::Database(const std::string& path) {
  sqlite3* handle = nullptr;
  const int result =
      sqlite3_open_v2(path.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
  handle_.reset(handle);
  if (handle == nullptr) throw StoreError("out of memory");
  if (result != SQLITE_OK) fail();
  sqlite3_extended_result_codes(handle, 1);
}

void Database::fail() const {
  throw StoreError(sqlite3_errmsg(handle_.get()));
}

void Database::run(const std::string& sql) {
  if (sqlite3_exec(handle_.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) fail();
}

std::int64_t Database::number(const std::string& sql) {
  return std::stoll("0" + text(sql));
}

std::string Database::text(const std::string& sql) {
  Statement statement(*this, sql);
  return statement.step() ? std::string(statement.column(0)) : std::string();
}

void Database::each(const std::string& sql,
                    const std::function<void(std::string_view, std::string_view)>& row) {
  Statement statement(*this, sql);
  while (statement.step()) row(statement.column(0), statement.column(1));
}

Statement::Statement(Database& database, std::string_view sql) : database_(database) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(database.get(), sql.data(), static_cast<int>(sql.size()), &statement,
                         nullptr) != SQLITE_OK) {
    database.fail();
  }
  statement_.reset(statement);
}

Statement& Statement::text(std::string_view value) {
  if (sqlite3_bind_text(statement_.get(), ++bound_, value.data(), static_cast<int>(value.size()),
                        SQLITE_TRANSIENT) != SQLITE_OK) {
    database_.fail();
  }
  return *this;
}

Statement& Statement::blob(std::string_view value) {
  // A null pointer would bind NULL; an empty value is an empty blob.
  const char* bytes = value.empty() ? "" : value.data();
  if (sqlite3_bind_blob(statement_.get(), ++bound_, bytes, static_cast<int>(value.size()),
                        SQLITE_TRANSIENT) != SQLITE_OK) {
    database_.fail();
  }
  return *this;
}

bool Statement::step() {
  const int result = sqlite3_step(statement_.get());
  if (result != SQLITE_ROW && result != SQLITE_DONE) {
    const std::string sentence = sqlite3_errmsg(database_.get());
    reset();
    throw StoreError(sentence);
  }
  return result == SQLITE_ROW;
}

void Statement::run() {
  step();
  reset();
}

std::string_view Statement::column(int index) const {
  const void* bytes = sqlite3_column_blob(statement_.get(), index);
  const int size = sqlite3_column_bytes(statement_.get(), index);
  return bytes == nullptr
             ? std::string_view{}
             : std::string_view{static_cast<const char*>(bytes), static_cast<std::size_t>(size)};
}

void Statement::reset() {
  bound_ = 0;
  sqlite3_reset(statement_.get());
}

}  // namespace ficon::emulator
