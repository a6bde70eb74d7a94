/** kill -9 of the director while batches come in: a file is never seen half changed. */
#include <doctest/doctest.h>

#include <atomic>
#include <random>
#include <thread>

#include "daemon_process.h"
#include "file_client.h"

using namespace ficon;
using namespace ficon::test;
using wire::FileOperation;

namespace {

constexpr int kRounds = 25;

/** Batches of every port, each with a divisor of its own, on a file of the writer's own. */
struct Writer {
  std::uint32_t requester;  // 1: an edit around each batch; 2: the batch alone
  std::string file;
  std::uint32_t acknowledged = 0;  // the batch that was answered last
  std::uint32_t sent = 0;
  std::uint32_t answered_before = 0;
  std::atomic<std::uint32_t> answered = 0;  // since the director was started

  static std::uint32_t divisor(std::uint32_t batch) { return batch == 0 ? 1000 : batch % 89 + 2; }

  void write(const std::string& socket) {
    const FileClient client(socket, requester);
    for (;;) {
      ++sent;
      if (client.prohibit(file, masks_of(divisor(sent))) != 0) return;
      acknowledged = sent;
      ++answered;
    }
  }

  /** The last batch acknowledged, or the whole of the one that was under way. */
  void verify(const FileClient& client) {
    const Masks found = client.masks(file);
    const bool is_acknowledged = found == masks_of(divisor(acknowledged));
    const bool is_sent = found == masks_of(divisor(sent));
    REQUIRE((is_acknowledged || is_sent));
    if (is_sent) acknowledged = sent;
    sent = acknowledged;
  }
};

}  // namespace

TEST_CASE("Killed in the middle of a batch, the director has all of it or nothing") {
  const ScratchDirectory directory;
  std::mt19937 random(4);
  Writer writers[] = {{.requester = 1, .file = "EDITED"}, {.requester = 2, .file = "AT-ONCE"}};
  for (int round = 0; round <= kRounds; ++round) {
    CAPTURE(round);
    const DaemonProcess daemon(directory, {"--log-level", "error"});
    REQUIRE(daemon.running());
    const FileClient client(daemon.socket());
    for (Writer& writer : writers) {
      if (round == 0) {
        REQUIRE(client.enable());
        REQUIRE(client.operate(FileOperation::kSaveActive, writer.file) == 0);
      }
      writer.verify(client);
    }
    std::vector<std::thread> threads;
    for (Writer& writer : writers) {
      writer.answered_before += writer.answered.exchange(0);
      threads.emplace_back([&] { writer.write(daemon.socket()); });
    }
    CHECK(comes_true([&] { return writers[0].answered != 0 || writers[1].answered != 0; }));
    usleep(static_cast<useconds_t>(random() % 100'000));
    daemon.signal(SIGKILL);
    for (std::thread& thread : threads) thread.join();
  }
  MESSAGE(kRounds << " kills, " << writers[0].answered_before << " batches in edits and "
                  << writers[1].answered_before << " alone");
  CHECK(writers[0].answered_before > 0);
  CHECK(writers[1].answered_before > 0);
}
