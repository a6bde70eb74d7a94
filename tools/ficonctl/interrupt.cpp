#include "interrupt.h"

#include <algorithm>
#include <csignal>
#include <thread>

namespace ficon::ctl {
namespace {

volatile std::sig_atomic_t noted = 0;

void note(int /*signal*/) {
  noted = 1;
}

}  // namespace

void watch_for_interrupt() {
  std::signal(SIGINT, note);
  std::signal(SIGTERM, note);
}

bool interrupted() {
  return noted != 0;
}

bool pause_unless_interrupted(std::chrono::milliseconds duration) {
  const auto end = std::chrono::steady_clock::now() + duration;
  while (!interrupted() && std::chrono::steady_clock::now() < end) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        end - std::chrono::steady_clock::now());
    std::this_thread::sleep_for(std::min(left, std::chrono::milliseconds(50)));
  }
  return !interrupted();
}

}  // namespace ficon::ctl
