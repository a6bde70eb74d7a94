#include "double/tracker.h"

#include <doctest/doctest.h>
#include <platform/memory_tracker.h>
#include <sys/wait.h>

#include <cstdlib>
#include <map>

#include "double/format.h"
#include "emulator/child.h"

namespace ficon::test {

Tracker& tracker() {
  static Tracker the_tracker;
  return the_tracker;
}

bool in_own_process(void (*test)()) {
  const pid_t child = start_child([&] {
    test();
    return true;
  });
  REQUIRE(child >= 0);
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void* Tracker::find(const std::string& name) {
#define ENTRY(function) \
  { #function, reinterpret_cast < void*>(&::function) }
  static const std::map<std::string, void*> entries = {ENTRY(mtrack_int_init),
                                                       ENTRY(mtrack_int_uninit),
                                                       ENTRY(mtrack_int_alloc),
                                                       ENTRY(mtrack_int_realloc),
                                                       ENTRY(mtrack_int_free),
                                                       ENTRY(mtrack_int_ignore_alloc_abort),
                                                       ENTRY(mtrack_int_print_stats),
                                                       ENTRY(mtrack_int_print_stats_uuid),
                                                       ENTRY(mtrack_int_cli_dump_memstats),
                                                       ENTRY(mtrack_int_cli_detail_dump_memstats),
                                                       ENTRY(mtrack_int_cli_trcbk_dump_memstats),
                                                       ENTRY(mtrack_int_cli_en_trcbk),
                                                       ENTRY(mtrack_int_cli_show_trcbk_count),
                                                       ENTRY(mtrack_int_add_memtypename)};
#undef ENTRY
  looked_up_.push_back(name);
  const auto entry = entries.find(name);
  return entry == entries.end() || hidden_.contains(name) ? nullptr : entry->second;
}

namespace {

template <class... Arguments>
int recorded(const char* function, Arguments... arguments) {
  tracker().calls.push_back(call_text(function, arguments...));
  return Tracker::kResult;
}

}  // namespace
}  // namespace ficon::test

using ficon::test::recorded;
using ficon::test::tracker;

void mtrack_int_init(uintptr_t a, uintptr_t b, uintptr_t c, uintptr_t d) {
  recorded("mtrack_int_init", a, b, c, d);
}
void mtrack_int_uninit(uintptr_t a) {
  recorded("mtrack_int_uninit", a);
}
void* mtrack_int_alloc(uint32_t module, uint32_t type, size_t size, uintptr_t zero) {
  recorded("mtrack_int_alloc", module, type, size, zero);
  return tracker().allocation_fails ? nullptr : std::malloc(size);
}
void* mtrack_int_realloc(void* pointer, size_t size, uintptr_t zero) {
  recorded("mtrack_int_realloc", size, zero);
  return tracker().allocation_fails ? nullptr : std::realloc(pointer, size);
}
void mtrack_int_free(void* pointer, uintptr_t zero) {
  recorded("mtrack_int_free", pointer, zero);
  std::free(pointer);
}
int mtrack_int_ignore_alloc_abort(uintptr_t a) {
  return recorded("mtrack_int_ignore_alloc_abort", a);
}
int mtrack_int_print_stats(uintptr_t a, uintptr_t b) {
  return recorded("mtrack_int_print_stats", a, b);
}
int mtrack_int_print_stats_uuid(uintptr_t a, uintptr_t b, uintptr_t c) {
  return recorded("mtrack_int_print_stats_uuid", a, b, c);
}
int mtrack_int_cli_dump_memstats(uintptr_t a, uintptr_t b, uintptr_t c, uintptr_t zero) {
  return recorded("mtrack_int_cli_dump_memstats", a, b, c, zero);
}
int mtrack_int_cli_detail_dump_memstats(uintptr_t a, uintptr_t b) {
  return recorded("mtrack_int_cli_detail_dump_memstats", a, b);
}
int mtrack_int_cli_trcbk_dump_memstats(uintptr_t a, uintptr_t b) {
  return recorded("mtrack_int_cli_trcbk_dump_memstats", a, b);
}
int mtrack_int_cli_en_trcbk(uintptr_t a, uintptr_t b) {
  return recorded("mtrack_int_cli_en_trcbk", a, b);
}
int mtrack_int_cli_show_trcbk_count(uintptr_t a, uintptr_t b) {
  return recorded("mtrack_int_cli_show_trcbk_count", a, b);
}
int mtrack_int_add_memtypename(uintptr_t a, uintptr_t b, uintptr_t c) {
  return recorded("mtrack_int_add_memtypename", a, b, c);
}
