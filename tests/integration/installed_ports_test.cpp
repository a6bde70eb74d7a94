/** Walks over the ports of a file in the mode for installed ports. */
#include <doctest/doctest.h>

#include "chassis_daemon.h"
#include "file_client.h"

using namespace ficon;
using namespace ficon::test;

namespace {

// Of VSAN 20: ports 1, 4 (a trunk), 6. Port 2 has no transceiver; 3 and the trunk 5 are another's.
constexpr const char* kChassis = R"(
name = "mixed"
slots = 1
[[module]]
slot = 1
ports = 6
vsan = 20
condition = "up"
  [[module.port]]
  ports = "2"
  transceiver = "absent"
  [[module.port]]
  ports = "3"
  vsan = 21
  [[module.port]]
  ports = "4"
  mode = "TE"
  trunk_vsans = [19, 20]
  [[module.port]]
  ports = "5"
  mode = "TE"
  trunk_vsans = [21]
)";

struct Director : ChassisDaemon {
  Director() : ChassisDaemon(kChassis) {
    REQUIRE(client.enable());
    REQUIRE(client.block("", 0x03) == 0);
    REQUIRE(client.call_plain(ficon_cmi_set_getnext_type, 2U) == 0);
  }

  struct Step {
    std::uint32_t status;
    std::uint32_t count;
    wire::PortInfo port;
    std::uint32_t vsan;
  };
  template <class Function>
  Step next(Function function, std::uint32_t start, std::uint32_t vsan = kFileVsan) const {
    char name[9] = "";
    const std::uint32_t* const no_key = nullptr;
    ficon_cmi_port_info_t* list = nullptr;
    Step step{.status = 0, .count = 77, .port = {}, .vsan = vsan};
    step.status = client.call_plain(function, 2U, 0U, &step.vsan, name, no_key, start, 0U, &list,
                                    &step.count);
    if (list != nullptr) std::memcpy(&step.port, list, sizeof step.port);
    CHECK((list != nullptr) == (step.status == 0 && step.count == 1));
    mtrack_free(list);
    return step;
  }

  FileClient client{socket()};
};

}  // namespace

TEST_CASE_FIXTURE(Director, "The walk by port address names the VSAN's usable ports alone") {
  std::vector<std::uint32_t> addresses;
  std::uint32_t start = 512;
  for (;;) {
    const Step step = next(ficon_cmi_file_get_port_info_portaddr, start);
    REQUIRE(step.status == 0);
    if (step.count == 0) break;
    start = step.port.port_address.get();
    addresses.push_back(start);
    CHECK(step.port.blocked == (start == 0x03 ? 1 : 0));
  }
  CHECK(addresses == std::vector<std::uint32_t>{0x00, 0x03, 0x05});
  CHECK(next(ficon_cmi_file_get_port_info_portaddr, 255).status == 0x4085000a);
}

TEST_CASE_FIXTURE(Director, "The walk by interface names the same ports") {
  std::vector<std::uint32_t> interfaces;
  std::uint32_t start = 0x01000000;  // the first interface: the walk begins behind it
  for (;;) {
    const Step step = next(ficon_cmi_file_get_port_info_intf, start);
    if (step.status != 0 || step.count == 0) break;
    start = step.port.if_index.get();
    interfaces.push_back(start);
  }
  CHECK(interfaces == std::vector<std::uint32_t>{0x01000003, 0x01000005});
  CHECK(next(ficon_cmi_file_get_port_info_intf, 0x01000005).status == 0x4085000a);
}

TEST_CASE_FIXTURE(Director, "VSAN 0 is the first one with FICON, and the caller is told") {
  const Step step = next(ficon_cmi_file_get_port_info_portaddr, 512, 0);
  CHECK(step.status == 0);
  CHECK(step.count == 1);
  CHECK(step.vsan == kFileVsan);
}

TEST_CASE_FIXTURE(Director, "In the mode for all ports the next one is the next address") {
  REQUIRE(client.call_plain(ficon_cmi_set_getnext_type, 1U) == 0);
  const Step step = next(ficon_cmi_file_get_port_info_portaddr, 0x00);
  CHECK(step.status == 0);
  CHECK(step.port.port_address.get() == 0x01);
}
