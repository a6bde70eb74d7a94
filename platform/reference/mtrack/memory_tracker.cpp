/**
 * A memory tracker to link or preload. It keeps a table beside the memory, so that its blocks are
 * plain `malloc` blocks: whoever releases one with `free` does no harm, and the table notices when
 * the address comes back.
 */
#include <platform/memory_tracker.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

namespace {

struct Block {
  std::uint32_t module;
  std::uint32_t type;
  std::size_t size;
};

using Kind = std::pair<std::uint32_t, std::uint32_t>;  // module and type

struct Use {
  std::size_t blocks = 0;
  std::size_t bytes = 0;
  std::size_t allocations = 0;
};

class Tracker {
 public:
  void add(void* memory, Block block) {
    const std::lock_guard guard(mutex_);
    forget(memory);  // released behind our back with `free`, and handed out again
    blocks_[memory] = block;
    Use& use = uses_[{block.module, block.type}];
    ++use.blocks;
    ++use.allocations;
    use.bytes += block.size;
  }

  /** The block that was there, if it was one of ours. */
  std::optional<Block> remove(void* memory) {
    const std::lock_guard guard(mutex_);
    return forget(memory);
  }

  void name(std::uint32_t module, std::uint32_t type, const char* name) {
    const std::lock_guard guard(mutex_);
    names_[{module, type}] = name;
  }

  /** A line for each kind with blocks in use; in detail all kinds, then each block. */
  int print(bool detail) {
    const std::lock_guard guard(mutex_);
    int kinds = 0;
    for (const auto& [kind, use] : uses_) {
      if (!detail && use.blocks == 0) continue;
      const auto name = names_.find(kind);
      std::printf("module %u type %u %s: %zu blocks, %zu bytes in use, %zu allocations\n",
                  kind.first, kind.second, name == names_.end() ? "" : name->second.c_str(),
                  use.blocks, use.bytes, use.allocations);
      ++kinds;
    }
    if (!detail) return kinds;
    for (const auto& [memory, block] : blocks_) {
      std::printf("  %p: %zu bytes of module %u type %u\n", memory, block.size, block.module,
                  block.type);
    }
    return kinds;
  }

 private:
  std::optional<Block> forget(void* memory) {
    const auto found = blocks_.find(memory);
    if (found == blocks_.end()) return std::nullopt;
    const Block block = found->second;
    Use& use = uses_[{block.module, block.type}];
    --use.blocks;
    use.bytes -= block.size;
    blocks_.erase(found);
    return block;
  }

  std::mutex mutex_;
  std::unordered_map<void*, Block> blocks_;
  std::map<Kind, Use> uses_;
  std::map<Kind, std::string> names_;
};

/** Never destroyed: blocks are released until the very end of the process. */
Tracker& tracker() {
  static Tracker& instance = *new Tracker;
  return instance;
}

}  // namespace

void mtrack_int_init(uintptr_t, uintptr_t, uintptr_t, uintptr_t) {
  tracker();
}

void mtrack_int_uninit(uintptr_t) {}

void* mtrack_int_alloc(uint32_t module, uint32_t type, size_t size, uintptr_t) {
  void* memory = std::malloc(size);
  if (memory != nullptr) tracker().add(memory, {module, type, size});
  return memory;
}

void* mtrack_int_realloc(void* pointer, size_t size, uintptr_t) {
  const std::optional<Block> before = tracker().remove(pointer);
  void* memory = std::realloc(pointer, size == 0 ? 1 : size);
  if (memory == nullptr) {
    if (before) tracker().add(pointer, *before);  // it is still there
  } else if (before) {
    tracker().add(memory, {before->module, before->type, size});
  }
  return memory;  // a block that is not ours stays so
}

void mtrack_int_free(void* pointer, uintptr_t) {
  tracker().remove(pointer);  // what another allocator's user passes in is simply freed
  std::free(pointer);
}

int mtrack_int_ignore_alloc_abort(uintptr_t) {
  return 0;  // an allocation that fails never aborts here
}

int mtrack_int_print_stats(uintptr_t, uintptr_t) {
  return tracker().print(false);
}

int mtrack_int_print_stats_uuid(uintptr_t, uintptr_t, uintptr_t) {
  return tracker().print(false);
}

int mtrack_int_cli_dump_memstats(uintptr_t, uintptr_t, uintptr_t, uintptr_t) {
  return tracker().print(false);
}

int mtrack_int_cli_detail_dump_memstats(uintptr_t, uintptr_t) {
  return tracker().print(true);
}

int mtrack_int_cli_trcbk_dump_memstats(uintptr_t, uintptr_t) {
  std::puts("this tracker keeps no traces");
  return 0;
}

int mtrack_int_cli_en_trcbk(uintptr_t, uintptr_t) {
  return 0;
}

int mtrack_int_cli_show_trcbk_count(uintptr_t, uintptr_t) {
  std::puts("0 traces");
  return 0;
}

int mtrack_int_add_memtypename(uintptr_t a, uintptr_t b, uintptr_t c) {
  tracker().name(static_cast<std::uint32_t>(a), static_cast<std::uint32_t>(b),
                 reinterpret_cast<const char*>(c));
  return 0;
}
