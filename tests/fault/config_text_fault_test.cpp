/** Configuration text with each platform call failing in turn: the generator never reports an
 * error, so what counts is which lines are left. */
#include "unit/config_text_world.h"

using namespace ficon::test;

namespace {

const std::string kFeature = "[3] feature ficon\n";
const std::string kRemoval = "[2] no ficon logical-port assign port-numbers 240\n";
const std::string kSlot = "[2] ficon slot 1 assign port-numbers 1 force\n";
const std::string kLogical = "[2] ficon logical-port assign port-numbers 241 force\n";
const std::string kVsan = "[1] ficon vsan 10\n";
const std::string kProhibit = "[1] ficon port default-state prohibit-all\n";
const std::string kTimeout = "[1] ficon default mihpto 40\n";
const std::string kPort = "[4 0x1000001+1] ficon portaddress 0x77\n";
const std::string kChannel = "[4 0x4000001+1] ficon portnumber 0xf1\n";
const std::string kLogging = "[group 115 0 3] logging level ficon 5\n";

const std::string kNumbers = kFeature + kRemoval + kSlot + kLogical;
const std::string kRest = kProhibit + kTimeout;
const std::string kInterfaces = kPort + kChannel;
const std::string kWhole = kNumbers + kVsan + kRest + kInterfaces + kLogging;

/** Calls in a row whose failure leads to the same text. */
struct Row {
  const char* call;
  int times;
  std::string text;
};

void fill(ConfigTextWorld& world) {
  world.with_feature().word(36, 1).word(38, 68).logging_level(5);
  world.config[vsan_key(0, 10)] = host32(1);
  world.slots = 1;
  world.modules = {{0, 0}};
  world.slot_defaults = {{1, block_of({0}, 64)}};
  world.logical_defaults = block_of({240}, 256);
  world.assign(0, {1}).assign(1024, {241});
  world.table[0].address = 0x77;
  world.interfaces = {0x01000001, 0x04000001};
  world.positions = {{0x01000001, 0}, {0x04000001, 1024}};
}

std::string zeros_listed(int count) {
  std::string list = "0";
  for (int i = 1; i < count; ++i) list += ", 0";
  return list;
}

/** A table of which nothing is known but zeros. */
std::string without_table() {
  return kFeature + kRemoval + "[2] ficon slot 1 assign port-numbers " + zeros_listed(64) +
         " force\n" + "[2] ficon logical-port assign port-numbers " + zeros_listed(65) +
         " force\n" + kVsan + kRest + "[4 0x4000001+1] ficon portnumber 0\n" + kLogging;
}

/** The text when the defaults of the logical ports are not known while removals are looked for. */
std::string without_defaults() {
  return kFeature + "[2] no ficon logical-port assign port-numbers \n" + kSlot + kLogical + kVsan +
         kRest + kInterfaces + kLogging;
}

std::vector<Row> rows_of_opening() {
  return {{"acfg_hdl_init", 1, kWhole},
          {"acfg_startup_cfg_uri_prefix_get", 1, kLogging},
          {"pss_open", 1, kLogging},
          {"acfg_startup_debug_cfg_uri_prefix_get", 1, kNumbers + kVsan + kRest + kInterfaces},
          {"pss_open", 1, kNumbers + kVsan + kRest + kInterfaces},
          {"acfg_elem_add", 4, kWhole},
          {"acfg_elem_property_set", 1, kWhole},
          {"acfg_elem_dependency_add", 6, kWhole},
          {"acfg_req_vsan_list_get", 1, kNumbers + kRest + kInterfaces + kLogging}};
}

std::vector<Row> rows_of_reading() {
  const std::string tail = kInterfaces + kLogging;
  return {{"pss_move2location", 1, tail},
          {"pss_getvalue", 1, tail},
          {"pss_move2location", 1, kVsan + tail},
          {"pss_getvalue", 1, kVsan + tail},
          {"pss_move2location", 1, kNumbers + kVsan + tail},
          {"pss_getvalue", 1, kNumbers + kVsan + tail},
          {"pss_move2location", 1, kNumbers + kVsan + kProhibit + tail},
          {"pss_getvalue", 1, kNumbers + kVsan + kProhibit + tail},
          {"pss_move2location", 1, kWhole},
          {"pss_fetch", 22, kWhole},
          {"ficon_port_to_pn_init", 1, without_table()}};
}

std::vector<Row> rows_of_lines() {
  const std::string tail = kInterfaces + kLogging;
  const std::string head = kNumbers + kVsan + kRest;
  return {
      {"acfg_elem_str_add_indent", 1, kRemoval + kSlot + kLogical + kVsan + kRest + tail},
      {"ficon_get_default_pn", 1, without_defaults()},
      {"acfg_elem_str_add_indent", 1, kFeature + kSlot + kLogical + kVsan + kRest + tail},
      {"get_platform_info", 1, kFeature + kRemoval + kLogical + kVsan + kRest + tail},
      {"ficonm_platform_slot_to_lc_b0", 1, kFeature + kRemoval + kLogical + kVsan + kRest + tail},
      {"ficon_get_default_pn", 1, kWhole},
      {"acfg_elem_str_add_indent", 1, kFeature + kRemoval + kLogical + kVsan + kRest + tail},
      {"ficon_get_default_pn", 1, kWhole},
      {"acfg_elem_str_add_indent", 1, kFeature + kRemoval + kSlot + kVsan + kRest + tail},
      {"acfg_elem_str_add_indent", 1, kNumbers + kRest + tail},
      {"acfg_elem_str_add_indent", 1, kNumbers + kVsan + kTimeout + tail},
      {"acfg_elem_str_add_indent", 1, kNumbers + kVsan + kProhibit + tail},
      {"acfg_req_ifindex_list_get", 1, head + kLogging},
      {"if_index_get_type", 1, head + kChannel + kLogging},
      {"ficon_pmap_get_if_to_index_with2pmaps", 1, head + kChannel + kLogging},
      {"acfg_elem_ifindex_str_add_indent", 1, head + kChannel + kLogging},
      {"if_index_get_type", 1, head + kPort + kLogging},
      {"ficon_pmap_get_if_to_index_with2pmaps", 1, head + kPort + kLogging},
      {"acfg_elem_ifindex_str_add_indent", 1, head + kPort + kLogging},
      {"pss2_fetch", 1, head + kInterfaces},
      {"acfg_elem_dependency_add", 1, kWhole},
      {"acfg_elem_group_config_str_add", 1, head + kInterfaces},
      {"acfg_respond", 1, kWhole}};
}

/** Runs with the n-th call failing; false when there is none. */
bool check_run(int n, const Row& row) {
  CAPTURE(n);
  ConfigTextWorld world;
  fill(world);
  world.platform.fail_call(n);
  const std::uint32_t status = world.generate();
  if (!world.platform.fault_was_hit()) return false;
  const std::string& fault = world.platform.fault();
  CHECK(fault.substr(0, fault.find(' ')) == row.call);
  CHECK(status == (std::string(row.call) == "acfg_respond" ? kInjected : 0));
  CHECK(world.text == row.text);
  CHECK(world.platform.finished());
  CHECK(world.platform.printed().empty());
  return true;
}

}  // namespace

TEST_CASE("faults: configuration text loses the lines of the failed call alone") {
  int n = 0;
  for (const auto& rows : {rows_of_opening(), rows_of_reading(), rows_of_lines()}) {
    for (const Row& row : rows) {
      for (int time = 0; time < row.times; ++time) REQUIRE(check_run(++n, row));
    }
  }
  CHECK_FALSE(check_run(n + 1, {"", 1, ""}));
}

TEST_CASE("faults: a table of which one block cannot be read is the platform's") {
  for (int block = 0; block < 20; ++block) {
    CAPTURE(block);
    ConfigTextWorld world;
    fill(world);
    world.save_table();
    world.table[1024].number = 250;  // the platform's
    // 17 calls of the service, two for each record of the walk and its end, the two maps
    world.platform.fail_call(17 + 49 + 2 + block + 1);
    CHECK(world.generate() == 0);
    CHECK(world.platform.fault().substr(0, 9) == "pss_fetch");
    CHECK(world.platform.count("ficon_port_to_pn_init") == 1);
    CHECK(world.text.find("logical-port assign port-numbers 250 force\n") != std::string::npos);
  }
}
