/**
 * The port map of 64, 256 and 1024 ports, in as many requests as it takes, beside a raw ping-pong
 * of packets of the same lengths: what a port costs must not grow with their number. All processes
 * on one core.
 */
#include <signal.h>
#include <transport/endpoint.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "emulator_process.h"
#include "exchange.h"
#include "measure.h"

using namespace ficon;

namespace {

using bench::fail;
using bench::kWait;
constexpr std::uint32_t kModulePorts = 64;
constexpr std::uint32_t kSpan = 36;

/** Packet lengths. */
struct Exchange {
  std::size_t request;
  std::size_t reply;
};

/** By position: two spans a module. */
void read_modules(mts_handle_t handle, std::uint32_t ports) {
  for (std::uint32_t module = 1; module <= ports / kModulePorts; ++module) {
    for (std::uint32_t start = 0; start < kModulePorts; start += kSpan) {
      std::array<ficon_cmi_portmap_entry_t, kSpan> entries{};
      std::uint32_t count = 0;
      if (ficon_cmi_get_portmap_entry(handle, "BENCH", "UNKNOWN", kWait, module, start, 0,
                                      entries.data(), &count) != 0 ||
          entries[count - 1].state != 4) {
        fail("reading a module");
      }
    }
  }
}

/** By port number, in one request: as many ports as there are port addresses, at most. */
void read_numbers(mts_handle_t handle, std::uint32_t ports) {
  std::array<ficon_cmi_portmap_full_entry_t, 256> entries{};
  if (ficon_cmi_get_portmap_full(handle, "BENCH", "UNKNOWN", kWait, 0, ports - 1, entries.data()) !=
          0 ||
      entries[ports - 1].state != 4) {
    fail("reading port numbers");
  }
}

void note(const ficon_mts_event_t* event, void* context) {
  auto& exchanges = *static_cast<std::vector<Exchange>*>(context);
  const std::size_t length = bench::kFrame + event->length;
  if (event->reply == 0) {
    exchanges.push_back({length, 0});
  } else {
    exchanges.back().reply = length;
  }
}

using Read = void (*)(mts_handle_t handle, std::uint32_t ports);

void measure(mts_handle_t handle, const char* name, Read read, std::vector<std::uint32_t> sizes) {
  std::printf("%-16s %6s %9s %9s %12s %12s %8s\n", name, "ports", "requests", "bytes",
              "raw ns a port", "ns a port", "ratio");
  for (const std::uint32_t ports : sizes) {
    std::vector<Exchange> exchanges;
    ficon_mts_observe(handle, note, &exchanges);
    read(handle, ports);
    ficon_mts_observe(handle, nullptr, nullptr);
    std::size_t bytes = 0;
    for (const Exchange& exchange : exchanges) bytes += exchange.request + exchange.reply;
    const int answerer = bench::start_answerer();
    const auto raw = [&] {
      for (const Exchange& exchange : exchanges) {
        bench::ping_pong(answerer, exchange.request, exchange.reply);
      }
    };
    std::vector<bench::Contender> contenders = {{"raw", raw, {}},
                                                {name, [&] { read(handle, ports); }, {}}};
    bench::measure(contenders, 100, static_cast<int>(2048 / ports));
    const double floor = contenders[0].median() / ports;
    const double own = contenders[1].median() / ports;
    std::printf("%-16s %6u %9zu %9zu %12.0f %12.0f %8.2f\n", "", ports, exchanges.size(), bytes,
                floor, own, own / floor);
    close(answerer);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return std::fprintf(stderr, "usage: ports FCD-EMULATOR CHASSIS\n"), 2;
  bench::pin_to_one_core();
  signal(SIGCHLD, SIG_IGN);
  const bench::EmulatorProcess emulator(argv[1], {"--chassis", argv[2]});
  mts_handle_t handle = emulator.open();
  measure(handle, "by position", read_modules, {64, 256, 1024});
  measure(handle, "by port number", read_numbers, {64, 128, 240});
  ficon_mts_close(handle);
}
