/** The records that the configuration generator reads: their bytes, and when they change. */
#include <doctest/doctest.h>
#include <sqlite3.h>

#include "client.h"
#include "daemon_process.h"
#include "model/port_operations.h"
#include "store/store.h"

using namespace ficon;
using namespace ficon::test;
using emulator::Asker;
using emulator::PortOperations;
using emulator::Requester;
using emulator::Store;
using emulator::StoreError;
using emulator::Switch;

namespace {

constexpr Asker kOperator{1, Requester::kOperator};
constexpr FcdStatus kDone = FcdStatus::kDone;

/** A switch of 256 port numbers, and what stands in its store. */
struct StoredSwitch {
  ScratchDirectory directory;
  Store store{directory.path("ficon.db")};
  Switch model;
  PortOperations ports{model};

  void commit() {
    store.commit(model);
    model.touched.clear();
  }
  void run(const std::string& sql) {
    sqlite3* database = nullptr;
    REQUIRE(sqlite3_open(directory.path("ficon.db").c_str(), &database) == SQLITE_OK);
    CHECK(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK);
    sqlite3_close(database);
  }
  /** The first column of the first row; empty where there is none. */
  std::string text(const std::string& sql) {
    sqlite3* database = nullptr;
    REQUIRE(sqlite3_open(directory.path("ficon.db").c_str(), &database) == SQLITE_OK);
    sqlite3_stmt* query = nullptr;
    REQUIRE(sqlite3_prepare_v2(database, sql.c_str(), -1, &query, nullptr) == SQLITE_OK);
    std::string result;
    if (sqlite3_step(query) == SQLITE_ROW) {
      const void* bytes = sqlite3_column_blob(query, 0);
      const int length = sqlite3_column_bytes(query, 0);
      if (length != 0) result.assign(static_cast<const char*>(bytes), static_cast<size_t>(length));
    }
    sqlite3_finalize(query);
    sqlite3_close(database);
    return result;
  }
  std::string record(const std::string& key, const std::string& table = "ficon_saved_config") {
    return text("SELECT hex(value) FROM " + table + " WHERE key=x'" + key + "'");
  }
  std::string piece(const std::string& key, std::size_t offset, std::size_t length) {
    return record(key).substr(2 * offset, 2 * length);
  }
  std::size_t records() { return std::stoul(text("SELECT count(*) FROM ficon_saved_config")); }
};

}  // namespace

TEST_CASE_FIXTURE(StoredSwitch, "records of the feature, VSANs, defaults and the logging level") {
  CHECK(records() == 0);
  model.enable_feature();
  CHECK(model.enable_ficon(0x0abc, kOperator) == kDone);
  CHECK(model.enable_ficon(7, kOperator) == kDone);
  CHECK(ports.set_default_prohibit(kOperator, 1) == kDone);
  CHECK(model.set_default_mih_timeout(0x44) == kDone);
  CHECK(model.set_logging_level(5) == kDone);
  CHECK(records() == 0);  // until the turn ends
  commit();
  CHECK(record("2300000000000000") == "01000000");
  CHECK(record("06000ABC00000000") == "01000000");
  CHECK(record("0600000700000000") == "01000000");
  CHECK(record("2400000000000000") == "01000000");
  CHECK(record("2600000000000000") == "44000000");
  CHECK(record("0200000000000064", "ficon_debug") == "0100000005000000");
  CHECK(records() == 5);

  CHECK(model.disable_ficon(7, kOperator) == kDone);
  CHECK(ports.set_default_prohibit(kOperator, 0) == kDone);
  CHECK(model.set_default_mih_timeout(0x52) == kDone);
  commit();
  CHECK(record("0600000700000000").empty());
  CHECK(record("2400000000000000") == "00000000");
  CHECK(record("2600000000000000").empty());  // the default is not written down
  CHECK(records() == 3);
}

TEST_CASE_FIXTURE(StoredSwitch, "records of the port plan: both maps and the table of 20 blocks") {
  CHECK(ports.assign(kOperator, 0x0a000003, 245) == kDone);
  CHECK(ports.bind_address(kOperator, 2, 512) == kDone);
  CHECK(ports.bind_address(kOperator, 0x77, 512) == kDone);
  CHECK(ports.bind_address(kOperator, 0x77, 2) == kDone);
  CHECK(ports.unassign(kOperator, 0x01001000, 512) == kDone);  // fc2/1, of number 48
  commit();
  CHECK(records() == 22);
  // From addresses to numbers, 16 bits each: 02 has none, 77 has number 2.
  CHECK(record("0800000000000000").size() == 2 * 2 * 256);
  CHECK(piece("0800000000000000", 2, 6) == "010000020300");
  CHECK(piece("0800000000000000", 2 * 0x77, 2) == "0200");
  CHECK(piece("0800000000000000", 2 * 0xfe, 4) == "00020002");
  // From numbers to interfaces, as interface indexes travel.
  CHECK(record("0900000000000000").size() == 2 * 4 * 256);
  CHECK(piece("0900000000000000", 4, 4) == "01000001");
  CHECK(piece("0900000000000000", 4 * 48, 8) == "0000000001001001");
  CHECK(piece("0900000000000000", 4 * 245, 4) == "0A000003");
  // Number and address of each position, and 16 bytes that say nothing.
  CHECK(record("0D00000000000000").size() == 2 * 1280);
  CHECK(piece("0D00000000000000", 40, 8) == "0200770000000000");
  CHECK(piece("0D00000000000000", 60, 20) == "03000300" + std::string(32, '0'));
  CHECK(piece("0E00000000000000", 0, 4) == "00020002");  // fc2/1
  CHECK(piece("0E00000000000000", 20, 4) == "31003100");
  CHECK(piece("1D00000000000000", 0, 4) == "F000F000");  // the first logical port
  CHECK(piece("2000000000000000", 1260, 4) == "00020002");
}

TEST_CASE_FIXTURE(StoredSwitch, "state and records are written together or not at all") {
  model.enable_feature();
  commit();
  const auto state = [&](const char* key) {
    return text("SELECT value FROM state WHERE key='" + std::string(key) + "'");
  };
  for (const std::string table : {"ficon_saved_config", "ficon_debug", "state"}) {
    CAPTURE(table);
    run("CREATE TRIGGER refuse BEFORE INSERT ON " + table +
        " BEGIN SELECT RAISE(ABORT, 'refused'); END");
    CHECK(model.enable_ficon(7, kOperator) == kDone);
    CHECK(model.set_logging_level(5) == kDone);
    CHECK_THROWS_AS(store.commit(model), StoreError);
    CHECK(state("vsan/0007").empty());
    CHECK(state("debug").empty());
    CHECK(record("0600000700000000").empty());
    CHECK(record("0200000000000064", "ficon_debug").empty());
    run("DROP TRIGGER refuse");
  }
  store.commit(model);
  CHECK_FALSE(state("vsan/0007").empty());
  CHECK(record("0600000700000000") == "01000000");
  CHECK(record("0200000000000064", "ficon_debug") == "0100000005000000");
}
