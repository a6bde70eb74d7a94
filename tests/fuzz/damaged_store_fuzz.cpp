/**
 * A store's files with bytes that changed, or cut off: the daemon refuses them with a sentence, or
 * takes them and finds again what it then wrote. Persistent storage gives records or an error, and
 * the generator of configuration text ends.
 *
 *   lengths of the database and of its log (0: whole), then changes: file, place, and a block
 */
#include <filesystem>
#include <fstream>
#include <iterator>
#include <tuple>

#include "acfg/text_service.h"
#include "chassis/current_chassis.h"
#include "everything_readable.h"
#include "platform/pss.h"
#include "scratch.h"
#include "wire/status.h"

using namespace ficon::fuzz;
using namespace ficon::emulator;

namespace {

/** The database, and what was committed since it was last in one piece. */
using Files = std::array<Bytes, 2>;
constexpr const char* kSuffixes[] = {"", "-wal"};

Bytes contents_of(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

SwitchOptions options() {
  static const std::shared_ptr<Hardware> hardware = read_hardware({});
  const auto noon = [] { return std::int64_t{1'700'000'000}; };
  return {.history_capacity = 50, .hardware = hardware, .clocks = {noon, noon}};
}

/** One run of a daemon that somebody tells to enable FICON on a VSAN. */
template <class Behind>
void commit_vsan(const std::string& file, std::uint32_t vsan, Behind behind) {
  Store store(file);
  Switch model(options());
  store.load(model);
  model.enable_feature();
  std::ignore = model.enable_ficon(vsan, {1, Requester::kOperator});
  store.commit(model);
  behind();
}

/** As a daemon leaves them that is killed: in the log is what it committed last. */
Files killed_daemons_files() {
  const Scratch scratch;
  const std::string file = scratch.file("ficon.db");
  commit_vsan(file, 10, [] {});
  Files files;
  commit_vsan(file, 20, [&] {
    for (std::size_t i = 0; i < files.size(); ++i) files[i] = contents_of(file + kSuffixes[i]);
  });
  return files;
}

/** @return whether a byte is another one now */
bool damage(Files& files, Input input) {
  const Files whole = files;
  for (Bytes& file : files) {
    const std::size_t length = input.u16();
    if (length != 0 && length < file.size()) file.resize(length);
  }
  while (!input.empty()) {
    Bytes& file = files[input.u8() % files.size()];
    const std::size_t place = input.u16();
    const ByteView block = input.block();
    if (place >= file.size()) continue;
    std::ranges::copy(block.first(std::min(block.size(), file.size() - place)),
                      file.begin() + static_cast<std::ptrdiff_t>(place));
  }
  return files != whole;
}

void write(const std::string& file, const Files& files) {
  for (std::size_t i = 0; i < files.size(); ++i) {
    std::ofstream(file + kSuffixes[i], std::ios::binary)
        .write(reinterpret_cast<const char*>(files[i].data()),
               static_cast<std::streamsize>(files[i].size()));
  }
}

/** @return the records of a table, or nothing when the storage reports an error */
std::optional<std::size_t> records_in(const std::string& file, const char* table) {
  constexpr std::uint32_t kFirst = 1;
  constexpr std::uint32_t kNext = 3;
  const pss_store_t store = pss_open((file + "/" + table).c_str());
  if (store == nullptr) return std::nullopt;
  std::size_t records = 0;
  pss_location_t place = nullptr;
  std::uint32_t status = pss_move2location(store, kFirst, &place);
  for (; status == 0; status = pss_move2location(store, kNext, &place)) {
    const std::uint8_t* key = nullptr;
    const void* value = nullptr;
    std::uint32_t key_length = 0;
    std::uint32_t value_length = 0;
    require(pss_getvalue(store, place, &key, &key_length, &value, &value_length) == 0,
            "a record that the walk stands on can be had");
    Bytes copy(value_length);
    if (value_length != 0) std::memcpy(copy.data(), value, value_length);
    std::uint32_t room = value_length;
    pss_fetch(store, key, key_length, copy.data(), &room);  // a damaged store may not find it
    require(room <= copy.size(), "a fetch keeps to the room");
    ++records;
  }
  require(place == nullptr, "a walk that has ended stands nowhere");
  return status == ficon::status::kEndOfStore ? std::optional(records) : std::nullopt;
}

/** The same by the daemon's own way to the file. */
std::optional<std::size_t> rows_of(const std::string& file, const std::string& table) {
  try {
    Database database(file);
    std::size_t rows = 0;
    database.each("SELECT key, value FROM " + table + " ORDER BY key",
                  [&](std::string_view, std::string_view) { ++rows; });
    return rows;
  } catch (const StoreError&) {
    return std::nullopt;
  }
}

void generate(const std::string& file) {
  ficon::platform::TextRequest request;
  request.config_prefix = file;
  request.debug_prefix = file;
  request.interfaces = ficon::platform::current_chassis()->interfaces();
  ficon_startup_acfg_gen(request.request(), request.context());
}

std::vector<Learned> answers(const std::string& file) {
  Log log(LogLevel::kError);
  Service service(file, options(), log);
  return everything_readable(service);
}

/** @return whether a daemon takes the store */
bool run_daemon(const std::string& file) {
  try {
    commit_vsan(file, 30, [] {});
  } catch (const StoreError& error) {
    require(*error.what() != '\0', "a refusal says why");
    return false;
  }
  const auto learned = answers(file);
  require(same(learned, answers(file)), "what was committed is there again");
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Scratch scratch;
  static const Files whole = killed_daemons_files();
  scratch.clear();
  const std::string file = scratch.file("ficon.db");
  Files files = whole;
  const bool damaged = damage(files, Input({data, size}));
  write(file, files);
  for (const char* table : {"ficon_saved_config", "ficon_debug"}) {
    const auto records = records_in(file, table);
    require(damaged || records, "a whole store can be read");
    require(records == rows_of(file, table), "all records are given, or an error");
  }
  generate(file);
  const bool taken = run_daemon(file);
  require(damaged || taken, "a whole store is taken");
  require(!taken || records_in(file, "ficon_saved_config"), "a store that is taken can be read");
  return 0;
}
