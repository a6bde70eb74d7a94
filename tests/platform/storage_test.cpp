#include <doctest/doctest.h>
#include <platform/pss.h>
#include <sqlite3.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

using Key = std::array<std::uint8_t, 8>;

/** A SQLite file with records, gone at the end. */
class StoreFile {
 public:
  StoreFile() {
    char pattern[] = "/tmp/ficon-pss-XXXXXX";
    directory_ = mkdtemp(pattern);
    run("CREATE TABLE ficon_saved_config(key BLOB PRIMARY KEY, value BLOB) WITHOUT ROWID");
  }
  ~StoreFile() { std::filesystem::remove_all(directory_); }
  StoreFile(const StoreFile&) = delete;
  StoreFile& operator=(const StoreFile&) = delete;

  void run(const std::string& sql) {
    sqlite3* database = nullptr;
    REQUIRE(sqlite3_open(path().c_str(), &database) == SQLITE_OK);
    REQUIRE(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK);
    sqlite3_close(database);
  }
  std::string path() const { return directory_ + "/ficon.db"; }
  pss_store_t open() const { return pss_open((path() + "/ficon_saved_config").c_str()); }

 private:
  std::string directory_;
};

}  // namespace

TEST_CASE("a walk gives the records in the order of their keys' bytes, then ends") {
  StoreFile file;
  file.run(
      "INSERT INTO ficon_saved_config VALUES (x'0900', x'01'), (x'06ff', x'0203'), (x'0600', x'')");
  pss_store_t store = file.open();
  REQUIRE(store != nullptr);
  std::vector<std::string> keys;
  pss_location_t location = nullptr;
  std::uint32_t where = 1;
  std::uint32_t status = 0;
  while ((status = pss_move2location(store, where, &location)) == 0) {
    const std::uint8_t* key = nullptr;
    const void* value = nullptr;
    std::uint32_t key_length = 0;
    std::uint32_t value_length = 99;
    REQUIRE(pss_getvalue(store, location, &key, &key_length, &value, &value_length) == 0);
    keys.emplace_back(reinterpret_cast<const char*>(key), key_length);
    where = 3;
  }
  CHECK(status == 0x40480003);
  CHECK(location == nullptr);
  CHECK(keys == std::vector<std::string>{std::string("\x06\x00", 2), "\x06\xff",
                                         std::string("\x09\x00", 2)});
}

TEST_CASE("a fetch copies a value that fits, and nothing else") {
  StoreFile file;
  file.run("INSERT INTO ficon_saved_config VALUES (x'2300000000000000', x'01020304')");
  pss_store_t store = file.open();
  REQUIRE(store != nullptr);
  const Key key{0x23};
  std::uint8_t value[8] = {};
  std::uint32_t length = sizeof value;
  CHECK(pss_fetch(store, key.data(), key.size(), value, &length) == 0);
  CHECK(length == 4);
  CHECK(value[3] == 4);

  std::uint8_t small[2] = {0xaa, 0xaa};
  length = sizeof small;
  CHECK(pss2_fetch(store, key.data(), key.size(), small, &length) != 0);
  CHECK(small[0] == 0xaa);

  const Key missing{0x24};
  length = sizeof value;
  CHECK(pss_fetch(store, missing.data(), missing.size(), value, &length) != 0);
}

TEST_CASE("a store sees what is written after it was opened") {
  StoreFile file;
  pss_store_t store = file.open();
  REQUIRE(store != nullptr);
  file.run("INSERT INTO ficon_saved_config VALUES (x'2400000000000000', x'07')");
  const Key key{0x24};
  std::uint8_t value[4];
  std::uint32_t length = sizeof value;
  CHECK(pss_fetch(store, key.data(), key.size(), value, &length) == 0);
}

TEST_CASE("a file that took the place of another is read when its store is opened again") {
  StoreFile file;
  const Key key{0x24};
  std::uint8_t value[4];
  std::uint32_t length = sizeof value;
  pss_store_t before = file.open();
  REQUIRE(before != nullptr);
  CHECK(pss_fetch(before, key.data(), key.size(), value, &length) != 0);
  StoreFile other;
  other.run("INSERT INTO ficon_saved_config VALUES (x'2400000000000000', x'07')");
  std::filesystem::rename(other.path(), file.path());
  pss_store_t after = file.open();
  CHECK(after == before);
  CHECK(pss_fetch(after, key.data(), key.size(), value, &length) == 0);
}

TEST_CASE("what is no store is refused") {
  StoreFile file;
  CHECK(pss_open("nowhere") == nullptr);
  CHECK(pss_open((file.path() + "/no such table").c_str()) == nullptr);
  CHECK(pss_open((file.path() + "/missing_table").c_str()) == nullptr);
  CHECK(pss_open("/nonexistent/ficon.db/ficon_saved_config") == nullptr);
  const std::string damaged = file.path() + ".damaged";
  std::ofstream(damaged) << "this is no SQLite file, but long enough to be looked at as one";
  CHECK(pss_open((damaged + "/ficon_saved_config").c_str()) == nullptr);
}
