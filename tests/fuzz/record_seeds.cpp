/**
 * record_seeds DIR: seeds for the fuzz targets out of real conversations. Makes every call of the
 * table on an emulator of its own, and writes what went over the wire, and what the store holds at
 * the end, as inputs of the targets.
 */
#include <filesystem>
#include <fstream>
#include <set>

#include "calls.h"
#include "scratch.h"
#include "script.h"
#include "server/embedded.h"
#include "store/database.h"
#include "transport/endpoint.h"

using namespace ficon::fuzz;

namespace {

struct Exchange {
  ficon_mts_event_t request;
  Bytes payload;
};

/** What one call sent and received. */
struct Conversation {
  std::vector<Exchange> requests;
  std::vector<Exchange> replies;
};

void note(const ficon_mts_event_t* event, void* context) {
  auto& conversation = *static_cast<Conversation*>(context);
  const auto* bytes = static_cast<const std::uint8_t*>(event->payload);
  auto& side = event->reply != 0 ? conversation.replies : conversation.requests;
  side.push_back({*event, Bytes(bytes, bytes + event->length)});
}

struct Row {
  const char* call;
  Arguments args;
};

/** A day on VSANs 10 and 20; each row goes on from where the one before it left the switch. */
const Row kDay[] = {
    {"ficon state", {10, 1, 1}},
    {"ficon state", {20, 1, 1}},
    {"active equals saved", {}},
    {"VSAN information", {10, 1, 1}},
    {"VSAN information", {10, 1, 2}},
    {"lock", {10, 1}},
    {"modes", {10, 1, 0x010001, 1}},
    {"clock alert mode", {20, 1, 1}},
    {"FCID last byte", {10, 1, 0x1f}},
    {"code page", {20, 1, 500}},
    {"clock", {10, 1, 0x11223344, 0x55667788}},
    {"key counter", {10, 1, 9}},
    {"box status", {0, 1}},
    {"writing host data", {10, 3, 100, 40, 0xa5}},
    {"reading host data", {10, 1}},
    {"identification", {0, 1, 0, 0, 5}},
    {"history", {0, 1, 1, 0, 0}},
    {"history", {0, 1, 1, 0, 1}},
    {"limits", {0, 1, 2, 200}},
    {"MIH time-out", {0, 1, 1, 0x43}},
    {"MIH time-out", {10, 1, 2}},
    {"port map of a module", {0, 1, 1, 0, 0}},
    {"port map of a module", {0, 1, 0, 0, 1}},
    {"full port map", {0, 1, 0, 12}},
    {"step of the port map", {0, 1, 2, 0, 512 | 512 << 16}},
    {"port map by FCID", {0, 1, 1, 0x010300, 0}},
    {"port configuration", {0, 1, 0x01000003, 2}},
    {"reservation", {2, 1, 3, 0, 1}},
    {"reservation", {1, 1, 2, 44, 1}},
    {"reservation", {1, 1, 1, 44, 1}},
    {"reservation", {0, 1, 6, 0, 1}},
    {"port number", {10, 1, 1, 44, 0x01000005}},
    {"port number", {10, 1, 3, 3, 0x01000003}},
    {"port address", {0, 1, 0x20, 0x01000006, 7}},
    {"swap", {0, 1, 3, 4, 0x01000004}},
    {"prohibit lists", {0, 1, 1, 1}},
    {"file operation", {10, 1, 10, 0, 0, "PROD"}},
    {"file header", {10, 1, 0, 0, 0, "PROD"}},
    {"file copy", {10, 1, 0, 0, 0, "PROD"}},
    {"blocked ports", {10, 1, 4, 1, 5, "PROD"}},
    {"port names", {10, 1, 4, 0, 0, "PROD"}},
    {"prohibited ports", {10, 1, 4, 0x60, 0, "PROD"}},
    {"ports by interface", {10, 1, 1, 0x01000000, 0x01000005, "PROD"}},
    {"ports by address", {10, 1, 1, 2, 6, "PROD"}},
    {"ports by address", {10, 1, 2, 512, 0, "PROD"}},
    {"file information", {10, 1, 1, 0, 0, ""}},
    {"saved file", {10, 1, 0, 200, 0, "COPY"}},
    {"file operation", {10, 1, 1, 0, 0, "PROD"}},
    {"file operation", {10, 1, 6, 0, 0, "PROD"}},
    {"file operation", {10, 1, 2, 0, 0, "COPY"}},
    {"switch offline", {20, 1, 1}},
    {"ficon state", {20, 1, 0}},
};

/** Inputs longer than this slow a fuzzer down; what stands behind is more of the same. */
constexpr std::size_t kLongest = 5000;

class Corpus {
 public:
  explicit Corpus(std::filesystem::path directory) : directory_(std::move(directory)) {}

  void write(const std::string& target, std::string name, const Bytes& bytes) {
    std::ranges::replace(name, ' ', '-');
    const auto where = directory_ / target;
    std::filesystem::create_directories(where);
    std::ofstream(where / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(std::min(bytes.size(), kLongest)));
  }

 private:
  std::filesystem::path directory_;
};

void append_block(Bytes& bytes, std::string_view block) {
  bytes.push_back(static_cast<std::uint8_t>(block.size()));
  bytes.push_back(static_cast<std::uint8_t>(block.size() >> 8));
  bytes.insert(bytes.end(), block.begin(), block.end());
}

std::string_view view_of(const Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

void write_call(Corpus& corpus, std::size_t number, const Row& row, const Conversation& heard) {
  Bytes bytes{static_cast<std::uint8_t>(number)};
  const Bytes args = row.args.to_bytes();
  bytes.insert(bytes.end(), args.begin(), args.end());
  for (const Exchange& reply : heard.replies) {
    bytes.push_back(0);
    append_block(bytes, view_of(reply.payload));
  }
  corpus.write("calls", row.call + std::string("-") + std::to_string(row.args.a), bytes);
}

void write_replies(Corpus& corpus, const Conversation& heard, std::set<std::string>& written) {
  for (const Exchange& reply : heard.replies) {
    const std::string name =
        std::to_string(reply.request.sap) + "-" + std::to_string(reply.request.opcode);
    if (reply.payload.empty() || !written.insert(name).second) continue;
    Bytes bytes{1};
    bytes.insert(bytes.end(), reply.payload.begin(), reply.payload.end());
    corpus.write("replies", name, bytes);
  }
}

std::uint8_t route_of(const ficon_mts_event_t& event) {
  const auto routes = ficon::emulator::routes();
  const auto found = std::ranges::find_if(routes, [&](const ficon::emulator::Route& route) {
    return route.node == event.node && route.sap == event.sap && route.opcode == event.opcode;
  });
  return static_cast<std::uint8_t>(found - routes.begin());
}

void write_store(Corpus& corpus, const std::string& path) {
  ficon::emulator::Database database(path);
  Bytes objects;
  database.each("SELECT key, value FROM state WHERE key NOT LIKE 'history/%'",
                [&](std::string_view key, std::string_view value) {
                  if (value.size() > kLongest / 5) return;
                  append_block(objects, key);
                  append_block(objects, value);
                });
  corpus.write("stored_state", "day", objects);
  Bytes records{0, 0};
  database.each("SELECT key, value FROM ficon_saved_config WHERE length(value) < 600",
                [&](std::string_view key, std::string_view value) {
                  records.insert(records.end(), key.begin(), key.end());
                  append_block(records, value);
                  records.insert(records.end(), {0, 0});
                });
  corpus.write("saved_config", "day", records);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: record_seeds DIR\n");
    return 2;
  }
  Corpus corpus(argv[1]);
  const Scratch directory;
  ficon_embedded_register(ficon::emulator::connect_embedded);
  const std::string endpoint = "embedded:" + directory.file("");
  char error[256] = "";
  const mts_handle_t handle = ficon_mts_open(endpoint.c_str(), error, sizeof error);
  require(handle != nullptr, error);
  std::vector<Step> script;
  std::set<std::string> written;
  for (const Row& row : kDay) {
    const auto call = std::ranges::find(calls(), row.call, &Call::name);
    require(call != calls().end(), row.call);
    Conversation heard;
    ficon_mts_observe(handle, note, &heard);
    Arguments args = row.args;
    call->run(handle, args);
    write_call(corpus, static_cast<std::size_t>(call - calls().begin()), row, heard);
    write_replies(corpus, heard, written);
    for (const Exchange& request : heard.requests) {
      script.push_back({route_of(request.request), 1, request.payload});
    }
  }
  ficon_mts_close(handle);
  constexpr std::size_t kStepsAScript = 24;
  for (std::size_t i = 0; i < script.size(); i += kStepsAScript) {
    const std::size_t end = std::min(script.size(), i + kStepsAScript);
    const auto from = script.begin() + static_cast<std::ptrdiff_t>(i);
    std::vector<Step> part(from, script.begin() + static_cast<std::ptrdiff_t>(end));
    // The feature and FICON on VSAN 10, without which most requests are refused.
    if (i != 0) part.insert(part.begin(), script.begin(), script.begin() + 4);
    part.back().flags |= Step::kRestarts;
    corpus.write("handlers", "part-" + std::to_string(i / kStepsAScript), write_script(part));
  }
  write_store(corpus, directory.file("ficon.db"));
  return 0;
}
