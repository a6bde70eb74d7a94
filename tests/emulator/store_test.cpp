#include "store/store.h"

#include <doctest/doctest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>

#include "client.h"
#include "daemon_process.h"
#include "server/service.h"

using namespace ficon;
using namespace ficon::test;
using emulator::Asker;
using emulator::Log;
using emulator::LogLevel;
using emulator::Requester;
using emulator::Service;
using emulator::Store;
using emulator::StoreError;
using emulator::Switch;

namespace {

constexpr Asker kOperator{1, Requester::kOperator};

void run_sql(const std::string& path, const char* sql) {
  sqlite3* database = nullptr;
  REQUIRE(sqlite3_open(path.c_str(), &database) == SQLITE_OK);
  CHECK(sqlite3_exec(database, sql, nullptr, nullptr, nullptr) == SQLITE_OK);
  sqlite3_close(database);
}

std::string refusal(const std::string& path) {
  try {
    Store store(path);
    Switch model;
    store.load(model);
    return "";
  } catch (const StoreError& error) {
    return error.what();
  }
}

bool says(const std::string& text, const char* words) {
  return text.find(words) != std::string::npos;
}

/** A service and one request to it at a time. */
struct Served {
  Served() : service(directory.path("ficon.db"), {}, log) {}
  test::Bytes call(std::uint32_t opcode, test::Bytes payload, std::uint32_t sap = 101) {
    service.apply(1, {7, 0xfe000000, sap, opcode, std::move(payload)});
    auto replies = service.finish_turn();
    REQUIRE(replies.size() == 1);
    return replies.front().message.payload;
  }

  ScratchDirectory directory;
  Log log{LogLevel::kError};
  Service service;
};

}  // namespace

TEST_CASE("What was committed is there again, 4093 VSANs of it, and what was disabled is not") {
  ScratchDirectory directory;
  {
    Store store(directory.path("ficon.db"));
    Switch model;
    model.enable_feature();
    for (std::uint32_t vsan = 1; vsan <= 4093; ++vsan) {
      REQUIRE(model.enable_ficon(vsan, kOperator) == FcdStatus::kDone);
    }
    CHECK(model.set_clock(20, kOperator, {0x11223344, 0xf5667788}) == FcdStatus::kDone);
    CHECK(model.set_codepage(20, kOperator, 1149) == FcdStatus::kDone);
    store.commit(model);
    model.touched.clear();
    CHECK(model.disable_ficon(21, kOperator) == FcdStatus::kDone);
    store.commit(model);
  }
  Store store(directory.path("ficon.db"));
  Switch model;
  store.load(model);
  CHECK(model.feature_enabled());
  CHECK(model.vsans().size() == 4092);
  CHECK(model.find_vsan(21) == nullptr);
  REQUIRE(model.find_vsan(20) != nullptr);
  CHECK(model.find_vsan(20)->clock.first == 0x11223344);
  CHECK(model.find_vsan(20)->clock.second == 0xf5667788);
  CHECK(model.find_vsan(20)->codepage == 1149);
  CHECK(model.find_vsan(20)->key_counter == 2);
  CHECK(model.history.last_position() == 4097);
  CHECK_FALSE(model.touched.any());
}

TEST_CASE("The history keeps its ring in the store") {
  ScratchDirectory directory;
  {
    Store store(directory.path("ficon.db"));
    Switch model({.history_capacity = 3});
    model.enable_feature();
    for (std::uint32_t vsan = 1; vsan <= 5; ++vsan) {
      REQUIRE(model.enable_ficon(vsan, kOperator) == FcdStatus::kDone);
    }
    store.commit(model);
  }
  Store store(directory.path("ficon.db"));
  Switch model({.history_capacity = 3});
  store.load(model);
  REQUIRE(model.history.entries().size() == 3);
  CHECK(model.history.entries().front().position == 4);
  CHECK(model.history.entries().back().vsan == 5);
}

TEST_CASE("A file that is not ours is refused with a sentence") {
  ScratchDirectory directory;
  const std::string path = directory.path("ficon.db");
  SUBCASE("noise") {
    std::ofstream(path) << std::string(8192, 'x');
    CHECK(says(refusal(path), "not a database"));
  }
  SUBCASE("another program's") {
    run_sql(path, "CREATE TABLE songs(title)");
    CHECK(says(refusal(path), "another program"));
  }
  SUBCASE("of another layout") {
    CHECK(refusal(path).empty());
    run_sql(path, "PRAGMA user_version=9");
    CHECK(says(refusal(path), "layout 9"));
  }
  SUBCASE("an object that makes no sense") {
    CHECK(refusal(path).empty());
    run_sql(path, "INSERT INTO state VALUES('vsan/0020','{\"codepage\":')");
    CHECK(says(refusal(path), "vsan/0020"));
  }
  SUBCASE("an object of no known kind") {
    CHECK(refusal(path).empty());
    run_sql(path, "INSERT INTO state VALUES('teapot/1','{}')");
    CHECK(says(refusal(path), "teapot/1"));
  }
}

TEST_CASE("A store that is in use is refused") {
  ScratchDirectory directory;
  Store store(directory.path("ficon.db"));
  CHECK(says(refusal(directory.path("ficon.db")), "in use by another process"));
}

TEST_CASE_FIXTURE(Served, "A change that cannot be stored is refused and undone; reads go on") {
  call(1, hex("66 69 63 6f 6e") + zeros(27), 201);
  REQUIRE(host32_at(call(7853, ficon_state(20, 1, 1)), 120) == 0);
  call(7874, lock_record(20, 1, 1), 103);
  sqlite3* other = nullptr;
  REQUIRE(sqlite3_open(directory.path("ficon.db").c_str(), &other) == SQLITE_OK);
  REQUIRE(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) == SQLITE_OK);

  service.apply(1, {8, 0xfe000000, 101, 7865, vsan_config(1, 5, 20, 12, {1})});
  service.apply(2, {9, 0xfe000000, 101, 7855, vsan_info(1, 20)});
  const auto replies = service.finish_turn();
  REQUIRE(replies.size() == 2);
  CHECK(tlv_status(replies[0].message.payload) == 0x40890009);
  CHECK(tlv_status(replies[1].message.payload) == 0);
  CHECK(replies[1].message.payload[140 + 12] == 0);
  CHECK(call(7874, lock_record(20, 3, 0), 103)[13] == 1);  // the lock is held as before

  CHECK(sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr) == SQLITE_OK);
  sqlite3_close(other);
  CHECK(tlv_status(call(7865, vsan_config(1, 5, 20, 12, {1}))) == 0);
  CHECK(call(7855, vsan_info(1, 20))[140 + 12] == 1);
}

TEST_CASE_FIXTURE(Served,
                  "A startup configuration that cannot be written is refused; the daemon goes on") {
  const auto save = [&] { return be32_at(call(2, {}, 204), 0); };
  const std::string startup = directory.path("ficon.db.startup");
  const std::string in_the_way = startup + "/directory";
  std::filesystem::create_directories(in_the_way);
  CHECK(save() == 0x40890009);
  call(1, hex("66 69 63 6f 6e") + zeros(27), 201);
  REQUIRE(host32_at(call(7853, ficon_state(20, 1, 1)), 120) == 0);
  service.apply(1, {8, 0xfe000000, 101, 7865, vsan_config(1, 5, 20, 12, {1})});
  service.apply(2, {9, 0xfe000000, 204, 2, {}});
  const auto replies = service.finish_turn();  // one is refused, the other stored
  REQUIRE(replies.size() == 2);
  CHECK(tlv_status(replies[0].message.payload) == 0);
  CHECK(be32_at(replies[1].message.payload, 0) == 0x40890009);
  CHECK(call(7855, vsan_info(1, 20))[140 + 12] == 1);
  std::filesystem::remove_all(startup);
  CHECK(save() == 0);
}

TEST_CASE_FIXTURE(Served, "The startup configuration is written when it is saved, and then only") {
  const std::string startup = directory.path("ficon.db.startup");
  CHECK(be32_at(call(2, {}, 204), 0) == 0);
  CHECK(std::filesystem::remove(startup));
  call(1, hex("66 69 63 6f 6e") + zeros(27), 201);
  CHECK_FALSE(std::filesystem::exists(startup));
}

TEST_CASE_FIXTURE(Served, "A startup configuration holds the changes that were made before it") {
  call(1, hex("66 69 63 6f 6e") + zeros(27), 201);
  REQUIRE(host32_at(call(7853, ficon_state(20, 1, 1)), 120) == 0);
  service.apply(1, {8, 0xfe000000, 101, 7865, vsan_config(1, 5, 20, 12, {1})});
  service.apply(1, {9, 0xfe000000, 204, 2, {}});
  REQUIRE(service.finish_turn().size() == 2);  // change and save in one turn
  Service started(directory.path("ficon.db.startup"), {}, log);
  started.apply(1, {1, 0xfe000000, 101, 7855, vsan_info(1, 20)});
  const auto replies = started.finish_turn();
  REQUIRE(replies.size() == 1);
  CHECK(replies[0].message.payload[140 + 12] == 1);
}

TEST_CASE_FIXTURE(Served, "A request that nobody answers gets an empty reply") {
  CHECK(call(9999, hex("01 02 03")).empty());
}

TEST_CASE_FIXTURE(Served, "A request without a reply leaves the others of its turn theirs") {
  service.apply(1, {8, 0xfe000000, 101, 7897, be32(0x7f) + be32(0) + hex("01") + zeros(4)});
  service.apply(2, {9, 0xfe000000, 101, 7855, vsan_info(1, 20)});
  const auto replies = service.finish_turn();
  REQUIRE(replies.size() == 1);
  CHECK(replies[0].to == 2);
  CHECK(replies[0].message.token == 9);
}
