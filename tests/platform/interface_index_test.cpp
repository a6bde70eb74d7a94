/** Interface indexes and their names. */
#include "interface_index/interface_index.h"

#include <doctest/doctest.h>
#include <platform/port_manager.h>

#include <vector>

using namespace ficon::platform;

TEST_CASE("interface index: the encoding of ports, port channels and tunnels") {
  CHECK(interface_index(fibre_channel_port(1, 16)) == 0x01001010);
  CHECK(interface_index({InterfaceType::kPortChannel, 0, 12}) == 0x0400000c);
  CHECK(interface_index({InterfaceType::kTunnel, 0, 256}) == 0x0a000100);
}

TEST_CASE("interface index: every interface there and back, by index and by name") {
  std::vector<if_index_t> all;
  for (std::uint32_t slot = 0; slot < 16; ++slot) {
    for (std::uint32_t port = 0; port < 64; ++port) {
      all.push_back(interface_index(fibre_channel_port(slot, port)));
    }
  }
  for (const auto type : {InterfaceType::kPortChannel, InterfaceType::kTunnel}) {
    for (std::uint32_t number = 1; number <= 256; ++number) {
      all.push_back(interface_index({type, 0, number}));
    }
  }
  CHECK(all.size() == 1536);
  for (const if_index_t if_index : all) {
    REQUIRE(if_index != 0);
    REQUIRE(interface_of(if_index).has_value());
    CHECK(interface_index(*interface_of(if_index)) == if_index);
    CHECK(parse_interface(interface_name(if_index)) == if_index);
    CHECK(ntoh_if_index(hton_if_index(if_index)) == if_index);
  }
}

TEST_CASE("interface index: names") {
  CHECK(interface_name(0x01001010) == "fc2/17");
  CHECK(interface_name(0x0400000c) == "port-channel 12");
  CHECK(interface_name(0x0a000003) == "fcip 3");
  CHECK(interface_name(0x77000003) == "interface 0x77000003");
  CHECK(parse_interface("port-channel12") == 0x0400000c);
  CHECK(parse_interface("fcip   3") == 0x0a000003);
  for (const char* none :
       {"",        "fc",      "fc2",    "fc2/",           "fc/1",           "fc0/1",
        "fc1/0",   "fc17/1",  "fc1/65", "fc01/1",         "fc1/01",         "fc1/1 ",
        "fc-1/1",  "fc1/1/1", "FC1/1",  "port-channel",   "port-channel 0", "port-channel 257",
        "fcip -1", "fcip 3x", "eth 1",  "fc99999999999/1"}) {
    CAPTURE(none);
    CHECK_FALSE(parse_interface(none).has_value());
  }
}

TEST_CASE("interface index: the platform's functions") {
  std::uint32_t type = 0x77;
  CHECK(if_index_get_type(0x0a000003, &type) == 0);
  CHECK(type == 10);
  for (const if_index_t none :
       {0U, 0x01000040U, 0x01010000U, 0x04000000U, 0x04000101U, 0x02000001U, 0xffffffffU}) {
    type = 0x77;
    CHECK(if_index_get_type(none, &type) != 0);
    CHECK(type == 0x77);
  }
  if_index_t made = 0x77;
  CHECK(if_index_phy_fc_port_init(&made, 0, 64, 0) != 0);
  CHECK(if_index_phy_fc_port_init(&made, 16, 0, 0) != 0);
  CHECK(made == 0x77);
  CHECK(if_index_phy_fc_port_init(&made, 15, 63, 0) == 0);
  CHECK(made == 0x0100f03f);
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(&made);
  made = hton_if_index(0x11223344);
  CHECK(bytes[0] == 0x11);
  CHECK(bytes[3] == 0x44);
  char text[7];
  CHECK(snprintf_if_index(text, sizeof text, 0x01001010) == 6);
  CHECK(std::string(text) == "fc2/17");
  CHECK(snprintf_if_index(text, sizeof text, 0x0400000c) == 15);
  CHECK(std::string(text) == "port-c");
}
