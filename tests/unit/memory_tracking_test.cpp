/** Memory tracking: padded sizes, the tracker's entry points, the names of memory types. */
#include <doctest/doctest.h>

#include <cstdlib>

#include "double/scripted_platform.h"
#include "double/tracker.h"

using namespace ficon::test;

namespace {

struct Padded {
  std::size_t size;
  std::size_t asked;
};
constexpr Padded kPadded[] = {{0, 8},  {1, 8},  {2, 8},  {3, 8},    {4, 12},
                              {5, 12}, {7, 12}, {8, 16}, {148, 156}};

const std::vector<std::string> kEntryPoints = {"mtrack_int_init",
                                               "mtrack_int_uninit",
                                               "mtrack_int_alloc",
                                               "mtrack_int_realloc",
                                               "mtrack_int_free",
                                               "mtrack_int_ignore_alloc_abort",
                                               "mtrack_int_print_stats",
                                               "mtrack_int_print_stats_uuid",
                                               "mtrack_int_cli_dump_memstats",
                                               "mtrack_int_cli_detail_dump_memstats",
                                               "mtrack_int_cli_trcbk_dump_memstats",
                                               "mtrack_int_cli_en_trcbk",
                                               "mtrack_int_cli_show_trcbk_count",
                                               "mtrack_int_add_memtypename"};

void require_calls(const std::vector<std::string>& expected) {
  std::string wanted, found;
  for (const auto& line : expected) wanted += line + "\n";
  for (const auto& line : tracker().calls) found += line + "\n";
  tracker().calls.clear();
  REQUIRE(found == wanted);
}

void init() {
  mtrack_init(0x11, 0x12, 0x13, 0x14);
  require_calls({"mtrack_int_init 17 18 19 20"});
}

}  // namespace

TEST_CASE("without a tracker: malloc of the padded size") {
  ScriptedPlatform platform;
  for (const Padded& padded : kPadded) {
    const std::size_t before = platform.calls({"malloc"}).size();
    void* block = mtrack_alloc(205, TEVRAK_MEM_pib, padded.size);
    const auto requests = platform.calls({"malloc"});
    REQUIRE(requests.size() == before + 1);
    CHECK(requests.back() == "malloc size=" + std::to_string(padded.asked));
    mtrack_free(block);
  }
  CHECK(platform.finished());
}

TEST_CASE("without a tracker: realloc to the padded size keeps what was there") {
  auto* block = static_cast<char*>(mtrack_alloc(205, 0, 3));
  block[0] = 'x';
  block = static_cast<char*>(mtrack_realloc(block, 4000));
  REQUIRE(block != nullptr);
  CHECK(block[0] == 'x');
  block[4007] = 'y';  // 4008 bytes were asked for
  mtrack_free(block);
}

TEST_CASE("a size that cannot be padded is a failed allocation") {
  CHECK(mtrack_alloc(205, 0, SIZE_MAX) == nullptr);
  CHECK(mtrack_alloc(205, 0, SIZE_MAX - 7) == nullptr);
  void* block = mtrack_alloc(205, 0, 1);
  CHECK(mtrack_realloc(block, SIZE_MAX - 7) == nullptr);
  mtrack_free(block);
}

TEST_CASE("without a tracker: null can be freed, and the rest does nothing") {
  mtrack_free(nullptr);
  mtrack_uninit(1);
  CHECK(mtrack_ignore_alloc_abort(1) == 0);
  CHECK(mtrack_add_memtypename(1, 2, 3) == 0);
  CHECK(mtrack_print_stats(1, 2) == 0);
  CHECK(mtrack_print_stats_uuid(1, 2, 3) == 0);
  CHECK(mtrack_cli_print_stats_uuid(1, 2, 3) == 0);
  CHECK(mtrack_cli_print_stats(1, 2) != 0);
  CHECK(tracker().calls.empty());
}

TEST_CASE("a complete tracker is looked up in order and used for everything") {
  CHECK(in_own_process([] {
    init();
    REQUIRE(tracker().looked_up() == kEntryPoints);
    void* block = mtrack_alloc(205, 11, 5);
    require_calls({"mtrack_int_alloc 205 11 12 0"});
    block = mtrack_realloc(block, 8);
    require_calls({"mtrack_int_realloc 16 0"});
    mtrack_free(block);
    require_calls({"mtrack_int_free * 0"});
    mtrack_free(nullptr);
    require_calls({"mtrack_int_free null 0"});
  }));
}

TEST_CASE("a complete tracker: padded sizes") {
  CHECK(in_own_process([] {
    init();
    for (const Padded& padded : kPadded) {
      std::free(mtrack_alloc(7, 3, padded.size));
      require_calls({"mtrack_int_alloc 7 3 " + std::to_string(padded.asked) + " 0"});
    }
  }));
}

TEST_CASE("a complete tracker: every other call is forwarded") {
  CHECK(in_own_process([] {
    init();
    constexpr int kResult = Tracker::kResult;
    REQUIRE(mtrack_ignore_alloc_abort(0x21) == kResult);
    require_calls({"mtrack_int_ignore_alloc_abort 33"});
    REQUIRE(mtrack_add_memtypename(0x21, 0x22, 0x23) == kResult);
    require_calls({"mtrack_int_add_memtypename 33 34 35"});
    REQUIRE(mtrack_print_stats(0x21, 0x22) == kResult);
    require_calls({"mtrack_int_print_stats 33 34"});
    REQUIRE(mtrack_print_stats_uuid(0x21, 0x22, 0x23) == kResult);
    require_calls({"mtrack_int_print_stats_uuid 33 34 35"});
    REQUIRE(mtrack_cli_print_stats_uuid(0x21, 0x22, 0x23) == kResult);
    require_calls({"mtrack_int_cli_dump_memstats 33 34 35 0"});
    REQUIRE(mtrack_cli_print_stats(0x21, 0x23) == kResult);
    require_calls({"mtrack_int_cli_dump_memstats 33 0 35 0"});
    REQUIRE(mtrack_cli_detail_print_stats(0x21, 0x22) == kResult);
    require_calls({"mtrack_int_cli_detail_dump_memstats 33 34"});
    REQUIRE(mtrack_cli_trcbk_print_stats(0x21, 0x22) == kResult);
    require_calls({"mtrack_int_cli_trcbk_dump_memstats 33 34"});
    REQUIRE(mtrack_cli_show_trcbk_count(0x21, 0x22) == kResult);
    require_calls({"mtrack_int_cli_show_trcbk_count 33 34"});
  }));
}

TEST_CASE("a complete tracker: it stays in use after its uninit, and init looks again") {
  CHECK(in_own_process([] {
    init();
    mtrack_uninit(0x31);
    require_calls({"mtrack_int_uninit 49"});
    std::free(mtrack_alloc(1, 2, 0));
    require_calls({"mtrack_int_alloc 1 2 8 0"});
    init();
    REQUIRE(tracker().looked_up().size() == 2 * kEntryPoints.size());
    tracker().hide("mtrack_int_alloc");
    init();
    std::free(mtrack_alloc(1, 2, 0));  // once in use, always in use
    require_calls({"mtrack_int_alloc 1 2 8 0"});
  }));
}

TEST_CASE("a complete tracker: its failure is the result") {
  CHECK(in_own_process([] {
    init();
    tracker().allocation_fails = true;
    REQUIRE(mtrack_alloc(1, 2, 3) == nullptr);
  }));
}

TEST_CASE("a tracker that lacks one entry point is started and then left alone") {
  // for each in turn; the last is the one that is looked up last
  CHECK(in_own_process([] {
    for (std::size_t lacking = 1; lacking < kEntryPoints.size(); ++lacking) {
      tracker().show_all();
      tracker().hide(kEntryPoints[lacking]);
      const std::size_t before = tracker().looked_up().size();
      init();
      REQUIRE(tracker().looked_up().size() == before + lacking + 1);
      mtrack_free(mtrack_alloc(205, 11, 5));
      mtrack_uninit(1);
      REQUIRE(mtrack_print_stats(1, 2) == 0);
      require_calls({});
    }
  }));
}

TEST_CASE("no tracker at all: one look-up, nothing called") {
  CHECK(in_own_process([] {
    tracker().hide("mtrack_int_init");
    mtrack_init(1, 2, 3, 4);
    REQUIRE(tracker().looked_up() == std::vector<std::string>{"mtrack_int_init"});
    require_calls({});
  }));
}

TEST_CASE("memory types: numbers and names") {
  const char* const names[] = {
      "TEVRAK_MEM_file_info",   "TEVRAK_MEM_dirhistbufent", "TEVRAK_MEM_savedfilebuff",
      "TEVRAK_MEM_ifindex_rng", "TEVRAK_MEM_portinfo",      "TEVRAK_MEM_ifswapops",
      "TEVRAK_MEM_setportname", "TEVRAK_MEM_setportblock",  "TEVRAK_MEM_setprohibit_tlv",
      "TEVRAK_MEM_setprohibit", "TEVRAK_MEM_sethostdata",   "TEVRAK_MEM_pib",
      "TEVRAK_MEM_vsanlist",    "TEVRAK_MEM_boxstatus",     "TEVRAK_MEM_TYPES_MAX"};
  for (std::uint32_t value = 0; value < 15; ++value) {
    CAPTURE(value);
    REQUIRE(__tevrak_mem_type_t_find(value) != nullptr);
    CHECK(std::string(__tevrak_mem_type_t_find(value)) == names[value]);
    CHECK(__tevrak_mem_type_t_str2enum(names[value]) == static_cast<int>(value));
  }
  CHECK(__tevrak_mem_type_t_find(15) == nullptr);
  CHECK(__tevrak_mem_type_t_find(0xffffffff) == nullptr);
}

TEST_CASE("memory types: a name counts in any case, an unknown one is the first type") {
  CHECK(__tevrak_mem_type_t_str2enum("tevrak_mem_pib") == TEVRAK_MEM_pib);
  CHECK(__tevrak_mem_type_t_str2enum("TEVRAK_MEM_BOXSTATUS") == TEVRAK_MEM_boxstatus);
  CHECK(__tevrak_mem_type_t_str2enum("TEVRAK_MEM_pi") == TEVRAK_MEM_file_info);
  CHECK(__tevrak_mem_type_t_str2enum("TEVRAK_MEM_pib ") == TEVRAK_MEM_file_info);
  CHECK(__tevrak_mem_type_t_str2enum("") == TEVRAK_MEM_file_info);
}
