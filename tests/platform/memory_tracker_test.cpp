/** The memory tracker as a process that links it sees it, directly and through the library. */
#include <doctest/doctest.h>
#include <ficon_cmi.h>
#include <platform/memory_tracker.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

/** What `print` writes to standard output. */
template <class Print>
std::string printed(Print print) {
  std::fflush(stdout);
  std::FILE* file = std::tmpfile();
  const int saved = dup(STDOUT_FILENO);
  dup2(fileno(file), STDOUT_FILENO);
  print();
  std::fflush(stdout);
  dup2(saved, STDOUT_FILENO);
  close(saved);
  std::rewind(file);
  std::string text(64 * 1024, '\0');
  text.resize(std::fread(text.data(), 1, text.size(), file));
  std::fclose(file);
  return text;
}

std::string statistics() {
  return printed([] { mtrack_int_print_stats(0, 0); });
}

bool contains(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

}  // namespace

TEST_CASE("tracker: counts by module and type, and shows what was not released") {
  void* first = mtrack_int_alloc(205, 41, 100, 0);
  void* second = mtrack_int_alloc(205, 41, 20, 0);
  void* other = mtrack_int_alloc(205, 42, 7, 0);
  CHECK(contains(statistics(), "module 205 type 41 : 2 blocks, 120 bytes in use, 2 allocations"));
  CHECK(contains(statistics(), "module 205 type 42 : 1 blocks, 7 bytes in use, 1 allocations"));
  mtrack_int_free(first, 0);
  CHECK(contains(statistics(), "type 41 : 1 blocks, 20 bytes in use, 2 allocations"));
  mtrack_int_free(second, 0);
  mtrack_int_free(other, 0);
  CHECK_FALSE(contains(statistics(), "type 41"));
  CHECK(contains(printed([] { mtrack_int_cli_detail_dump_memstats(0, 0); }),
                 "type 41 : 0 blocks, 0 bytes in use, 2 allocations"));
}

TEST_CASE("tracker: reallocation keeps the kind and the contents") {
  auto* block = static_cast<char*>(mtrack_int_alloc(205, 43, 4, 0));
  std::memcpy(block, "abcd", 4);
  block = static_cast<char*>(mtrack_int_realloc(block, 50'000, 0));
  CHECK(std::memcmp(block, "abcd", 4) == 0);
  CHECK(contains(statistics(), "type 43 : 1 blocks, 50000 bytes in use"));
  mtrack_int_free(block, 0);
  CHECK_FALSE(contains(statistics(), "type 43"));
}

TEST_CASE("tracker: a reallocation that fails leaves the block in use") {
  void* block = mtrack_int_alloc(205, 44, 0, 0);
  volatile std::size_t impossible = SIZE_MAX / 2;
  CHECK(mtrack_int_realloc(block, impossible, 0) == nullptr);
  CHECK(contains(statistics(), "type 44 : 1 blocks, 0 bytes in use"));
  mtrack_int_free(block, 0);
}

TEST_CASE("tracker: releases what it did not allocate, and does not count it") {
  const std::string before = statistics();
  mtrack_int_free(std::malloc(10), 0);
  mtrack_int_free(nullptr, 0);
  void* foreign = mtrack_int_realloc(std::malloc(10), 1000, 0);
  CHECK(statistics() == before);
  std::free(foreign);
}

TEST_CASE("tracker: a block released with plain free is noticed when its address comes back") {
  void* block = mtrack_int_alloc(205, 45, 48, 0);
  const auto address = reinterpret_cast<std::uintptr_t>(block);
  std::free(block);
  std::vector<void*> blocks;
  bool came_back = false;
  for (int i = 0; i < 10'000 && !came_back; ++i) {
    blocks.push_back(mtrack_int_alloc(205, 46, 48, 0));
    came_back = reinterpret_cast<std::uintptr_t>(blocks.back()) == address;
  }
  if (came_back) {  // an allocator with a quarantine keeps it for longer
    CHECK_FALSE(contains(statistics(), "type 45"));
  }
  for (void* other : blocks) mtrack_int_free(other, 0);
}

TEST_CASE("tracker: names a memory type once it is told the name") {
  static const char name[] = "TEVRAK_MEM_pib";
  mtrack_int_add_memtypename(205, 47, reinterpret_cast<std::uintptr_t>(name));
  void* block = mtrack_int_alloc(205, 47, 1, 0);
  CHECK(contains(statistics(), "module 205 type 47 TEVRAK_MEM_pib: 1 blocks"));
  mtrack_int_free(block, 0);
}

TEST_CASE("tracker: counts right from several threads") {
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([] {
      for (int i = 0; i < 5000; ++i) mtrack_int_free(mtrack_int_alloc(205, 48, 16, 0), 0);
    });
  }
  for (std::thread& thread : threads) thread.join();
  CHECK(contains(printed([] { mtrack_int_cli_detail_dump_memstats(0, 0); }),
                 "type 48 : 0 blocks, 0 bytes in use, 20000 allocations"));
}

TEST_CASE("tracker: is found by the library in a process that links it") {
  mtrack_init(0, 0, 0, 0);
  void* block = mtrack_alloc(205, TEVRAK_MEM_boxstatus, 5);
  CHECK(contains(statistics(), "module 205 type 13 : 1 blocks, 12 bytes in use"));
  mtrack_free(block);
  CHECK_FALSE(contains(statistics(), "type 13"));
}
