/** Forwards allocations to the hosting process's memory tracker, or to libc where there is none. */
#include <dlfcn.h>
#include <ficon_cmi.h>
#include <platform/memory_tracker.h>
#include <strings.h>

#include <cstdint>
#include <cstdlib>

namespace {

struct TrackerHooks {
  decltype(&mtrack_int_init) init;
  decltype(&mtrack_int_uninit) uninit;
  decltype(&mtrack_int_alloc) alloc;
  decltype(&mtrack_int_realloc) realloc;
  decltype(&mtrack_int_free) free;
  decltype(&mtrack_int_ignore_alloc_abort) ignore_alloc_abort;
  decltype(&mtrack_int_print_stats) print_stats;
  decltype(&mtrack_int_print_stats_uuid) print_stats_uuid;
  decltype(&mtrack_int_cli_dump_memstats) cli_dump_memstats;
  decltype(&mtrack_int_cli_detail_dump_memstats) cli_detail_dump_memstats;
  decltype(&mtrack_int_cli_trcbk_dump_memstats) cli_trcbk_dump_memstats;
  decltype(&mtrack_int_cli_en_trcbk) cli_en_trcbk;  // resolved though nothing here calls it
  decltype(&mtrack_int_cli_show_trcbk_count) cli_show_trcbk_count;
  decltype(&mtrack_int_add_memtypename) add_memtypename;
};

/** The library's only state between calls; written by `mtrack_init` alone. */
TrackerHooks hooks;
bool use_mtrack = false;

template <class Function>
bool resolve(const char* name, Function& hook) {
  void* found = dlsym(RTLD_DEFAULT, name);
  if (found == nullptr) return false;
  hook = reinterpret_cast<Function>(found);
  return true;
}

bool resolve_all_but_init() {
  return resolve("mtrack_int_uninit", hooks.uninit) && resolve("mtrack_int_alloc", hooks.alloc) &&
         resolve("mtrack_int_realloc", hooks.realloc) && resolve("mtrack_int_free", hooks.free) &&
         resolve("mtrack_int_ignore_alloc_abort", hooks.ignore_alloc_abort) &&
         resolve("mtrack_int_print_stats", hooks.print_stats) &&
         resolve("mtrack_int_print_stats_uuid", hooks.print_stats_uuid) &&
         resolve("mtrack_int_cli_dump_memstats", hooks.cli_dump_memstats) &&
         resolve("mtrack_int_cli_detail_dump_memstats", hooks.cli_detail_dump_memstats) &&
         resolve("mtrack_int_cli_trcbk_dump_memstats", hooks.cli_trcbk_dump_memstats) &&
         resolve("mtrack_int_cli_en_trcbk", hooks.cli_en_trcbk) &&
         resolve("mtrack_int_cli_show_trcbk_count", hooks.cli_show_trcbk_count) &&
         resolve("mtrack_int_add_memtypename", hooks.add_memtypename);
}

/** Room after the block that trackers rely on: 5 to 8 bytes more, a multiple of 4. */
bool padded(std::size_t size, std::size_t* result) {
  if (size > SIZE_MAX - 8) return false;
  *result = (size + 8) & ~std::size_t{3};
  return true;
}

struct MemoryTypeName {
  std::uint32_t value;
  const char* name;
};

constexpr MemoryTypeName kMemoryTypeNames[] = {
    {TEVRAK_MEM_file_info, "TEVRAK_MEM_file_info"},
    {TEVRAK_MEM_dirhistbufent, "TEVRAK_MEM_dirhistbufent"},
    {TEVRAK_MEM_savedfilebuff, "TEVRAK_MEM_savedfilebuff"},
    {TEVRAK_MEM_ifindex_rng, "TEVRAK_MEM_ifindex_rng"},
    {TEVRAK_MEM_portinfo, "TEVRAK_MEM_portinfo"},
    {TEVRAK_MEM_ifswapops, "TEVRAK_MEM_ifswapops"},
    {TEVRAK_MEM_setportname, "TEVRAK_MEM_setportname"},
    {TEVRAK_MEM_setportblock, "TEVRAK_MEM_setportblock"},
    {TEVRAK_MEM_setprohibit_tlv, "TEVRAK_MEM_setprohibit_tlv"},
    {TEVRAK_MEM_setprohibit, "TEVRAK_MEM_setprohibit"},
    {TEVRAK_MEM_sethostdata, "TEVRAK_MEM_sethostdata"},
    {TEVRAK_MEM_pib, "TEVRAK_MEM_pib"},
    {TEVRAK_MEM_vsanlist, "TEVRAK_MEM_vsanlist"},
    {TEVRAK_MEM_boxstatus, "TEVRAK_MEM_boxstatus"},
    {TEVRAK_MEM_TYPES_MAX, "TEVRAK_MEM_TYPES_MAX"},
};

}  // namespace

void mtrack_init(uintptr_t a, uintptr_t b, uintptr_t c, uintptr_t d) {
  if (!resolve("mtrack_int_init", hooks.init)) return;
  hooks.init(a, b, c, d);  // before the rest is known: a tracker that lacks a function was started
  if (resolve_all_but_init()) use_mtrack = true;
}

void mtrack_uninit(uintptr_t a) {
  if (use_mtrack) hooks.uninit(a);
}

void* mtrack_alloc(uint32_t module, uint32_t type, size_t size) {
  std::size_t bytes = 0;
  if (!padded(size, &bytes)) return nullptr;
  return use_mtrack ? hooks.alloc(module, type, bytes, 0) : std::malloc(bytes);
}

void* mtrack_realloc(void* pointer, size_t size) {
  std::size_t bytes = 0;
  if (!padded(size, &bytes)) return nullptr;
  return use_mtrack ? hooks.realloc(pointer, bytes, 0) : std::realloc(pointer, bytes);
}

void mtrack_free(void* pointer) {
  if (use_mtrack) {
    hooks.free(pointer, 0);
  } else {
    std::free(pointer);
  }
}

int mtrack_ignore_alloc_abort(uintptr_t a) {
  return use_mtrack ? hooks.ignore_alloc_abort(a) : 0;
}

int mtrack_add_memtypename(uintptr_t a, uintptr_t b, uintptr_t c) {
  return use_mtrack ? hooks.add_memtypename(a, b, c) : 0;
}

int mtrack_print_stats(uintptr_t a, uintptr_t b) {
  return use_mtrack ? hooks.print_stats(a, b) : 0;
}

int mtrack_print_stats_uuid(uintptr_t a, uintptr_t b, uintptr_t c) {
  return use_mtrack ? hooks.print_stats_uuid(a, b, c) : 0;
}

int mtrack_cli_print_stats_uuid(uintptr_t a, uintptr_t b, uintptr_t c) {
  return use_mtrack ? hooks.cli_dump_memstats(a, b, c, 0) : 0;
}

int mtrack_cli_print_stats(uintptr_t a, uintptr_t c) {
  return use_mtrack ? hooks.cli_dump_memstats(a, 0, c, 0) : 1;  // nonzero when off: intended
}

// The next three do not test for a tracker, as is intended: callers know that tracking is on.

int mtrack_cli_detail_print_stats(uintptr_t a, uintptr_t b) {
  return hooks.cli_detail_dump_memstats(a, b);
}

int mtrack_cli_trcbk_print_stats(uintptr_t a, uintptr_t b) {
  return hooks.cli_trcbk_dump_memstats(a, b);
}

int mtrack_cli_show_trcbk_count(uintptr_t a, uintptr_t b) {
  return hooks.cli_show_trcbk_count(a, b);
}

const char* __tevrak_mem_type_t_find(uint32_t value) {
  for (const MemoryTypeName& entry : kMemoryTypeNames) {
    if (entry.value == value) return entry.name;
  }
  return nullptr;
}

__tevrak_mem_type_t __tevrak_mem_type_t_str2enum(const char* name) {
  for (const MemoryTypeName& entry : kMemoryTypeNames) {
    if (strcasecmp(name, entry.name) == 0) return static_cast<__tevrak_mem_type_t>(entry.value);
  }
  return TEVRAK_MEM_file_info;  // an unknown name reads as the first type: intended
}
