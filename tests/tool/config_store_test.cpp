/** Configuration text of the largest store there can be, and of stores that are damaged. */
#include <doctest/doctest.h>
#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>

#include "daemon_process.h"
#include "model/port_operations.h"
#include "store/store.h"
#include "tool_process.h"

using namespace ficon::test;
using namespace ficon::emulator;

namespace {

constexpr Asker kOperator{1, Requester::kOperator};
constexpr ficon::FcdStatus kDone = ficon::FcdStatus::kDone;

/** A switch that was built and left: its store, and the tool on it. */
struct LeftSwitch {
  ScratchDirectory directory;
  std::string file = directory.path("ficon.db");
  Tool tool{"embedded:" + directory.path()};

  void build() const {
    Store store(file);
    Switch model;
    model.enable_feature();
    for (const std::uint32_t vsan : {10U, 20U}) {
      REQUIRE(model.enable_ficon(vsan, kOperator) == kDone);
    }
    PortOperations ports(model);
    REQUIRE(ports.reserve(kOperator, 1, {{200, 229}}).status == kDone);
    REQUIRE(ports.bind_address(kOperator, 200, 512) == kDone);
    REQUIRE(ports.bind_address(kOperator, 0x05, 200) == kDone);
    REQUIRE(ports.assign(kOperator, 0x0a000003, 240) == kDone);
    REQUIRE(ports.set_default_prohibit(kOperator, 1) == kDone);
    REQUIRE(model.set_default_mih_timeout(0x44) == kDone);
    REQUIRE(model.set_logging_level(5) == kDone);
    store.commit(model);
  }
  void run(const std::string& sql) const {
    sqlite3* database = nullptr;
    REQUIRE(sqlite3_open(file.c_str(), &database) == SQLITE_OK);
    REQUIRE(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK);
    sqlite3_close(database);
  }
};

const std::string kFeature = "feature ficon\n";
const std::string kNumbers = "ficon slot 1 assign port-numbers 200-229 force\n";
const std::string kVsans = "ficon vsan 10\nficon vsan 20\n";
const std::string kProhibit = "ficon port default-state prohibit-all\n";
const std::string kTimeout = "ficon default mihpto 40\n";
const std::string kPort = "interface fc1/1\n  ficon portaddress 0x5\n";
const std::string kTunnel = "interface fcip 3\n  ficon portnumber 0xf0\n";
const std::string kLogging = "logging level ficon 5\n";

/** The lines of a store in which one record says nothing. */
struct Damage {
  std::string records;  // of which table, and which keys
  std::string text;
};

std::string removal(const Damage& damage) {
  return "DELETE FROM " + damage.records;
}

std::string cut(const Damage& damage) {
  const std::size_t table = std::min(damage.records.find(" WHERE"), damage.records.size());
  return "UPDATE " + damage.records.substr(0, table) + " SET value=x'0102'" +
         damage.records.substr(table);
}

const std::vector<Damage> kDamages = {
    {"ficon_saved_config WHERE key=x'2300000000000000'",
     kVsans + kProhibit + kPort + kTunnel + kLogging},
    {"ficon_saved_config WHERE key=x'2400000000000000'",
     kFeature + kNumbers + kVsans + kTimeout + kPort + kTunnel + kLogging},
    {"ficon_saved_config WHERE key=x'2600000000000000'",
     kFeature + kNumbers + kVsans + kProhibit + kPort + kTunnel + kLogging},
    // With the table in place nothing is made of this map.
    {"ficon_saved_config WHERE key=x'0800000000000000'",
     kFeature + kNumbers + kVsans + kProhibit + kTimeout + kPort + kTunnel + kLogging},
    {"ficon_saved_config WHERE key=x'0900000000000000'",
     kFeature + kNumbers + kVsans + kProhibit + kTimeout + kPort + kLogging},
    // The chassis' own numbers then, with the addresses of the map.
    {"ficon_saved_config WHERE key=x'1500000000000000'",
     kFeature + kVsans + kProhibit + kTimeout + "interface fc1/6\n  ficon portaddress 0x200\n" +
         kTunnel + kLogging},
    {"ficon_debug", kFeature + kNumbers + kVsans + kProhibit + kTimeout + kPort + kTunnel},
};

}  // namespace

TEST_CASE("a record that is missing or cut short is taken for its default") {
  const LeftSwitch whole;
  whole.build();
  CHECK(whole.tool("config running").out ==
        kFeature + kNumbers + kVsans + kProhibit + kTimeout + kPort + kTunnel + kLogging);
  for (const Damage& damage : kDamages) {
    for (const bool missing : {true, false}) {
      CAPTURE(damage.records);
      CAPTURE(missing);
      const LeftSwitch damaged;
      damaged.build();
      damaged.run(missing ? removal(damage) : cut(damage));
      const Result shown = damaged.tool("config running");
      CHECK(shown.status == 0);
      CHECK(shown.out == damage.text);
    }
  }
}

TEST_CASE("a damaged store is reported, and nothing crashes") {
  std::mt19937 random(7);
  int refused = 0;
  for (int round = 0; round < 24; ++round) {
    CAPTURE(round);
    const LeftSwitch left;
    left.build();
    REQUIRE(left.tool("config save").status == 0);
    const std::string saved = left.directory.path("ficon.db.startup");
    const auto size = std::filesystem::file_size(saved);
    if (round % 2 == 0) {
      std::filesystem::resize_file(saved, random() % size);
    } else {
      std::fstream bytes(saved, std::ios::in | std::ios::out | std::ios::binary);
      bytes.seekp(static_cast<std::streamoff>(random() % size));
      for (int i = 0; i < 2000; ++i) bytes.put(static_cast<char>(random()));
    }
    const Result shown = left.tool("config startup");
    CHECK((shown.status == 0 || shown.status == 1));
    if (shown.status == 0) continue;
    ++refused;
    CHECK(shown.out.empty());
    CHECK(contains(shown.err, "cannot be read"));
  }
  CHECK(refused > 6);
}

TEST_CASE("4093 VSANs and 1280 ports") {
  const ScratchDirectory directory;
  const std::string chassis = std::string(FICON_CHASSIS_EXAMPLES) + "/full-director.toml";
  std::string expected = "feature ficon\n";
  {
    Store store(directory.path("ficon.db"));
    Switch model({.hardware = read_hardware(chassis)});
    PortOperations ports(model);
    model.enable_feature();
    // Each module has the numbers of its positions from the 16th on, those that there are.
    REQUIRE(ports.release(kOperator, kLogicalPorts, {}).status == kDone);
    for (NumberOwner module = 1; module <= 4; ++module) {
      REQUIRE(ports.release(kOperator, module, {}).status == kDone);
    }
    for (NumberOwner module = 1; module <= 16; ++module) {
      const std::uint32_t first = 600 + (module - 1) * 40;
      REQUIRE(ports.reserve(kOperator, module, {{first, first + 39}}).status == kDone);
      expected += "ficon slot " + std::to_string(module) + " assign port-numbers " +
                  std::to_string(first) + "-" + std::to_string(first + 39) + " force\n";
    }
    for (std::uint32_t vsan = 4093; vsan >= 1; --vsan) {
      REQUIRE(model.enable_ficon(vsan, kOperator) == kDone);
    }
    for (std::uint32_t vsan = 1; vsan <= 4093; ++vsan) {
      expected += "ficon vsan " + std::to_string(vsan) + "\n";
    }
    store.commit(model);
  }
  expected.insert(expected.find("ficon slot 1 "),
                  "no ficon logical-port assign port-numbers 240-249\n");
  for (std::uint32_t module = 1; module <= 16; ++module) {
    for (std::uint32_t port = 1; port <= 40; ++port) {  // numbers beyond 255 have no address
      expected += "interface fc" + std::to_string(module) + "/" + std::to_string(port) +
                  "\n  ficon portaddress 0x200\n";
    }
  }
  const DaemonProcess daemon(directory, {"--chassis", chassis});
  REQUIRE(daemon.running());
  const Tool tool("unix:" + daemon.socket());
  CHECK(tool("config running").out == expected);
  CHECK(tool("config apply --dry-run " + directory.path("none")).status == 1);
  std::ofstream(directory.path("lines")) << expected;
  CHECK(contains(tool("config apply " + directory.path("lines")).out, "nothing was changed"));
  auto some = tool("config running --vsan 4093 --interface fc16/40,fc16/41 --json").json();
  CHECK(some["running"].size() == 21);
}
