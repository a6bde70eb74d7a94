/**
 * Persistent storage, read from a SQLite file that the emulator writes. A store's URI is the file,
 * a slash and the table: "/var/lib/ficon/ficon.db/ficon_saved_config".
 */
#include <platform/pss.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "wire/status.h"

namespace {

constexpr std::uint32_t kFirst = 1;
constexpr std::uint32_t kNoRecord = 0x40480001;
constexpr std::uint32_t kNoRoom = 0x40480002;
constexpr std::uint32_t kUnreadable = 0x40480004;

struct CloseDatabase {
  void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};
struct FinalizeStatement {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;
using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

Statement prepare(sqlite3* database, const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr);
  return Statement(statement);
}

/** Which file it is, whatever its name; 0, 0: none. */
using FileIdentity = std::pair<dev_t, ino_t>;
FileIdentity identity_of(const std::string& file) {
  struct stat status {};
  if (stat(file.c_str(), &status) != 0) return {};
  return {status.st_dev, status.st_ino};
}

/** What a result of a step means for whoever reads. */
std::uint32_t status_of(int result) {
  if (result == SQLITE_ROW) return ficon::status::kOk;
  return result == SQLITE_DONE ? ficon::status::kEndOfStore : kUnreadable;
}

}  // namespace

/** The place of a walk is the row that its statement stands on. */
struct pss_location {};

struct pss_store {
  Database database;
  Statement walk;
  Statement fetch;
  pss_location place;
  FileIdentity identity;

  bool open(const std::string& file, const std::string& table) {
    identity = identity_of(file);
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(file.c_str(), &opened, SQLITE_OPEN_READONLY, nullptr);
    database.reset(opened);
    if (result != SQLITE_OK) return false;
    sqlite3_busy_timeout(opened, 1000);
    walk = prepare(opened, "SELECT key, value FROM " + table + " ORDER BY key");
    fetch = prepare(opened, "SELECT value FROM " + table + " WHERE key=?");
    return walk != nullptr && fetch != nullptr;
  }
};

namespace {

/** Nobody closes a store: each is opened once in a process, and again when its file is another. */
std::mutex stores_mutex;
std::map<std::string, pss_store>& stores() {
  static auto& all = *new std::map<std::string, pss_store>;
  return all;
}

bool is_table_name(const std::string& name) {
  return !name.empty() &&
         std::ranges::all_of(name, [](char c) { return (c >= 'a' && c <= 'z') || c == '_'; });
}

}  // namespace

pss_store_t pss_open(const char* uri) {
  const std::string text = uri;
  const std::size_t slash = text.rfind('/');
  if (slash == std::string::npos || !is_table_name(text.substr(slash + 1))) return nullptr;
  const std::string file = text.substr(0, slash);
  const std::lock_guard guard(stores_mutex);
  const auto known = stores().find(text);
  if (known != stores().end() && known->second.identity == identity_of(file)) {
    return &known->second;
  }
  pss_store store;
  if (!store.open(file, text.substr(slash + 1))) {
    std::fprintf(stderr, "pss: %s cannot be read: %s\n", uri, sqlite3_errmsg(store.database.get()));
    return nullptr;
  }
  return &stores().insert_or_assign(text, std::move(store)).first->second;
}

uint32_t pss_move2location(pss_store_t store, uint32_t where, pss_location_t* location) {
  if (where == kFirst) sqlite3_reset(store->walk.get());
  const std::uint32_t status = status_of(sqlite3_step(store->walk.get()));
  *location = status == ficon::status::kOk ? &store->place : nullptr;
  if (status != ficon::status::kOk) sqlite3_reset(store->walk.get());  // lets the writer go on
  if (status == kUnreadable) {
    std::fprintf(stderr, "pss: the walk ended: %s\n", sqlite3_errmsg(store->database.get()));
  }
  return status;
}

uint32_t pss_getvalue(pss_store_t store, pss_location_t location, const uint8_t** key,
                      uint32_t* key_length, const void** value, uint32_t* value_length) {
  if (location != &store->place) return kNoRecord;
  sqlite3_stmt* row = store->walk.get();
  *key = static_cast<const std::uint8_t*>(sqlite3_column_blob(row, 0));
  *key_length = static_cast<std::uint32_t>(sqlite3_column_bytes(row, 0));
  *value = sqlite3_column_blob(row, 1);
  *value_length = static_cast<std::uint32_t>(sqlite3_column_bytes(row, 1));
  return 0;
}

uint32_t pss_fetch(pss_store_t store, const uint8_t* key, uint32_t key_length, void* value,
                   uint32_t* value_length) {
  sqlite3_stmt* statement = store->fetch.get();
  sqlite3_reset(statement);
  sqlite3_bind_blob(statement, 1, key, static_cast<int>(key_length), SQLITE_TRANSIENT);
  const int result = sqlite3_step(statement);
  if (result != SQLITE_ROW) {
    sqlite3_reset(statement);
    return result == SQLITE_DONE ? kNoRecord : kUnreadable;
  }
  const auto length = static_cast<std::uint32_t>(sqlite3_column_bytes(statement, 0));
  const bool fits = length <= *value_length;
  if (fits && length != 0) std::memcpy(value, sqlite3_column_blob(statement, 0), length);
  if (fits) *value_length = length;
  sqlite3_reset(statement);
  return fits ? 0 : kNoRoom;
}

uint32_t pss2_fetch(pss_store_t store, const uint8_t* key, uint32_t key_length, void* value,
                    uint32_t* value_length) {
  return pss_fetch(store, key, key_length, value, value_length);
}
