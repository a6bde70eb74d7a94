/**
 * The allocator, the tracked allocator, the pause and the look-up by name, as the code under test
 * sees them: the linker sends its calls here (`--wrap`), those of the runtime libraries not.
 */
#include <ficon_cmi.h>

#include <cstring>
#include <ctime>

#include "double/format.h"
#include "double/scripted_platform.h"
#include "double/tracker.h"

using namespace ficon::test;

extern "C" {

void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* pointer, size_t size);
void __real_free(void* pointer);
void* __real_mtrack_alloc(uint32_t module, uint32_t type, size_t size);
void* __real_mtrack_realloc(void* pointer, size_t size);
void __real_mtrack_free(void* pointer);
int __real_nanosleep(const timespec* wanted, timespec* left);
void* __real_dlsym(void* handle, const char* name);
}

namespace {

/** Set while the tracked allocator runs: its own calls of `malloc` and `free` are not the
 * library's. */
bool inside_tracked = false;

class InsideTracked {
 public:
  InsideTracked() { inside_tracked = true; }
  ~InsideTracked() { inside_tracked = false; }
};

ScriptedPlatform* observer() {
  return inside_tracked ? nullptr : ScriptedPlatform::active();
}

template <class Allocate>
void* allocate_as(const std::string& line, Allocate real) {
  ScriptedPlatform* platform = ScriptedPlatform::active();
  if (platform == nullptr) return real();
  platform->note(line);
  if (inside_tracked) return real();
  const bool tracked = line.starts_with("mtrack");
  if ((tracked && platform->faulted(line)) || platform->allocation_fails()) return nullptr;
  const InsideTracked inside;
  void* block = real();
  platform->allocated(block, line);
  return block;
}

template <class Release>
void release_as(const char* function, void* pointer, Release real) {
  ScriptedPlatform* platform = observer();
  if (platform != nullptr) {
    const std::string what = pointer == nullptr ? "null" : platform->released(pointer);
    if (!what.empty()) platform->note(std::string(function) + " block=" + what);
  }
  const bool before = inside_tracked;
  inside_tracked = true;
  real(pointer);
  inside_tracked = before;
}

}  // namespace

extern "C" {

void* __wrap_malloc(size_t size) {
  return allocate_as(formatted("malloc size=%zu", size), [&] { return __real_malloc(size); });
}
void* __wrap_calloc(size_t count, size_t size) {
  return allocate_as(formatted("calloc size=%zu", count * size),
                     [&] { return __real_calloc(count, size); });
}
void* __wrap_realloc(void* pointer, size_t size) {
  ScriptedPlatform* platform = observer();
  if (platform == nullptr) return __real_realloc(pointer, size);
  if (platform->allocation_fails()) return nullptr;
  void* block = __real_realloc(pointer, size);
  if (block != nullptr) {
    platform->released(pointer);
    platform->allocated(block, formatted("realloc size=%zu", size));
  }
  return block;
}
void __wrap_free(void* pointer) {
  release_as("free", pointer, __real_free);
}

void* __wrap_mtrack_alloc(uint32_t module, uint32_t type, size_t size) {
  return allocate_as(formatted("mtrack_alloc module=%u type=%u size=%zu", module, type, size),
                     [&] { return __real_mtrack_alloc(module, type, size); });
}
void* __wrap_mtrack_realloc(void* pointer, size_t size) {
  return allocate_as(formatted("mtrack_realloc size=%zu", size), [&] {
    if (ScriptedPlatform* platform = ScriptedPlatform::active()) platform->released(pointer);
    return __real_mtrack_realloc(pointer, size);
  });
}
void __wrap_mtrack_free(void* pointer) {
  release_as("mtrack_free", pointer, __real_mtrack_free);
}

int __wrap_nanosleep(const timespec* wanted, timespec* left) {
  ScriptedPlatform* platform = ScriptedPlatform::active();
  if (platform == nullptr) return __real_nanosleep(wanted, left);
  platform->note(formatted("nanosleep seconds=%lld nanoseconds=%ld",
                           static_cast<long long>(wanted->tv_sec), wanted->tv_nsec));
  platform->paused(static_cast<std::uint64_t>(wanted->tv_sec) * 1'000'000'000U +
                   static_cast<std::uint64_t>(wanted->tv_nsec));
  return 0;
}

void* __wrap_dlsym(void* handle, const char* name) {
  if (std::strncmp(name, "mtrack_int_", 11) == 0) return tracker().find(name);
  return __real_dlsym(handle, name);
}
}
