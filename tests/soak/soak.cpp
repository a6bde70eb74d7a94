/**
 * soak SECONDS: processes of the library and of ficonctl on one emulator. In the first half it is
 * killed and started again all the time, and after each kill what was acknowledged must be there.
 * In the second half it stays: nothing may fail, it may not grow, and when everybody has gone it
 * has no more descriptors than it began with.
 */
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <new>
#include <random>
#include <vector>

#include "child.h"
#include "clients.h"
#include "daemon_process.h"

using namespace ficon::soak;
using ficon::test::DaemonProcess;
using ficon::test::ScratchDirectory;
using Clock = std::chrono::steady_clock;

namespace {

/** The history is full before the first sample, and caches have what they want. */
constexpr long kGrowthAllowedKb = 4096;
constexpr int kSettleMs = 1000;

Shared& share() {
  void* memory =
      mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  return *new (memory) Shared{};
}

void sleep_ms(int milliseconds) {
  usleep(static_cast<useconds_t>(milliseconds) * 1000);
}

long resident_kb(pid_t pid) {
  std::ifstream status("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) return std::atol(line.c_str() + 6);
  }
  return -1;
}

std::ptrdiff_t descriptors(pid_t pid) {
  std::error_code gone;
  const std::filesystem::directory_iterator all("/proc/" + std::to_string(pid) + "/fd", gone);
  return std::distance(begin(all), end(all));
}

class Soak {
 public:
  explicit Soak(int seconds) : half_(std::chrono::seconds(seconds) / 2) {}

  bool run() {
    start_daemon();
    if (!holds_) return false;
    for (std::uint32_t i = 0; i < kWriters; ++i) check(enable_vsan(i, endpoint()), "enabling");
    const std::ptrdiff_t alone = descriptors(daemon_->pid());
    start_clients();
    kill_again_and_again();
    stay();
    stop_clients();
    sleep_ms(kSettleMs);
    check(descriptors(daemon_->pid()) <= alone, "descriptors are left open");
    check_promises();
    report();
    return holds_ && shared_.failures == 0;
  }

 private:
  std::string endpoint() const { return "unix:" + directory_.path("socket"); }

  void check(bool holds, const char* otherwise) {
    if (holds) return;
    holds_ = false;
    std::fprintf(stderr, "soak: %s\n", otherwise);
  }
  void start_daemon() {
    daemon_ = std::make_unique<DaemonProcess>(
        directory_, std::vector<std::string>{"--history", "500", "--log-level", "error"});
    check(daemon_->running(), "the daemon does not start");
  }
  template <class Client>
  void start(Client client) {
    clients_.push_back(ficon::test::start_child([&] {
      client();
      return true;
    }));
  }
  void start_clients() {
    const std::string where = endpoint();
    for (std::uint32_t i = 0; i < kWriters; ++i) start([&, i] { run_writer(shared_, i, where); });
    start([&] { run_tool(shared_, where); });
  }
  void stop_clients() {
    shared_.calm = false;
    shared_.stop = true;
    for (const pid_t pid : clients_) {
      int status = 0;
      waitpid(pid, &status, 0);
      check(status == 0, "a client ended badly");
    }
  }
  void check_promises() {
    for (std::uint32_t i = 0; i < kWriters; ++i) {
      check(keeps_promises(shared_.writers[i], i, endpoint()),
            "what was acknowledged is not there");
    }
  }

  /** While a promise is checked its writer rests: it is stopped, not killed. */
  void signal_clients(int number) const {
    for (const pid_t pid : clients_) kill(pid, number);
  }

  void kill_again_and_again() {
    std::mt19937 random(7);
    const auto end = Clock::now() + half_;
    while (holds_ && Clock::now() < end) {
      sleep_ms(static_cast<int>(100 + random() % 900));
      signal_clients(SIGSTOP);
      daemon_->signal(SIGKILL);
      daemon_->wait();
      start_daemon();
      ++kills_;
      if (holds_) check_promises();
      signal_clients(SIGCONT);
    }
  }

  void stay() {
    sleep_ms(kSettleMs);  // everybody has noticed the last kill
    shared_.calm = true;
    const auto begin = Clock::now();
    while (Clock::now() < begin + half_ / 3) sleep_ms(100);
    early_kb_ = resident_kb(daemon_->pid());
    while (Clock::now() < begin + half_) sleep_ms(100);
    late_kb_ = resident_kb(daemon_->pid());
    check(early_kb_ > 0 && late_kb_ - early_kb_ <= kGrowthAllowedKb, "the daemon grows");
  }

  void report() const {
    std::uint64_t calls = 0;
    std::uint64_t promises = 0;
    for (const Writer& writer : shared_.writers) {
      calls += writer.calls;
      promises += writer.clock.acknowledged + writer.host_data.acknowledged;
    }
    std::printf("%u kills, %llu calls, %llu changes acknowledged, %llu runs of ficonctl\n", kills_,
                static_cast<unsigned long long>(calls), static_cast<unsigned long long>(promises),
                static_cast<unsigned long long>(shared_.tool_runs));
    std::printf("the daemon's memory: %ld KiB, later %ld KiB; %u failures while it stayed\n",
                early_kb_, late_kb_, shared_.failures.load());
  }

  Clock::duration half_;
  ScratchDirectory directory_;
  Shared& shared_ = share();
  std::unique_ptr<DaemonProcess> daemon_;
  std::vector<pid_t> clients_;
  unsigned kills_ = 0;
  long early_kb_ = 0;
  long late_kb_ = 0;
  bool holds_ = true;
};

}  // namespace

int main(int argc, char** argv) {
  const int seconds = argc == 2 ? std::atoi(argv[1]) : 0;
  if (seconds < 2) {
    std::fprintf(stderr, "usage: soak SECONDS\n");
    return 2;
  }
  const bool held = Soak(seconds).run();
  std::printf("%s\n", held ? "Everything held." : "Something did not hold.");
  return held ? 0 : 1;
}
