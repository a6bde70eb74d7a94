/** What the soak's processes tell one another, in memory that they share. */
#pragma once

#include <atomic>
#include <cstdint>

namespace ficon::soak {

inline constexpr std::uint32_t kWriters = 4;
inline constexpr std::uint32_t kFirstVsan = 20;

/** A value that only grows: what was asked for last, and what of it was acknowledged. */
struct Promise {
  std::atomic<std::uint32_t> sent;
  std::atomic<std::uint32_t> acknowledged;
};

struct Writer {
  Promise clock;      // word of the VSAN's clock; the other word is its complement
  Promise host_data;  // first word of the VSAN's host data
  std::atomic<std::uint64_t> calls;
};

struct Shared {
  std::atomic<bool> stop;
  std::atomic<bool> calm;  // the daemon is there and stays: nothing may fail
  std::atomic<std::uint64_t> tool_runs;
  std::atomic<std::uint32_t> failures;  // while it was calm
  Writer writers[kWriters];
};

}  // namespace ficon::soak
