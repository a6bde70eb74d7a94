#include "store/store.h"

#include <filesystem>
#include <nlohmann/json.hpp>

#include "configuration/configuration.h"
#include "store/kinds.h"

namespace ficon::emulator {
namespace {

/** Marks the file as this emulator's, and says which layout it has. */
constexpr std::int64_t kApplicationId = 0x46434d49;
constexpr std::int64_t kSchemaVersion = 1;

constexpr const char* kSchema = R"(
  CREATE TABLE state(key TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;
  CREATE TABLE ficon_saved_config(key BLOB PRIMARY KEY, value BLOB NOT NULL) WITHOUT ROWID;
  CREATE TABLE ficon_debug(key BLOB PRIMARY KEY, value BLOB NOT NULL) WITHOUT ROWID;
)";

std::string quoted(const std::string& text) {
  std::string result;
  for (const char c : text) result += c == '\'' ? "''" : std::string(1, c);
  return result;
}

}  // namespace

struct Store::Statements {
  explicit Statements(Database& db)
      : begin(db, "BEGIN IMMEDIATE"),
        commit(db, "COMMIT"),
        put(db,
            "INSERT INTO state VALUES(?,?) ON CONFLICT(key) DO UPDATE SET value=excluded.value"),
        erase(db, "DELETE FROM state WHERE key=?"),
        erase_range(db, "DELETE FROM state WHERE key>=? AND key<?"),
        put_record(db,
                   "INSERT INTO ficon_saved_config VALUES(?,?) "
                   "ON CONFLICT(key) DO UPDATE SET value=excluded.value"),
        put_debug(db,
                  "INSERT INTO ficon_debug VALUES(?,?) "
                  "ON CONFLICT(key) DO UPDATE SET value=excluded.value"),
        erase_record(db, "DELETE FROM ficon_saved_config WHERE key=?") {}

  Statement begin, commit, put, erase, erase_range, put_record, put_debug, erase_record;
};

std::string store_file(const std::string& path) {
  namespace fs = std::filesystem;
  std::error_code ignored;
  const bool directory = path.ends_with('/') || fs::is_directory(path, ignored);
  if (!directory) return path;
  fs::create_directories(path, ignored);  // what fails here fails again, with a sentence, on open
  return (fs::path(path) / "ficon.db").string();
}

Store::Store(const std::string& path) try : path_(path), lock_(path), database_(path) {
  prepare_schema();
  statements_ = std::make_unique<Statements>(database_);
} catch (const StoreError& error) {
  throw StoreError("the store " + path + " cannot be used: " + error.what());
}

Store::~Store() = default;

void Store::prepare_schema() {
  const bool empty = database_.number("SELECT count(*) FROM sqlite_master") == 0;
  const std::int64_t application = database_.number("PRAGMA application_id");
  if (!empty && application != kApplicationId) {
    throw StoreError("it is a SQLite file of another program");
  }
  const std::int64_t version = database_.number("PRAGMA user_version");
  if (!empty && version != kSchemaVersion) {
    throw StoreError("it has layout " + std::to_string(version) + ", and this emulator knows " +
                     std::to_string(kSchemaVersion));
  }
  if (const std::string check = database_.text("PRAGMA quick_check(1)"); check != "ok") {
    throw StoreError("it is damaged: " + check);
  }
  database_.run("PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL; PRAGMA busy_timeout=200");
  if (!empty) return;
  database_.run("BEGIN IMMEDIATE;" + std::string(kSchema) +
                "PRAGMA application_id=" + std::to_string(kApplicationId) +
                ";PRAGMA user_version=" + std::to_string(kSchemaVersion) + ";COMMIT");
}

void Store::load(Switch& model) {
  database_.each("SELECT key, value FROM state ORDER BY key",
                 [&](std::string_view name, std::string_view value) {
                   try {
                     bool known = false;
                     for (const StoredKind& kind : kStoredKinds) {
                       const auto parts = match_path(kind.pattern, name);
                       if (!parts) continue;
                       known = true;
                       kind.load(model, *parts, nlohmann::json::parse(value));
                     }
                     if (!known) throw std::runtime_error("nothing of this kind is known");
                   } catch (const std::exception& error) {
                     throw StoreError("the store " + path_ + " cannot be used: its object " +
                                      std::string(name) + " makes no sense: " + error.what());
                   }
                 });
}

void Store::commit(const Switch& model) {
  statements_->begin.run();
  try {
    SavedRecords records;
    for (const std::string& path : model.touched.erased_paths()) erase_below(path);
    for (const std::string& name : model.touched.objects()) save_object(model, name, records);
    write_records(records);
    if (model.logging_level()) {
      const auto [key, value] = debug_record(*model.logging_level());
      statements_->put_debug.blob(key).blob(value).run();
    }
    statements_->commit.run();
  } catch (...) {
    if (sqlite3_get_autocommit(database_.get()) == 0) database_.run("ROLLBACK");
    throw;
  }
}

void Store::save_startup() {
  const std::string target = platform::startup_store(path_);
  const std::string fresh = target + ".new";
  try {
    std::filesystem::remove(fresh);
    database_.run("VACUUM INTO '" + quoted(fresh) + "'");
    std::filesystem::rename(fresh, target);
  } catch (const std::filesystem::filesystem_error& error) {
    throw StoreError(target + " cannot be written: " + error.code().message());
  }
}

void Store::erase_below(const std::string& path) {
  // '0' follows '/', so this is everything that begins with the path and a slash.
  statements_->erase_range.text(path + "/").text(path + "0").run();
}

void Store::save_object(const Switch& model, const std::string& name, SavedRecords& records) {
  for (const StoredKind& kind : kStoredKinds) {
    const auto parts = match_path(kind.pattern, name);
    if (!parts) continue;
    if (const auto value = kind.save(model, *parts)) {
      statements_->put.text(name).text(value->dump()).run();
    } else {
      statements_->erase.text(name).run();
    }
  }
  for (const SavedConfigKind& kind : kSavedConfigKinds) {
    if (const auto parts = match_path(kind.pattern, name)) kind.write(model, *parts, records);
  }
}

void Store::write_records(const SavedRecords& records) {
  for (const auto& [key, value] : records) {
    if (value) {
      statements_->put_record.blob(key).blob(*value).run();
    } else {
      statements_->erase_record.blob(key).run();
    }
  }
}

}  // namespace ficon::emulator
