/**
 * Prohibit entries set and port records read, of 10 ports and of all 254, beside a raw ping-pong of
 * packets of the same lengths; what an entry costs at both; and what a batch costs that is kept.
 * All processes on one core.
 */
#include <signal.h>
#include <transport/endpoint.h>

#include <cstdio>
#include <vector>

#include "emulator_process.h"
#include "exchange.h"
#include "measure.h"
#include "wire/file_request.h"

using namespace ficon;

namespace {

constexpr std::uint32_t kFew = 10;
constexpr std::uint32_t kAll = 254;
constexpr std::size_t kFileRequest = 4 + 4 + 158;  // array, TLV, record

using Entries = std::vector<ficon_cmi_prohibit_entry_t>;

/** Prohibits each of the first `count` ports to those whose address, added, leaves `rest` of 3. */
Entries entries_of(std::uint32_t count, std::uint32_t rest) {
  Entries entries(count);
  for (std::uint32_t a = 0; a < count; ++a) {
    entries[a].port_address = a;
    for (std::uint32_t b = 0; b < kAll; ++b) {
      if (a == b || (a + b) % 3 != rest) continue;
      entries[a].bitset[b / 8] |= static_cast<std::uint8_t>(0x80 >> (b % 8));
    }
  }
  return entries;
}

std::uint32_t operate(mts_handle_t handle, wire::FileOperation operation, std::uint32_t key = 0) {
  char name[9] = "BENCH";
  if (ficon_cmi_file_ops(1, handle, "BENCH", "UNKNOWN", bench::kWait, bench::kVsan,
                         static_cast<std::uint32_t>(operation), key == 0 ? name : nullptr, &key,
                         nullptr, nullptr) != 0) {
    bench::fail("file operation");
  }
  return key;
}

/** One request and its reply, within an edit: nothing is stored. */
void set_in_edit(mts_handle_t handle, std::uint32_t key, const Entries& entries) {
  mts_msg_ref_t request{};
  if (ficon_cmi_file_set_prohibit_bitset_nonblock(
          1, handle, "BENCH", "UNKNOWN", bench::kWait, bench::kVsan, nullptr, &key, entries.data(),
          static_cast<std::uint32_t>(entries.size()), 1, 37, &request) != 0) {
    bench::fail("sending prohibit entries");
  }
  mts_msg_ref_t reply = bench::receive(handle, &request);
  if (ficon_cmi_file_parse_set_port_cfg(&reply) != 0) bench::fail("setting prohibit entries");
  mts_drop(handle, &reply);
}

/** As an operator's program does: under the lock, with an edit of its own, kept in the store. */
void set_and_keep(mts_handle_t handle, const Entries& entries) {
  char name[9] = "BENCH";
  if (ficon_cmi_file_set_prohibit_bitset(
          1, handle, "BENCH", "UNKNOWN", bench::kWait, bench::kVsan, name, nullptr, entries.data(),
          static_cast<std::uint32_t>(entries.size()), nullptr) != 0) {
    bench::fail("setting prohibit entries under the lock");
  }
}

void read_ports(mts_handle_t handle, std::uint32_t count) {
  mts_msg_ref_t request{};
  char name[9] = "BENCH";
  if (ficon_cmi_file_get_port_info_portaddr_nonblock(1, handle, "BENCH", "UNKNOWN", bench::kWait, 1,
                                                     0, bench::kVsan, name, nullptr, 0, count - 1,
                                                     1, 37, &request) != 0) {
    bench::fail("asking for ports");
  }
  mts_msg_ref_t reply = bench::receive(handle, &request);
  std::uint32_t vsan = 0;
  std::uint32_t found = 0;
  ficon_cmi_port_info_t* list = nullptr;
  if (ficon_cmi_file_parse_port_info(1, &reply, &list, &vsan, name, 1, 37, &found) != 0 ||
      found != count) {
    bench::fail("reading ports");
  }
  mtrack_free(list);
  mts_drop(handle, &reply);
}

/** What each of the other entries costs, and the whole call divided among them. */
void print_cost(std::vector<bench::Contender>& contenders, std::size_t few, std::size_t all) {
  const double at_few = contenders[few].median();
  const double at_all = contenders[all].median();
  std::printf("ns an entry: %.0f at %u, %.0f at %u; each of the others %.0f\n\n", at_few / kFew,
              kFew, at_all / kAll, kAll, (at_all - at_few) / (kAll - kFew));
}

void measure_setting(mts_handle_t handle) {
  const std::size_t few_size = bench::kFrame + kFileRequest + kFew * 44;
  const std::size_t all_size = bench::kFrame + kFileRequest + kAll * 44;
  const std::size_t reply_size = bench::kFrame + kFileRequest;
  const int few_raw = bench::start_answerer();
  const int all_raw = bench::start_answerer();
  const Entries few[] = {entries_of(kFew, 0), entries_of(kFew, 1)};
  const Entries all[] = {entries_of(kAll, 0), entries_of(kAll, 1)};
  const std::uint32_t key = operate(handle, wire::FileOperation::kOpen);
  std::size_t turn = 0;
  std::vector<bench::Contender> contenders = {
      {"raw ping-pong of the bytes of 254",
       [&] { bench::ping_pong(all_raw, all_size, reply_size); },
       {}},
      {"raw ping-pong of the bytes of 10",
       [&] { bench::ping_pong(few_raw, few_size, reply_size); },
       {}},
      {"10 entries", [&] { set_in_edit(handle, key, few[++turn % 2]); }, {}},
      {"254 entries", [&] { set_in_edit(handle, key, all[++turn % 2]); }, {}},
      {"254 entries that stand there already", [&] { set_in_edit(handle, key, all[0]); }, {}}};
  std::printf("prohibit entries set, within an edit\n");
  bench::measure(contenders, 100, 20);
  bench::print(contenders);
  print_cost(contenders, 2, 3);
  operate(handle, wire::FileOperation::kKeep, key);

  std::vector<bench::Contender> kept = {
      {"raw ping-pong of the bytes of 254",
       [&] { bench::ping_pong(all_raw, all_size, reply_size); },
       {}},
      {"254 entries, under the lock and kept", [&] { set_and_keep(handle, all[++turn % 2]); }, {}}};
  bench::measure(kept, 20, 10);
  bench::print(kept);
}

void measure_reading(mts_handle_t handle) {
  constexpr std::size_t kRequest = bench::kFrame + 4 + 4 + 145 + 4 + 8;
  constexpr std::size_t kReply = bench::kFrame + 4 + 4 + 145;
  const int few_raw = bench::start_answerer();
  const int all_raw = bench::start_answerer();
  std::vector<bench::Contender> contenders = {
      {"raw ping-pong of the bytes of 254",
       [&] { bench::ping_pong(all_raw, kRequest, kReply + kAll * 111); },
       {}},
      {"raw ping-pong of the bytes of 10",
       [&] { bench::ping_pong(few_raw, kRequest, kReply + kFew * 111); },
       {}},
      {"10 ports", [&] { read_ports(handle, kFew); }, {}},
      {"254 ports", [&] { read_ports(handle, kAll); }, {}}};
  std::printf("port records read\n");
  bench::measure(contenders, 100, 20);
  bench::print(contenders);
  print_cost(contenders, 2, 3);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return std::fprintf(stderr, "usage: files FCD-EMULATOR\n"), 2;
  bench::pin_to_one_core();
  signal(SIGCHLD, SIG_IGN);
  const bench::EmulatorProcess emulator(argv[1]);
  mts_handle_t handle = emulator.open();
  measure_setting(handle);
  measure_reading(handle);
  ficon_mts_close(handle);
}
