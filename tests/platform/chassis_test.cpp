/** The description of a chassis, and what the functions without a handle make of it. */
#include <doctest/doctest.h>
#include <platform/feature_services.h>
#include <platform/ficon_base.h>
#include <platform/port_manager.h>

#include <fstream>
#include <random>
#include <sstream>

#include "chassis/chassis_file.h"
#include "chassis/current_chassis.h"
#include "interface_index/interface_index.h"

using namespace ficon::platform;

namespace {

Chassis read(const std::string& text) {
  std::string error;
  auto chassis = read_chassis(text, "test", &error);
  REQUIRE_MESSAGE(chassis.has_value(), error);
  return *std::move(chassis);
}

std::string refusal(const std::string& text) {
  std::string error;
  CHECK_FALSE(read_chassis(text, "test", &error).has_value());
  return error;
}

const std::string kModule = "slots = 4\n[[module]]\nslot = 2\nports = 8\n";

}  // namespace

TEST_CASE("chassis: every key") {
  const Chassis chassis = read(R"toml(
name = "box"
software_version = "9.8(7)"
model = "M7"
serial = "S112233"
slots = 4
ficon_ports = 512
[[module]]
slot = 3
number = 2
type = "tester"
ports = 8
vsan = 10
mode = "Fx"
condition = "up"
  [[module.port]]
  ports = "2-3, 8"
  mode = "TE"
  condition = "failed"
  transceiver = "unsupported"
  vsan = 20
  trunk_vsans = [1, 4093]
[[module]]
slot = 4
number = 1
ports = 64
[[port_channel]]
number = 256
auto_created = true
[[tunnel]]
number = 1
vsan = 7
)toml");
  CHECK(chassis.name == "box");
  CHECK(chassis.model == "M7");
  CHECK(chassis.serial == "S112233");
  CHECK(chassis.software_version == "9.8(7)");
  CHECK(chassis.slots == 4);
  CHECK(chassis.ficon_ports == 512);
  REQUIRE(chassis.modules.size() == 2);
  CHECK(chassis.modules[0].slot == 4);  // by number
  REQUIRE(chassis.module(2) != nullptr);
  CHECK(chassis.module(2)->type == "tester");
  CHECK(chassis.module_in_slot(2) == nullptr);
  const Port* plain = chassis.port(*parse_interface("fc3/1"));
  const Port* other = chassis.port(*parse_interface("fc3/8"));
  REQUIRE(plain != nullptr);
  REQUIRE(other != nullptr);
  CHECK(plain->mode == PortMode::kFx);
  CHECK(plain->condition == PortCondition::kUp);
  CHECK(plain->vsan == 10);
  CHECK_FALSE(plain->trunking());
  CHECK(other->mode == PortMode::kTE);
  CHECK(other->condition == PortCondition::kFailed);
  CHECK(other->transceiver == Transceiver::kUnsupported);
  CHECK(other->vsan == 20);
  CHECK(other->trunk_vsans.count() == 2);
  CHECK(other->trunk_vsans.test(4093));
  CHECK(chassis.port(*parse_interface("fc3/9")) == nullptr);
  CHECK(chassis.port(*parse_interface("fc1/1")) == nullptr);
  CHECK(chassis.port(*parse_interface("port-channel 256"))->auto_created);
  CHECK(chassis.port(*parse_interface("fcip 1"))->vsan == 7);
  CHECK(chassis.port(*parse_interface("fcip 2")) == nullptr);
  CHECK(chassis.interfaces().size() == 8 + 64 + 2);
}

TEST_CASE("chassis: what is wrong is told with line and column") {
  struct Case {
    std::string text, error;
  };
  for (const Case& c : {
           Case{"", "test:1:1: slots is missing"},
           Case{"slots = \"9\"", "test:1:9: slots is string, not a whole number"},
           Case{"slots = 2.5", "test:1:9: slots is floating-point, not a whole number"},
           Case{"slots = 17", "test:1:9: slots is 17, not from 1 to 16"},
           Case{"slots = 1\nname = 3", "test:2:8: name is integer, not a text"},
           Case{"slots = 1\ncolour = 3",
                "test:2:1: unknown key \"colour\"; there are ficon_ports model module name "
                "port_channel serial "
                "slots software_version tunnel"},
           Case{"slots = 1\nficon_ports = 1281",
                "test:2:15: ficon_ports is 1281, not from 1 to 1280"},
           Case{"slots = 1\nmodule = 3", "test:2:10: module is integer, not a list of tables"},
           Case{"slots = 1\nmodule = [3]", "test:2:11: module is integer, not a table"},
           Case{"slots = 1\n[[module]]\nports = 3", "test:2:1: slot is missing"},
           Case{"slots = 1\n[[module]]\nslot = 2\nports = 3",
                "test:3:8: slot is 2, not from 1 to 1"},
           Case{"slots = 1\n[[module]]\nslot = 1\nports = 65",
                "test:4:9: ports is 65, not from 1 to 64"},
           Case{kModule + "[[module]]\nslot = 2\nports = 8",
                "test:6:8: slot 2 has a module already"},
           Case{kModule + "[[module]]\nslot = 3\nnumber = 2\nports = 8",
                "test:7:10: there is a module 2 already"},
           Case{kModule + "mode = \"X\"",
                "test:5:8: mode is none of auto, E, F, TE, SD, Fx: \"X\""},
           Case{kModule + "vsan = 4094", "test:5:8: vsan is 4094, not from 1 to 4093"},
           Case{kModule + "trunk_vsans = [1, \"2\"]",
                "test:5:19: a VSAN is string, not a whole number"},
           Case{kModule + "trunk_vsans = [1, 0]", "test:5:19: VSAN is 0, not from 1 to 4093"},
           Case{kModule + "speed = 16",
                "test:5:1: unknown key \"speed\"; there are condition mode number port ports slot "
                "transceiver "
                "trunk_vsans type vsan"},
           Case{kModule + "[[module.port]]\nports = \"1-9\"",
                "test:6:9: ports \"1-9\": the ports are 1 to 8"},
           Case{kModule + "[[module.port]]\nports = \"3-1\"",
                "test:6:9: ports \"3-1\": a range that ends before it begins"},
           Case{kModule + "[[module.port]]\nports = \"1,,2\"",
                "test:6:9: ports \"1,,2\": not of the form 1-4, 17"},
           Case{kModule + "[[module.port]]\nports = \"\"",
                "test:6:9: ports \"\": not of the form 1-4, 17"},
           Case{kModule + "[[module.port]]\nports = \"1-4\"\n[[module.port]]\nports = \"4\"",
                "test:8:9: port 4 of the module is described twice"},
           Case{"slots = 1\n[[tunnel]]\nnumber = 3\n[[tunnel]]\nnumber = 3",
                "test:5:10: fcip 3 is there already"},
           Case{"slots = 1\n[[tunnel]]\nnumber = 3\nauto_created = true",
                "test:4:1: unknown key \"auto_created\"; there are condition mode number "
                "transceiver "
                "trunk_vsans vsan"},
           Case{"slots = 1\n[[port_channel]]\nnumber = 3\nauto_created = 1",
                "test:4:16: auto_created is integer, not true or false"},
       }) {
    CHECK(refusal(c.text) == c.error);
  }
}

TEST_CASE("chassis: what is no TOML is told with line and column") {
  CHECK(refusal("slots = 1\nslots = 2").starts_with("test:2:"));
  CHECK(refusal("slots = 1\n[[module").starts_with("test:2:"));
  CHECK(refusal(std::string(1000, '[')).starts_with("test:1:"));
}

TEST_CASE("chassis: letters beyond ASCII stand in lines of comments alone") {
  CHECK(read("\xef\xbb\xbf# f\u00fcr die Halle\nslots = 1\n  # K\u00f6ln").slots == 1);
  const std::string sentence = "a letter beyond ASCII; only lines that are comments may have some";
  CHECK(refusal("slots = 1\n\u00f6 = 1") == "test:2:1: " + sentence);
  CHECK(refusal("\uff3d") == "test:1:1: " + sentence);
  CHECK(refusal("slots = 1  # f\u00fcr") == "test:1:15: " + sentence);
  CHECK(refusal("name = \"K\u00f6ln\"") == "test:1:10: " + sentence);
  CHECK(refusal("name = \"\"\"\n# \\\u00f6\"\"\"") == "test:2:4: " + sentence);
}

TEST_CASE("chassis: noise is refused, and much of it unread") {
  std::mt19937 random(20261121);
  for (int round = 0; round < 200; ++round) {
    std::string noise(random() % 4096, '\0');
    for (char& c : noise) c = static_cast<char>(random());
    const std::string error = refusal(noise);
    CHECK(error.starts_with("test:"));
    CHECK(error.find(": ") != std::string::npos);
  }
  const std::string path = "chassis_test_noise.toml";
  {
    std::ofstream file(path, std::ios::binary);
    for (int i = 0; i < 10 * 1024 * 1024; ++i) file.put(static_cast<char>(random()));
  }
  std::string error;
  CHECK_FALSE(read_chassis_file(path, &error).has_value());
  CHECK(error == path + ": larger than 1 MiB, which no description of a chassis is");
  std::remove(path.c_str());
  CHECK_FALSE(read_chassis_file(path, &error).has_value());
  CHECK(error == path + ": cannot be read");
}

TEST_CASE("chassis: the examples") {
  for (const auto& [name, modules, ports] :
       {std::tuple{"small-switch.toml", 1U, 16U}, {"full-director.toml", 16U, 1034U}}) {
    std::string error;
    const auto text = read_chassis_file(std::string(FICON_CHASSIS_EXAMPLES) + '/' + name, &error);
    REQUIRE_MESSAGE(text.has_value(), error);
    const Chassis chassis = read(*text);
    CHECK(chassis.modules.size() == modules);
    CHECK(chassis.interfaces().size() == ports);
  }
}

TEST_CASE("chassis: the built-in one, as the functions without a handle see it") {
  std::uint8_t slot = 0x77, lc = 0x77;
  CHECK(ficonm_platform_lc_to_slot_b0(6, &slot) == 0);
  CHECK(slot == 6);
  CHECK(ficonm_platform_lc_to_slot_b0(3, &slot) != 0);  // an empty slot
  CHECK(ficonm_platform_slot_to_lc_b0(2, &lc) == 0);
  CHECK(lc == 2);
  CHECK(ficonm_platform_slot_to_lc_b0(4, &lc) != 0);
  CHECK(ficonm_platform_slot_to_lc_b0(255, &lc) != 0);
  CHECK(ficon_get_max_ficon_ports() == 256);
  CHECK(MAX_FICON_PORTS == 256);
  CHECK(ficon_cmi_get_max_portnumber() == 255);
  platform_info_t info{};
  CHECK(get_platform_info(&info) == 0);
  CHECK(info.slot_count == 9);
  CHECK(std::string(srg_sw_ver_get(0)) == "4.1(3a)");
  if_index_t next = 0, last = 0;
  CHECK(ficon_pmap_get_next_if(0, &next) == 0);
  CHECK(next == *parse_interface("fc1/1"));
  CHECK(ficon_pmap_get_next_if(*parse_interface("fc3/48"), &next) == 0);
  CHECK(next == *parse_interface("fc7/1"));
  CHECK(ficon_pmap_get_last_if(&last) == 0);
  CHECK(last == *parse_interface("fcip 3"));
  CHECK(ficon_pmap_get_next_if(last, &next) != 0);
}

TEST_CASE("port numbers: the plan that a chassis begins with") {
  std::uint16_t numbers[256];
  CHECK(ficon_get_default_pn(2, 0, numbers) == 0);
  CHECK(numbers[0] == 48);
  CHECK(numbers[47] == 95);
  CHECK(numbers[48] == 512);
  CHECK(numbers[63] == 512);
  CHECK(ficon_get_default_pn(7, 0, numbers) == 0);
  CHECK(numbers[0] == 144);
  CHECK(ficon_get_default_pn(4, 0, numbers) != 0);
  CHECK(numbers[0] == 512);
  CHECK(ficon_get_default_pn(0, 1, numbers) == 0);
  CHECK(numbers[0] == 0xf0);
  CHECK(numbers[9] == 0xf9);
  CHECK(numbers[10] == 512);
  CHECK(numbers[255] == 512);
}

TEST_CASE("port numbers: the port table from defaults and the map of addresses") {
  std::vector<std::uint16_t> map(256);
  for (std::uint16_t i = 0; i < 256; ++i) map[i] = i;
  map[0x10] = 0x20;  // a swap
  map[0x20] = 0x10;
  map[0x30] = 512;  // no address has 0x30
  std::vector<ficon_port_pn_entry_t> table(1280);
  CHECK(ficon_port_to_pn_init(1280, table.data(), 256, map.data()) == 0);
  const auto number = [&](std::size_t e) { return std::uint16_t{table[e].port_number}; };
  const auto address = [&](std::size_t e) { return std::uint16_t{table[e].port_address}; };
  CHECK(number(0x10) == 0x10);
  CHECK(address(0x10) == 0x20);
  CHECK(address(0x20) == 0x10);
  CHECK(number(64) == 48);
  CHECK(address(64) == 512);
  CHECK(address(65) == 49);
  CHECK(number(48) == 512);
  CHECK(address(48) == 512);
  CHECK(number(1024) == 0xf0);
  CHECK(address(1033) == 0xf9);
  CHECK(number(1034) == 512);
}

TEST_CASE("port numbers: interfaces by number and positions by interface") {
  std::vector<std::uint32_t> map(256);
  const if_index_t channel = *parse_interface("port-channel 12");
  map[0xf3] = hton_if_index(channel);
  if_index_t found = 0x77;
  CHECK(ficon_pmap_get_pn_to_phyif(0xf3, &found, 256, map.data()) == 0);
  CHECK(found == channel);
  CHECK(ficon_pmap_get_pn_to_phyif(0xf4, &found, 256, map.data()) == 0);
  CHECK(found == 0);
  CHECK(ficon_pmap_get_pn_to_phyif(256, &found, 256, map.data()) != 0);

  ficon_get_max_ficon_ports();
  std::vector<ficon_port_pn_entry_t> table(1280);
  std::vector<std::uint16_t> identity(256);
  for (std::uint16_t i = 0; i < 256; ++i) identity[i] = i;
  ficon_port_to_pn_init(1280, table.data(), 256, identity.data());
  std::uint32_t entry = 0x77;
  CHECK(ficon_pmap_get_if_to_index_with2pmaps(channel, &entry, map.data(), table.data(), 0) == 0);
  CHECK(entry == 1027);
  CHECK(ficon_pmap_get_if_to_index_with2pmaps(*parse_interface("fc7/3"), &entry, map.data(),
                                              table.data(), 1) == 0);
  CHECK(entry == 6 * 64 + 2);
  entry = 0x77;
  CHECK(ficon_pmap_get_if_to_index_with2pmaps(*parse_interface("fcip 3"), &entry, map.data(),
                                              table.data(), 0) != 0);
  CHECK(ficon_pmap_get_if_to_index_with2pmaps(*parse_interface("fc4/1"), &entry, map.data(),
                                              table.data(), 1) != 0);
  CHECK(entry == 0x77);
}
