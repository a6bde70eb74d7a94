/** Timing of things that take turns, so that whatever else the machine does hits all alike. */
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace ficon::bench {

struct Contender {
  std::string name;
  std::function<void()> call;
  std::vector<double> nanoseconds;  // one mean a round

  double median() {
    std::ranges::sort(nanoseconds);
    return nanoseconds[nanoseconds.size() / 2];
  }
};

/** Rounds in turn, each `calls` calls of each contender; the first tenth of the rounds warms up. */
inline void measure(std::vector<Contender>& contenders, int rounds, int calls) {
  for (int round = -rounds / 10; round < rounds; ++round) {
    for (Contender& contender : contenders) {
      const auto start = std::chrono::steady_clock::now();
      for (int i = 0; i < calls; ++i) contender.call();
      const std::chrono::duration<double, std::nano> passed =
          std::chrono::steady_clock::now() - start;
      if (round >= 0) contender.nanoseconds.push_back(passed.count() / calls);
    }
  }
}

/** A line for each, with its ratio to the first, the floor. */
inline void print(std::vector<Contender>& contenders) {
  const double floor = contenders.front().median();
  std::printf("%-44s %12s %8s\n", "", "ns a call", "ratio");
  for (Contender& contender : contenders) {
    const double median = contender.median();
    std::printf("%-44s %12.0f %8.2f\n", contender.name.c_str(), median, median / floor);
  }
}

/** Keeps the compiler from dropping or joining what is measured. */
inline void keep(const void* memory) {
  asm volatile("" : : "r"(memory) : "memory");
}

}  // namespace ficon::bench
