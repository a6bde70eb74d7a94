/** The lines that assign port numbers, and the tables in the store that they come from. */
#include "unit/config_text_world.h"

using namespace ficon::test;

namespace {

using Numbers = std::vector<std::uint16_t>;

/** What slot 1 gives whose module has these numbers, the feature line left out. */
std::string slot_line(const Numbers& defaults, const Numbers& current) {
  ConfigTextWorld world;
  world.slots = 1;
  world.modules = {{0, 2}};
  world.slot_defaults = {{1, block_of(defaults, 64)}};
  world.with_feature().assign(128, current).save_table();
  const std::string& text = world.startup();
  REQUIRE(text.substr(0, 18) == "[3] feature ficon\n");
  return text.substr(18);
}

std::string logical_lines(const Numbers& defaults, const Numbers& current) {
  ConfigTextWorld world;
  world.logical_defaults = block_of(defaults, 256);
  world.with_feature().assign(1024, current).save_table();
  const std::string& text = world.startup();
  REQUIRE(text.substr(0, 18) == "[3] feature ficon\n");
  return text.substr(18);
}

Numbers counting(std::uint16_t first, std::size_t count) {
  Numbers numbers;
  while (numbers.size() < count) numbers.push_back(first++);
  return numbers;
}

}  // namespace

TEST_CASE("port numbers: a slot as it is by default has no line") {
  CHECK(slot_line({128, 129}, {128, 129}).empty());
  CHECK(slot_line(counting(128, 64), counting(128, 64)).empty());
  CHECK(slot_line({}, {}).empty());
}

TEST_CASE("port numbers: a slot with other numbers, fewer, more, none") {
  CHECK(slot_line({128, 129, 130}, {1, 2, 3, 5}) ==
        "[2] ficon slot 1 assign port-numbers 1-3, 5 force\n");
  CHECK(slot_line({128, 129}, {128}) == "[2] ficon slot 1 assign port-numbers 128 force\n");
  CHECK(slot_line({128}, {128, 129}) == "[2] ficon slot 1 assign port-numbers 128-129 force\n");
  CHECK(slot_line({}, {128}) == "[2] ficon slot 1 assign port-numbers 128 force\n");
  CHECK(slot_line({128, 129}, {}) == "[2] no ficon slot 1 assign port-numbers\n");
  Numbers last_differs = counting(128, 64);
  last_differs[63] = 250;
  CHECK(slot_line(counting(128, 64), last_differs) ==
        "[2] ficon slot 1 assign port-numbers 128-190, 250 force\n");
}

TEST_CASE("port numbers: what stands behind the first position without a number does not count") {
  CHECK(slot_line({128, 129}, {128, 129, 512, 131}).empty());
  CHECK(slot_line({128, 129, 130, 131}, {128, 129, 512, 131}) ==
        "[2] ficon slot 1 assign port-numbers 128-129 force\n");
  CHECK(slot_line({128}, {512, 128}) == "[2] no ficon slot 1 assign port-numbers\n");
}

TEST_CASE("port numbers: a slot ends with its 64th position") {
  Numbers sixty_five = counting(128, 64);
  sixty_five.push_back(7);
  CHECK(slot_line(counting(128, 64), sixty_five).empty());
}

TEST_CASE("port numbers: slots without a module, or with one beyond the table, have no line") {
  ConfigTextWorld world;
  world.slots = 4;
  world.modules = {{1, 0}, {2, 20}, {3, 15}};
  world.slot_defaults = {{2, block_of({0}, 64)}, {4, block_of({960}, 64)}};
  world.with_feature().assign(0, {9}).assign(960, {8}).save_table();
  CHECK(world.startup() ==
        "[3] feature ficon\n"
        "[2] ficon slot 2 assign port-numbers 9 force\n"
        "[2] ficon slot 4 assign port-numbers 8 force\n");
  CHECK(world.platform.lines({"ficonm_platform_slot_to_lc_b0"}) ==
        "ficonm_platform_slot_to_lc_b0 0 *\n"
        "ficonm_platform_slot_to_lc_b0 1 *\n"
        "ficonm_platform_slot_to_lc_b0 2 *\n"
        "ficonm_platform_slot_to_lc_b0 3 *\n");
}

TEST_CASE("port numbers: without platform information no slots, the logical ports all the same") {
  ConfigTextWorld world;
  world.platform.on.get_platform_info = [](platform_info_t* info) {
    info->slot_count = 5;
    return 1U;
  };
  world.with_feature().assign(1024, {3}).save_table();
  CHECK(world.startup() ==
        "[3] feature ficon\n"
        "[2] no ficon logical-port assign port-numbers \n"
        "[2] ficon logical-port assign port-numbers 3 force\n");
  CHECK(world.platform.count("ficonm_platform_slot_to_lc_b0") == 0);
}

TEST_CASE("port numbers: the logical ports, removed ones in front of the assigned") {
  CHECK(logical_lines({240, 241}, {240, 241}).empty());
  CHECK(logical_lines(counting(0, 256), counting(0, 256)).empty());
  CHECK(logical_lines({243, 240, 241, 242}, {250}) ==
        "[2] no ficon logical-port assign port-numbers 240-243\n"
        "[2] ficon logical-port assign port-numbers 250 force\n");
  CHECK(logical_lines({240, 241}, {}) == "[2] no ficon logical-port assign port-numbers 240-241\n");
  CHECK(logical_lines({240, 241}, {241, 240}) ==
        "[2] no ficon logical-port assign port-numbers \n"
        "[2] ficon logical-port assign port-numbers 241, 240 force\n");
}

TEST_CASE("port numbers: removed ones are counted, and only those below 256 are") {
  CHECK(logical_lines({0, 1, 255}, {5}) ==
        "[2] no ficon logical-port assign port-numbers 0-1, 255\n"
        "[2] ficon logical-port assign port-numbers 5 force\n");
  CHECK(logical_lines({9, 9, 9, 4}, {9}) ==
        "[2] no ficon logical-port assign port-numbers 4, 9, 9\n"
        "[2] ficon logical-port assign port-numbers 9 force\n");
  CHECK(logical_lines({254, 255, 256, 300}, {300, 300}) ==
        "[2] no ficon logical-port assign port-numbers 254-255\n"
        "[2] ficon logical-port assign port-numbers 300, 300 force\n");
}

TEST_CASE("port numbers: a line of 255 characters is whole, a longer one loses its end") {
  const std::string beginning = "ficon logical-port assign port-numbers ";
  struct Case {
    Numbers head;
    std::string expected;
  };
  // 60 times "7" make 178 characters; with what stands in front, 209 fill the line.
  const auto with_sevens = [](Numbers numbers) {
    numbers.insert(numbers.end(), 60, 7);
    return numbers;
  };
  std::string sevens = "7";
  for (int i = 1; i < 60; ++i) sevens += ", 7";
  const std::string exact = "1000-1001, 2000-2001, 100-101, ";
  const std::string over = "1000-1001, 2000-2001, 1000-1001, ";
  const Case cases[] = {
      {{1000, 1001, 2000, 2001, 100, 101}, beginning + exact + sevens + " force\n"},
      {{1000, 1001, 2000, 2001, 1000, 1001}, beginning + over + sevens + " forc"},
  };
  REQUIRE(cases[0].expected.size() == 255);
  REQUIRE(cases[1].expected.size() == 255);
  for (const Case& c : cases) {
    const std::string text = logical_lines({}, with_sevens(c.head));
    const std::string removed = "[2] no ficon logical-port assign port-numbers \n";
    REQUIRE(text.substr(0, removed.size()) == removed);
    CHECK(text.substr(removed.size()) == "[2] " + c.expected);
  }
}

TEST_CASE("tables: all twenty blocks, or those of the platform") {
  for (const int wrong : {-1, 13, 25, 32}) {
    for (const std::size_t size : {0U, 1279U, 1281U}) {
      CAPTURE(wrong);
      CAPTURE(size);
      ConfigTextWorld world;
      world.with_feature().assign(1024, {3}).save_table();
      if (wrong >= 0) world.config[saved_key(static_cast<std::uint8_t>(wrong))].resize(size);
      if (wrong >= 0 && size == 0) world.config.erase(saved_key(static_cast<std::uint8_t>(wrong)));
      world.table[1024].number = 4;                 // what the platform would make of it
      const bool whole = wrong < 0 || size > 1280;  // the store gives what there is room for
      world.startup();
      CHECK(world.text.substr(world.text.rfind('[')) ==
            "[2] ficon logical-port assign port-numbers " + std::string(whole ? "3" : "4") +
                " force\n");
      CHECK(world.platform.count("ficon_port_to_pn_init") == (whole ? 0 : 1));
      CHECK(world.platform.count("pss_fetch") == 22);
    }
  }
}

TEST_CASE("tables: keys of the two maps and of the twenty blocks, in order") {
  ConfigTextWorld world;
  std::vector<Bytes> keys;
  std::vector<std::uint32_t> rooms;
  play_stores(world.platform, {{"/saved/ficon_saved_config", {}}});
  world.platform.on.pss_fetch = [&](pss_store_t, const std::uint8_t* key, std::uint32_t length,
                                    void*, std::uint32_t* room) {
    keys.emplace_back(key, key + length);
    rooms.push_back(*room);
    return 1U;
  };
  CHECK(ficon_startup_acfg_gen(world.request(), world.context()) == 0);
  REQUIRE(keys.size() == 22);
  CHECK(keys[0] == saved_key(8));
  CHECK(rooms[0] == 512);
  CHECK(keys[1] == saved_key(9));
  CHECK(rooms[1] == 1024);
  for (std::uint8_t block = 0; block < 20; ++block) {
    CHECK(keys[block + 2U] == saved_key(static_cast<std::uint8_t>(13 + block)));
    CHECK(rooms[block + 2U] == 1280);
  }
}

TEST_CASE("tables: the platform gets the stored address map, or one in which each is its own") {
  for (const bool stored : {false, true}) {
    for (const std::size_t size : {512U, 510U}) {
      ConfigTextWorld world;
      Bytes map;
      for (std::uint16_t row = 0; row < 256; ++row) {
        map = map + host16(static_cast<std::uint16_t>(1000 - row));
      }
      map.resize(size);
      if (stored) world.config[saved_key(8)] = map;
      bool asked = false;
      world.platform.on.ficon_port_to_pn_init =
          [&](std::uint32_t entries, ficon_port_pn_entry_t* table, std::uint32_t ports,
              const std::uint16_t* rows) {
            asked = true;
            CHECK(entries == 1280);
            CHECK(+table[1279].port_number == 0);
            CHECK(ports == 256);
            for (std::uint16_t row = 0; row < 256; ++row) {
              CHECK(rows[row] == (stored && size == 512 ? 1000 - row : row));
            }
            return 0U;
          };
      world.startup();
      CHECK(asked);
    }
  }
}

TEST_CASE("tables: interfaces are looked up in the stored map and table, or in a map of none") {
  for (const bool stored : {false, true}) {
    ConfigTextWorld world;
    world.table[3] = {0x11, 0x22};
    world.save_table();
    Bytes map;
    for (std::uint32_t row = 0; row < 256; ++row) map = map + host32(0x01000000 + row);
    if (stored) world.config[saved_key(9)] = map;
    world.interfaces = {0x01000003};
    world.platform.on.ficon_pmap_get_if_to_index_with2pmaps =
        [&](if_index_t if_index, std::uint32_t* entry, const std::uint32_t* rows,
            const ficon_port_pn_entry_t* table, std::uint32_t) {
          CHECK(if_index == 0x01000003);
          CHECK(rows[0] == (stored ? 0x01000000 : 0));
          CHECK(rows[255] == (stored ? 0x010000ff : 0));
          CHECK(+table[3].port_address == 0x22);
          *entry = 3;
          return 0U;
        };
    CHECK(world.startup() == "[4 0x1000003+1] ficon portaddress 0x22\n");
  }
}

TEST_CASE("tables: as many rows as the switch has ports; beyond any switch, no configuration") {
  for (const std::int32_t ports : {1, 1280, 16384, 16385, 0x7fffffff}) {
    CAPTURE(ports);
    ConfigTextWorld world;
    MAX_FICON_PORTS = ports;
    world.with_feature().logging_level(1);
    world.config[saved_key(9)] = Bytes(static_cast<std::size_t>(ports < 20000 ? ports : 0) * 4, 1);
    const bool possible = ports <= 16384;
    CHECK(world.startup() == std::string(possible ? "[3] feature ficon\n" : "") +
                                 "[group 115 0 3] logging level ficon 1\n");
    CHECK(world.platform.count("pss_fetch") == (possible ? 22 : 0));
  }
}
