/**
 * kill -9 at any moment: what was acknowledged is there, and nothing but the one change under way
 * may be there besides.
 */
#include <doctest/doctest.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <random>
#include <thread>

#include "client.h"
#include "daemon_process.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kWriters = 4;

int kills_wanted() {
  const char* wanted = std::getenv("FICON_KILLS");
  return wanted == nullptr ? 100 : std::atoi(wanted);
}

/** One VSAN whose key counter and clock move together: a half-made change would show. */
struct Writer {
  std::uint32_t vsan = 0;
  std::uint32_t acknowledged = 0;  // the clock word last acknowledged
  std::uint32_t sent = 0;          // the clock word last sent

  void write(const std::string& socket) {
    Client client(socket);
    while (client.connected()) {
      ++sent;
      const auto reply =
          client.call(7865, vsan_config(1, 12, vsan, 1320, host32(sent) + host32(~sent)));
      if (!reply || tlv_status(*reply) != 0) return;
      acknowledged = sent;
    }
  }

  void verify(Client& client) {
    const auto info = client.call(7855, vsan_info(1, vsan));
    REQUIRE(info.has_value());
    REQUIRE(tlv_status(*info) == 0);
    const std::uint32_t found = host32_at(*info, 140 + 1320);
    const bool expected = found == acknowledged || found == sent;
    REQUIRE(expected);
    REQUIRE(host32_at(*info, 140 + 1324) == (found == 0 ? 0 : ~found));
    REQUIRE(be32_at(*info, 140 + 16) - changes_before == found - clock_before);
    changes_before = be32_at(*info, 140 + 16);
    clock_before = acknowledged = sent = found;
  }

  std::uint32_t changes_before = 0;
  std::uint32_t clock_before = 0;
};

}  // namespace

TEST_CASE("Killed under load, the daemon comes back with exactly what it acknowledged") {
  ScratchDirectory directory;
  std::mt19937 random(20);
  Writer writers[kWriters];
  std::uint64_t changes = 0;
  const int kills = kills_wanted();
  for (int round = 0; round <= kills; ++round) {
    CAPTURE(round);
    DaemonProcess daemon(directory, {"--history", "200", "--log-level", "error"});
    REQUIRE(daemon.running());
    {
      Client client(daemon.socket());
      for (std::uint32_t i = 0; i < kWriters; ++i) {
        writers[i].vsan = 20 + i;
        if (round == 0) REQUIRE(client.enable(20 + i));
        writers[i].verify(client);
      }
    }
    if (round == kills) break;
    std::vector<std::thread> threads;
    for (Writer& writer : writers) {
      threads.emplace_back([&] { writer.write(daemon.socket()); });
    }
    usleep(static_cast<useconds_t>(1000 + random() % 30'000));
    daemon.signal(SIGKILL);
    daemon.wait();
    for (std::thread& thread : threads) thread.join();
    for (const Writer& writer : writers) changes += writer.acknowledged - writer.clock_before;
  }
  MESSAGE(kills << " kills, " << changes << " changes acknowledged between them");
  CHECK(changes > 0);
}
