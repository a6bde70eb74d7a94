/**
 * Configuration text of 1, 100 and 4093 VSANs on a switch of 1280 ports, beside the bare walk of
 * the same store in the same run: through persistent storage alone, record by record.
 */
#include <platform/pss.h>
#include <sqlite3.h>
#include <transport/endpoint.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "acfg/text_service.h"
#include "chassis/current_chassis.h"
#include "emulator_process.h"
#include "measure.h"
#include "wire/saved_config.h"

using namespace ficon;

namespace {

constexpr std::uint32_t kPorts = 1280;

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "%s failed\n", what);
  std::exit(2);
}

/** A store as the emulator lays it out. */
class StoreFile {
 public:
  StoreFile(const std::string& path, std::uint32_t vsans) : path_(path) {
    if (sqlite3_open(path.c_str(), &database_) != SQLITE_OK) fail("creating a store");
    run("CREATE TABLE ficon_saved_config(key BLOB PRIMARY KEY, value BLOB NOT NULL) WITHOUT ROWID;"
        "CREATE TABLE ficon_debug(key BLOB PRIMARY KEY, value BLOB NOT NULL) WITHOUT ROWID;"
        "BEGIN");
    put(key(wire::SavedRecord::kFeatureEnabled), word(1));
    put(key(wire::SavedRecord::kDefaultProhibit), word(1));
    put(key(wire::SavedRecord::kDefaultMihTimeout), word(0x44));
    for (std::uint32_t vsan = 1; vsan <= vsans; ++vsan) put_vsan(vsan);
    put_ports();
    run("COMMIT");
    sqlite3_close(database_);
  }

  const std::string& path() const { return path_; }

 private:
  using Bytes = std::vector<std::uint8_t>;

  static Bytes key(wire::SavedRecord type, std::uint32_t offset = 0) {
    return {
        static_cast<std::uint8_t>(static_cast<std::uint32_t>(type) + offset), 0, 0, 0, 0, 0, 0, 0};
  }
  static Bytes word(std::uint32_t value) {
    wire::host32 word{};
    word.set(value);
    return {std::begin(word.raw), std::end(word.raw)};
  }
  void run(const char* sql) {
    if (sqlite3_exec(database_, sql, nullptr, nullptr, nullptr) != SQLITE_OK) fail(sql);
  }
  void put(const Bytes& key, const Bytes& value) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database_, "INSERT INTO ficon_saved_config VALUES(?,?)", -1, &statement,
                       nullptr);
    sqlite3_bind_blob(statement, 1, key.data(), static_cast<int>(key.size()), SQLITE_STATIC);
    sqlite3_bind_blob(statement, 2, value.data(), static_cast<int>(value.size()), SQLITE_STATIC);
    if (sqlite3_step(statement) != SQLITE_DONE) fail("writing a record");
    sqlite3_finalize(statement);
  }
  void put_vsan(std::uint32_t vsan) {
    Bytes bytes = key(wire::SavedRecord::kVsan);
    bytes[2] = static_cast<std::uint8_t>(vsan >> 8);
    bytes[3] = static_cast<std::uint8_t>(vsan);
    put(bytes, word(1));
  }
  /** Every position has the number of its place, and every port another address than that. */
  void put_ports() {
    Bytes addresses;
    Bytes interfaces(kPorts * 4);
    for (std::uint32_t row = 0; row < kPorts; ++row) append16(addresses, row);
    for (std::uint32_t i = 0; i < wire::kLogicalPorts; ++i) {
      std::uint8_t* row = &interfaces[(wire::kFirstLogicalPort + i) * 4];
      row[0] = 4;  // the port channels 1 to 256
      row[2] = static_cast<std::uint8_t>((i + 1) >> 8);
      row[3] = static_cast<std::uint8_t>(i + 1);
    }
    put(key(wire::SavedRecord::kAddressToNumberMap), addresses);
    put(key(wire::SavedRecord::kNumberToInterfaceMap), interfaces);
    for (std::uint32_t block = 0; block < wire::kPortTableBlocks; ++block) {
      Bytes table;
      for (std::uint32_t p = 0; p < wire::kPortsPerBlock; ++p) {
        append16(table, block * wire::kPortsPerBlock + p);
        append16(table, wire::kNoPort);
        table.resize(table.size() + 16);
      }
      put(key(wire::SavedRecord::kPortTable, block), table);
    }
  }
  static void append16(Bytes& bytes, std::uint32_t value) {
    wire::host16 field{};
    field.set(static_cast<std::uint16_t>(value));
    bytes.insert(bytes.end(), std::begin(field.raw), std::end(field.raw));
  }

  std::string path_;
  sqlite3* database_ = nullptr;
};

void walk(const StoreFile& file) {
  const pss_store_t store = pss_open((file.path() + "/ficon_saved_config").c_str());
  pss_location_t place = nullptr;
  for (std::uint32_t where = 1; pss_move2location(store, where, &place) == 0; where = 3) {
    const std::uint8_t* key = nullptr;
    const void* value = nullptr;
    std::uint32_t key_length = 0;
    std::uint32_t length = 0;
    pss_getvalue(store, place, &key, &key_length, &value, &length);
    bench::keep(key);
  }
}

std::size_t generate(const StoreFile& file, const std::vector<if_index_t>& interfaces) {
  platform::TextRequest request;
  request.config_prefix = request.debug_prefix = file.path();
  request.interfaces = interfaces;
  if (ficon_startup_acfg_gen(request.request(), request.context()) != 0) fail("generation");
  return request.text->size();
}

void measure_store(const std::string& path, std::uint32_t vsans) {
  const StoreFile file(path, vsans);
  const std::vector<if_index_t> all = platform::current_chassis()->interfaces();
  if (all.size() != kPorts) fail("a chassis of 1280 ports");
  std::printf("%u VSANs: %zu bytes of text, %zu of them without interfaces\n", vsans,
              generate(file, all), generate(file, {}));
  std::vector<bench::Contender> contenders = {
      {"walk", [&] { walk(file); }, {}},
      {"generation, no interfaces", [&] { generate(file, {}); }, {}},
      {"generation, 1280 interfaces", [&] { generate(file, all); }, {}}};
  bench::measure(contenders, 50, vsans > 1000 ? 2 : 10);
  bench::print(contenders);
}

/** The description of a chassis with as many ports as there can be, in a file of its own. */
class ChassisFile {
 public:
  ChassisFile() {
    std::string text = "slots = 16\nficon_ports = 1280\n";
    for (int slot = 1; slot <= 16; ++slot) {
      text += "[[module]]\nslot = " + std::to_string(slot) + "\nports = 64\n";
    }
    for (int channel = 1; channel <= 256; ++channel) {
      text += "[[port_channel]]\nnumber = " + std::to_string(channel) + "\n";
    }
    const int fd = mkstemp(path_);
    if (write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
      fail("describing a chassis");
    }
    close(fd);
  }
  ChassisFile(const ChassisFile&) = delete;
  ChassisFile& operator=(const ChassisFile&) = delete;
  ~ChassisFile() { unlink(path_); }

  const char* path() const { return path_; }

 private:
  char path_[32] = "/tmp/ficon-chassis-XXXXXX";
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return std::fprintf(stderr, "usage: config_text FCD-EMULATOR\n"), 2;
  bench::pin_to_one_core();
  const ChassisFile chassis;
  const bench::EmulatorProcess emulator(argv[1], {"--chassis", chassis.path()});
  const mts_handle_t handle = emulator.open();
  for (const std::uint32_t vsans : {1U, 100U, 4093U}) {
    measure_store(emulator.file("store-" + std::to_string(vsans)), vsans);
  }
  ficon_mts_close(handle);
}
