/** The feature's configuration as command lines: feature, VSANs, defaults, interfaces, logging. */
#include "unit/config_text_world.h"

using namespace ficon::test;

TEST_CASE("configuration text: every kind of line, in order") {
  ConfigTextWorld world;
  world.with_feature().word(36, 1).word(38, 0x44).logging_level(5);
  world.config[vsan_key(0x0f, 0xfd)] = host32(1);
  world.config[vsan_key(0, 10)] = host32(1);
  world.config[vsan_key(0x01, 0x00)] = host32(1);
  world.slots = 3;
  world.modules = {{0, 0}, {2, 7}};
  world.slot_defaults = {{1, block_of({0, 1, 2, 3}, 64)}, {3, block_of({448, 449}, 64)}};
  world.logical_defaults = block_of({240, 241, 242, 243, 244}, 256);
  world.assign(0, {1, 2, 3, 5}).assign(1024, {240, 250, 251});
  world.table[2].address = 0x77;
  world.save_table();
  world.interfaces = {0x01000002, 0x04000001, 0x01000001, 0x0a000009};
  world.positions = {{0x01000002, 2}, {0x04000001, 1024}, {0x01000001, 0}, {0x0a000009, 1025}};
  CHECK(world.startup() ==
        "[3] feature ficon\n"
        "[2] no ficon logical-port assign port-numbers 241-244\n"
        "[2] ficon slot 1 assign port-numbers 1-3, 5 force\n"
        "[2] no ficon slot 3 assign port-numbers\n"
        "[2] ficon logical-port assign port-numbers 240, 250-251 force\n"
        "[1] ficon vsan 10\n"
        "[1] ficon vsan 256\n"
        "[1] ficon vsan 4093\n"
        "[1] ficon port default-state prohibit-all\n"
        "[1] ficon default mihpto 40\n"
        "[4 0x1000002+1] ficon portaddress 0x77\n"
        "[4 0x4000001+1] ficon portnumber 0xf0\n"
        "[4 0xa000009+1] ficon portnumber 0xfa\n"
        "[group 115 0 3] logging level ficon 5\n");
}

TEST_CASE("configuration text: the calls around the lines") {
  ConfigTextWorld world;
  world.logging_level(0);
  world.startup();
  const auto calls = world.platform.lines();
  CHECK(calls.substr(0, calls.find("pss_fetch")) ==
        "acfg_hdl_init\n"
        "acfg_startup_cfg_uri_prefix_get *\n"
        "pss_open \"/saved/ficon_saved_config\"\n"
        "acfg_startup_debug_cfg_uri_prefix_get *\n"
        "pss_open \"/trace/ficon_debug\"\n"
        "acfg_elem_add * 152 3 2\n"
        "acfg_elem_add * 152 2 7\n"
        "acfg_elem_add * 152 1 11\n"
        "acfg_elem_add * 152 4 11\n"
        "acfg_elem_property_set * 1 1\n"
        "acfg_elem_dependency_add * 1 139 4\n"
        "acfg_elem_dependency_add * 1 41 4\n"
        "acfg_elem_dependency_add * 1 41 2\n"
        "acfg_elem_dependency_add * 1 22 1\n"
        "acfg_elem_dependency_add * 4 22 2\n"
        "acfg_elem_dependency_add * 3 139 6\n"
        "acfg_req_vsan_list_get * *\n"
        "pss_move2location * 1 *\n");
  CHECK(calls.substr(calls.find("ficon_port_to_pn_init")) ==
        "ficon_port_to_pn_init 1280 * 256 *\n"
        "acfg_req_ifindex_list_get * * *\n"
        "malloc size=1\n"
        "free block=malloc size=1\n"
        "pss2_fetch * * 8 * *\n"
        "acfg_elem_dependency_add * 1 118 1\n"
        "acfg_elem_group_config_str_add * 115 0 3 \"logging level ficon 0\n\"\n"
        "acfg_respond * * *\n");
}

TEST_CASE("configuration text: an empty store gives no line") {
  ConfigTextWorld world;
  CHECK(world.startup().empty());
}

TEST_CASE("configuration text: without feature and VSANs, interfaces and logging alone") {
  ConfigTextWorld world;
  world.word(35, 0).word(36, 1).word(38, 200).logging_level(3).save_table();
  world.interfaces = {0x04000001};
  world.positions = {{0x04000001, 0}};
  CHECK(world.startup() ==
        "[4 0x4000001+1] ficon portnumber 0x200\n"
        "[group 115 0 3] logging level ficon 3\n");
}

TEST_CASE("configuration text: prohibit-all with a VSAN, though no feature; no time-out then") {
  ConfigTextWorld world;
  world.word(36, 0x01000000).word(38, 200);
  world.config[vsan_key(0, 10)] = host32(1);
  CHECK(world.startup() ==
        "[1] ficon vsan 10\n"
        "[1] ficon port default-state prohibit-all\n");
}

TEST_CASE("configuration text: VSANs that were not asked for are left out, their list is not") {
  ConfigTextWorld world;
  world.word(36, 1);
  for (const std::uint8_t vsan : Bytes{7, 8, 9, 15}) world.config[vsan_key(0, vsan)] = {};
  world.requested_vsans = zeros(512);
  world.requested_vsans[1] = 0x81;
  CHECK(world.startup() ==
        "[1] ficon vsan 8\n"
        "[1] ficon vsan 15\n"
        "[1] ficon port default-state prohibit-all\n");
  world.requested_vsans = zeros(512);
  CHECK(world.startup() == "[1] ficon port default-state prohibit-all\n");
}

TEST_CASE("configuration text: a VSAN beyond the bitmap has no line, but is one") {
  ConfigTextWorld world;
  world.word(36, 1);
  world.config[vsan_key(0x10, 0x00)] = {};
  CHECK(world.startup() == "[1] ficon port default-state prohibit-all\n");
  world.config[vsan_key(0, 0)] = {};
  world.config[vsan_key(0x0f, 0xff)] = {};
  world.config[vsan_key(0xff, 0xff)] = {};
  CHECK(world.startup() ==
        "[1] ficon vsan 0\n"
        "[1] ficon vsan 4095\n"
        "[1] ficon port default-state prohibit-all\n");
}

TEST_CASE("configuration text: MIH time-outs are written from encoding 68 on") {
  struct Case {
    std::uint32_t encoded;
    const char* line;
  };
  const Case cases[] = {
      {0, ""},
      {63, ""},
      {64, ""},
      {67, ""},
      {68, "[1] ficon default mihpto 40\n"},
      {127, "[1] ficon default mihpto 630\n"},
      {128, "[1] ficon default mihpto 0\n"},
      {129, "[1] ficon default mihpto 100\n"},
      {191, "[1] ficon default mihpto 6300\n"},
      {192, "[1] ficon default mihpto 0\n"},
      {193, "[1] ficon default mihpto 1000\n"},
      {255, "[1] ficon default mihpto 63000\n"},
  };
  for (const Case& c : cases) {
    CAPTURE(c.encoded);
    ConfigTextWorld world;
    world.with_feature().word(38, c.encoded);
    CHECK(world.startup() == "[3] feature ficon\n" + std::string(c.line));
  }
}

TEST_CASE("configuration text: keys of another length and types of others are passed by") {
  ConfigTextWorld world;
  world.config[{35}] = host32(1);
  world.config[{35, 0, 0, 0, 0, 0, 0}] = host32(1);
  world.config[{35, 0, 0, 0, 0, 0, 0, 0, 0}] = host32(1);
  world.config[saved_key(7)] = host32(1);
  world.config[saved_key(34)] = host32(1);
  world.config[saved_key(37)] = host32(1);
  CHECK(world.startup().empty());
  world.with_feature();
  CHECK(world.startup() == "[3] feature ficon\n");
}

TEST_CASE("configuration text: a walk asks for the first record, and then for each next one") {
  ConfigTextWorld world;
  world.config[vsan_key(0, 1)] = {};
  world.config[vsan_key(0, 2)] = {};
  world.startup();
  CHECK(world.platform.lines({"pss_move2location"}) ==
        "pss_move2location * 1 *\n"
        "pss_move2location * 3 *\n"
        "pss_move2location * 3 *\n");
}

TEST_CASE("configuration text: a flag shorter than a word is not set, of a longer one the first") {
  ConfigTextWorld world;
  world.config[saved_key(35)] = {1, 1, 1};
  world.config[vsan_key(0, 1)] = {};
  CHECK(world.startup() == "[1] ficon vsan 1\n");
  world.config[saved_key(35)] = host32(0) + host32(1);
  CHECK(world.startup() == "[1] ficon vsan 1\n");
  world.config[saved_key(35)] = host32(0x100) + host32(0);
  CHECK(world.startup() == "[3] feature ficon\n[1] ficon vsan 1\n");
}

TEST_CASE("configuration text: a walk that fails keeps what it found") {
  for (const bool in_value : {false, true}) {
    CAPTURE(in_value);
    ConfigTextWorld world;
    world.config[vsan_key(0, 1)] = {};
    world.config[vsan_key(0, 2)] = {};
    world.with_feature();
    play_stores(world.platform, {{"/saved/ficon_saved_config", world.config}});
    int left = 1;
    if (in_value) {
      world.platform.on.pss_getvalue = [&, real = world.platform.on.pss_getvalue](auto... given) {
        return left-- > 0 ? real(given...) : 0x40480004U;
      };
    } else {
      world.platform.on.pss_move2location =
          [&, real = world.platform.on.pss_move2location](auto... given) {
            return left-- > 0 ? real(given...) : 0x40480004U;
          };
    }
    CHECK(ficon_startup_acfg_gen(world.request(), world.context()) == 0);
    CHECK(world.text == "[1] ficon vsan 1\n");
  }
}

TEST_CASE("configuration text: a walk ends where there is no place, whatever its status") {
  ConfigTextWorld world;
  world.with_feature();
  play_stores(world.platform, {{"/saved/ficon_saved_config", world.config}});
  world.platform.on.pss_move2location = [](pss_store_t, std::uint32_t, pss_location_t* location) {
    *location = nullptr;
    return 0U;
  };
  CHECK(ficon_startup_acfg_gen(world.request(), world.context()) == 0);
  CHECK(world.text.empty());
  CHECK(world.platform.count("pss_getvalue") == 0);
}

TEST_CASE("configuration text: interfaces by their type") {
  ConfigTextWorld world;
  world.table[5] = {0x21, 0x21};
  world.table[6] = {0x22, 0x23};
  world.table[7] = {0, 0x31};
  world.table[1279] = {0x105, 0};
  world.save_table();
  world.interfaces = {0x01000005, 0x01000006, 0x01000007, 0x04000001, 0x0a000001,
                      0x02000001, 0x00000001, 0x01000bad, 0x04000bad, 0x01000bee};
  world.positions = {{0x01000005, 5}, {0x01000006, 6}, {0x01000007, 7}, {0x04000001, 1279},
                     {0x0a000001, 7}, {0x02000001, 5}, {0x00000001, 5}, {0x01000bee, 1280}};
  CHECK(world.startup() ==
        "[4 0x1000006+1] ficon portaddress 0x23\n"
        "[4 0x1000007+1] ficon portaddress 0x31\n"
        "[4 0x4000001+1] ficon portnumber 0x105\n"
        "[4 0xa000001+1] ficon portnumber 0\n");
}

TEST_CASE("configuration text: a list of interfaces that is not one gives no line") {
  for (const bool failed : {true, false}) {
    CAPTURE(failed);
    ConfigTextWorld world;
    world.interfaces = {0x04000001};
    world.positions = {{0x04000001, 0}};
    world.platform.on.acfg_req_ifindex_list_get = [&](acfg_ctx_t, std::uint32_t* count,
                                                      if_index_t** list) {
      *count = 1;
      *list = failed ? handed_out(world.interfaces) : nullptr;
      return failed ? 1U : 0U;
    };
    CHECK(world.startup().empty());
  }
}

TEST_CASE("configuration text: an interface without type is passed by") {
  ConfigTextWorld world;
  world.interfaces = {0x04000001, 0x04000002};
  world.positions = {{0x04000001, 0}, {0x04000002, 0}};
  world.save_table();
  world.platform.on.if_index_get_type = [](if_index_t if_index, std::uint32_t* type) {
    *type = 4;
    return if_index == 0x04000001 ? 1U : 0U;
  };
  CHECK(world.startup() == "[4 0x4000002+1] ficon portnumber 0x200\n");
}

TEST_CASE(
    "configuration text: logging levels but 2, up to 7, from a record that is whole and set") {
  struct Case {
    Bytes record;
    int level;
  };
  std::vector<Case> cases;
  for (const int level : {0, 1, 3, 4, 5, 6, 7}) {
    cases.push_back({host32(1) + host32(static_cast<std::uint32_t>(level)), level});
  }
  cases.push_back({host32(1) + host32(6) + zeros(100), 6});
  for (const std::uint32_t level : {2U, 8U, 0xffffffffU, 0x80000001U}) {
    cases.push_back({host32(1) + host32(level), -1});
  }
  cases.push_back({host32(0) + host32(5), -1});
  cases.push_back({host32(2) + host32(5), -1});
  cases.push_back({host32(1) + Bytes{5, 0, 0}, -1});
  cases.push_back({host32(1), -1});
  cases.push_back({{}, -1});
  for (const Case& c : cases) {
    CAPTURE(c.level);
    ConfigTextWorld world;
    world.debug[kDebugKey] = c.record;
    const std::string line =
        c.level < 0 ? "" : "[group 115 0 3] logging level ficon " + std::to_string(c.level) + "\n";
    CHECK(world.startup() == line);
    CHECK((world.platform.lines({"acfg_elem_dependency_add"}).find("* 1 118 1\n") !=
           std::string::npos) == (c.level >= 0));
  }
}

TEST_CASE("configuration text: either store may be missing") {
  ConfigTextWorld world;
  world.with_feature().logging_level(1);
  play_stores(world.platform, {{"config", world.config}, {"debug", world.debug}});
  const pss_store_t config = pss_open("config");
  const pss_store_t debug = pss_open("debug");
  CHECK(libficon_ascii_gen(world.open_handle(), world.context(), nullptr, nullptr) == 0);
  CHECK(world.text.empty());
  CHECK(world.platform.count("acfg_req_vsan_list_get") == 0);
  CHECK(world.platform.count("acfg_elem_add") == 4);
  CHECK(libficon_ascii_gen(world.open_handle(), world.context(), config, nullptr) == 0);
  CHECK(world.text == "[3] feature ficon\n");
  world.text.clear();
  CHECK(libficon_ascii_gen(world.open_handle(), world.context(), nullptr, debug) == 0);
  CHECK(world.text == "[group 115 0 3] logging level ficon 1\n");
  CHECK(world.platform.finished());
}

TEST_CASE("configuration text: the number of ports is fetched once, and nothing comes without") {
  ConfigTextWorld world;
  world.with_feature();
  MAX_FICON_PORTS = 0;
  CHECK(world.startup() == "[3] feature ficon\n");
  CHECK(world.startup() == "[3] feature ficon\n");
  CHECK(world.platform.count("ficon_get_max_ficon_ports") == 1);
  for (const std::int32_t none : {0, -1}) {
    MAX_FICON_PORTS = world.max_ports = none;
    CHECK(world.startup().empty());
  }
  CHECK(world.platform.count("acfg_elem_add") == 8);
  CHECK(world.platform.count("acfg_respond") == 4);
  CHECK(libficon_ascii_gen(world.open_handle(), world.context(), nullptr, nullptr) == 0);
  CHECK(world.platform.count("ficon_get_max_ficon_ports") == 3);
}

TEST_CASE("configuration text: a store's name is cut to its room") {
  ConfigTextWorld world;
  const std::string prefix(108, 'p');
  play_config_text(world.platform, prefix, prefix + "123456789012345678901");
  play_stores(world.platform, {});
  ficon_startup_acfg_gen(world.request(), world.context());
  CHECK(world.platform.lines({"pss_open"}) == "pss_open \"" + prefix + "/ficon_saved_config\"\n" +
                                                  "pss_open \"" + prefix +
                                                  "1234567890123456789\"\n");
}

TEST_CASE("configuration text: the answer's status is the service's") {
  ConfigTextWorld world;
  world.platform.on.acfg_respond = [](auto...) { return 0x11223344U; };
  play_stores(world.platform, {});
  CHECK(ficon_startup_acfg_gen(world.request(), world.context()) == 0x11223344);
}
