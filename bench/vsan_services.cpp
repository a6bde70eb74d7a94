/**
 * Host data of 16 KiB written and read, beside a raw ping-pong of packets of the same lengths; and
 * a walk of 100,000 history entries: what an entry costs at the beginning, in the middle, at the
 * end. All processes on one core.
 */
#include <signal.h>
#include <transport/endpoint.h>

#include <cstdio>
#include <vector>

#include "emulator_process.h"
#include "exchange.h"
#include "measure.h"

using namespace ficon;

namespace {

constexpr std::uint32_t kBlock = 16384;
constexpr std::uint32_t kEntries = 100'000;

void read_block(mts_handle_t handle, std::vector<std::uint8_t>& block) {
  std::uint32_t length = 0;
  if (ficon_cmi_get_host_data(3, handle, "BENCH", "UNKNOWN", bench::kWait, bench::kVsan,
                              block.data(), &length) != 0 ||
      length != kBlock) {
    bench::fail("reading host data");
  }
}

/** One request and its reply, without the lock around them. */
void write_unlocked(mts_handle_t handle, const std::vector<std::uint8_t>& block) {
  mts_msg_ref_t request{};
  if (ficon_cmi_send_set_host_data_nonblock(3, handle, "BENCH", "UNKNOWN", bench::kWait,
                                            bench::kVsan, 0, block.data(), kBlock, &request) != 0) {
    bench::fail("sending host data");
  }
  mts_msg_ref_t reply = bench::receive(handle, &request);
  std::uint32_t vsan = 0;
  if (ficon_cmi_parse_set_host_data(&reply, &vsan) != 0) bench::fail("writing host data");
  mts_drop(handle, &reply);
}

void write_locked(mts_handle_t handle, const std::vector<std::uint8_t>& block) {
  if (ficon_cmi_set_host_data(3, handle, "BENCH", "UNKNOWN", bench::kWait, bench::kVsan, 0,
                              block.data(), kBlock) != 0) {
    bench::fail("writing host data under the lock");
  }
}

void measure_host_data(mts_handle_t handle) {
  constexpr std::size_t kRead[] = {bench::kFrame + 4, bench::kFrame + 12 + kBlock};
  constexpr std::size_t kWrite[] = {bench::kFrame + 12 + kBlock, bench::kFrame + 8};
  const int reader = bench::start_answerer();
  const int writer = bench::start_answerer();
  std::vector<std::uint8_t> block(kBlock, 0x5a);
  write_locked(handle, block);

  std::printf("host data: 16384 bytes\n");
  std::vector<bench::Contender> reading = {{"raw ping-pong of the read's bytes",
                                            [&] { bench::ping_pong(reader, kRead[0], kRead[1]); },
                                            {}},
                                           {"read", [&] { read_block(handle, block); }, {}}};
  bench::measure(reading, 100, 100);
  bench::print(reading);
  std::vector<bench::Contender> writing = {
      {"raw ping-pong of the write's bytes",
       [&] { bench::ping_pong(writer, kWrite[0], kWrite[1]); },
       {}},
      {"write of what stands there already", [&] { write_unlocked(handle, block); }, {}},
      {"write", [&] { ++block[0], write_unlocked(handle, block); }, {}},
      {"write under the lock", [&] { ++block[0], write_locked(handle, block); }, {}}};
  bench::measure(writing, 20, 20);
  bench::print(writing);
}

/** Entries by the thousand: requests are sent ahead of their replies. */
void fill_history(mts_handle_t handle) {
  constexpr std::uint32_t kAhead = 64;
  std::uint8_t mode = 0;
  for (std::uint32_t made = 0; made < kEntries; made += kAhead) {
    std::vector<mts_msg_ref_t> requests(kAhead);
    for (mts_msg_ref_t& request : requests) {
      mode ^= 1;
      if (ficon_cmi_clock_alert_mode_nonblock(1, handle, "BENCH", "UNKNOWN", bench::kWait,
                                              bench::kVsan, mode, &request) != 0) {
        bench::fail("filling the history");
      }
    }
    for (mts_msg_ref_t& request : requests) {
      mts_msg_ref_t reply = bench::receive(handle, &request);
      if (ficon_cmi_parse_vsan_cfg(&reply) != 0) bench::fail("filling the history");
      mts_drop(handle, &reply);
    }
  }
}

/** One step of a walk; the entries that it brought. */
std::uint32_t step(mts_handle_t handle, std::uint32_t& key) {
  std::uint32_t count = 0;
  std::uint32_t lost = 0;
  ficon_cmi_hist_entry_t* entries = nullptr;
  if (ficon_cmi_get_history_summary(2, handle, "BENCH", "UNKNOWN", bench::kWait, 1, &key, 0, 1000,
                                    0, &count, &lost, &entries) != 0) {
    bench::fail("walking the history");
  }
  mtrack_free(entries);
  return count;
}

/** Steps of 1000 entries each, in tenths of the whole walk: the median of each tenth. */
void measure_walk(mts_handle_t handle) {
  constexpr int kWalks = 20;
  constexpr std::size_t kTenths = 10;
  constexpr std::uint32_t kStep = 1000;
  std::vector<std::vector<double>> tenths(kTenths);
  for (int walk = 0; walk < kWalks; ++walk) {
    std::uint32_t newest = 0;
    std::uint32_t count = 0;
    std::uint32_t lost = 0;
    ficon_cmi_hist_entry_t* none = nullptr;
    if (ficon_cmi_get_history_summary(2, handle, "BENCH", "UNKNOWN", bench::kWait, 1, &newest, 2, 0,
                                      0, &count, &lost, &none) != 0) {
      bench::fail("asking for the extent");
    }
    std::uint32_t key = newest - kEntries;
    for (std::uint32_t done = 0; done < kEntries; done += kStep) {
      const auto start = std::chrono::steady_clock::now();
      if (step(handle, key) != kStep) bench::fail("a step of 1000 entries");
      const std::chrono::duration<double, std::nano> passed =
          std::chrono::steady_clock::now() - start;
      tenths[done / (kEntries / kTenths)].push_back(passed.count() / kStep);
    }
  }
  std::printf("history: ns an entry, by tenths of a walk of %u\n", kEntries);
  for (std::vector<double>& tenth : tenths) {
    std::ranges::sort(tenth);
    std::printf(" %.0f", tenth[tenth.size() / 2]);
  }
  std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return std::fprintf(stderr, "usage: vsan_services FCD-EMULATOR\n"), 2;
  bench::pin_to_one_core();
  signal(SIGCHLD, SIG_IGN);
  const bench::EmulatorProcess emulator(argv[1], {"--history", std::to_string(kEntries)});
  mts_handle_t handle = emulator.open();
  measure_host_data(handle);
  fill_history(handle);
  measure_walk(handle);
  ficon_mts_close(handle);
}
