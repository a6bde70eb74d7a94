/**
 * Heap allocations and peak stack of warm calls. Allocations are counted where the process asks
 * the C library for memory; the stack is painted before a call and looked at after it.
 */
#include <platform/mts.h>
#include <pthread.h>
#include <sys/mman.h>
#include <transport/endpoint.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

#include "emulator_process.h"

using namespace ficon;

namespace {

std::atomic<std::size_t> allocations;

}  // namespace

// The C library's own entry points behind its public names.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* pointer, std::size_t size);

void* malloc(std::size_t size) noexcept {
  ++allocations;
  return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) noexcept {
  ++allocations;
  return __libc_calloc(count, size);
}
void* realloc(void* pointer, std::size_t size) noexcept {
  ++allocations;
  return __libc_realloc(pointer, size);
}
}

namespace {

constexpr std::size_t kStack = 1024 * 1024;
constexpr std::uint8_t kPaint = 0xa5;

struct Probe {
  const std::function<void()>* call;
  std::uint8_t* stack;
  std::size_t allocations;
  std::size_t used;
};

/** Paints what is below the caller's frame; the return address and the margin stay as they are. */
[[gnu::noinline]] void paint(Probe& probe, const std::uint8_t* frame) {
  constexpr std::size_t kMargin = 256;
  const auto below = static_cast<std::size_t>(frame - probe.stack) - kMargin;
  for (std::size_t i = 0; i < below; ++i) {
    static_cast<volatile std::uint8_t*>(probe.stack)[i] = kPaint;
  }
}

void* run(void* argument) {
  auto& probe = *static_cast<Probe*>(argument);
  (*probe.call)();  // warm
  (*probe.call)();
  const auto* frame = static_cast<const std::uint8_t*>(__builtin_frame_address(0));
  paint(probe, frame);
  const std::size_t before = allocations;
  (*probe.call)();
  probe.allocations = allocations - before;
  std::size_t untouched = 0;
  while (probe.stack[untouched] == kPaint) ++untouched;
  probe.used = static_cast<std::size_t>(frame - probe.stack) - untouched;
  return nullptr;
}

std::size_t probe(const char* name, const std::function<void()>& call) {
  static auto* stack = static_cast<std::uint8_t*>(
      mmap(nullptr, kStack, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  Probe probe{&call, stack, 0, 0};
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstack(&attributes, stack, kStack);
  pthread_t thread;
  if (pthread_create(&thread, &attributes, run, &probe) != 0) std::exit(2);
  pthread_join(thread, nullptr);
  std::printf("%-44s %12zu %12zu\n", name, probe.allocations, probe.used);
  return probe.allocations;
}

void must(std::uint32_t status) {
  if (status == 0) return;
  std::fprintf(stderr, "a call failed: 0x%x\n", status);
  std::exit(2);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return std::fprintf(stderr, "usage: footprint FCD-EMULATOR\n"), 2;
  const bench::EmulatorProcess emulator(argv[1]);
  mts_handle_t handle = emulator.open();
  std::printf("%-44s %12s %12s\n", "", "allocations", "stack bytes");
  std::size_t in_requests = probe("ficon_cmi_get_vsan_info", [&] {
    ficon_cmi_vsan_cfg_t record;
    must(ficon_cmi_get_vsan_info(1, handle, "BENCH", "UNKNOWN", 0, 1, bench::kVsan, &record));
  });
  in_requests += probe("ficon_cmi_user_alert_mode_nonblock + parse", [&] {
    mts_recv_opts_t options{{1}};
    mts_msg_ref_t request{}, reply{};
    must(ficon_cmi_user_alert_mode_nonblock(1, handle, "BENCH", "UNKNOWN", 0, bench::kVsan, 1,
                                            &request));
    options.word[3] = mts_rr_token_get(&request);
    mts_drop(handle, &request);
    must(ficon_cmi_mts_recv(handle, &reply, &options));
    must(ficon_cmi_parse_vsan_cfg(&reply));
    mts_drop(handle, &reply);
  });
  // The list of enabled VSANs, which the platform hands out to be freed: one for the check.
  probe("ficon_cmi_user_alert_mode, under the lock", [&] {
    must(ficon_cmi_user_alert_mode(1, handle, "BENCH", "UNKNOWN", 0, bench::kVsan, 1));
  });
  ficon_mts_close(handle);
  return in_requests == 0 ? 0 : 1;
}
