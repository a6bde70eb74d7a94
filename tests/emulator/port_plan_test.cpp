#include "model/port_plan.h"

#include <doctest/doctest.h>

#include "interface_index/interface_index.h"
#include "model/hardware.h"
#include "model/port_operations.h"

using namespace ficon;
using namespace ficon::emulator;

namespace {

constexpr Asker kOperator{1, Requester::kOperator};

/** Modules of 4 ports in slots 1 and 3, a port channel, and one that the system made. */
constexpr const char* kSmall = R"(
name = "small"
slots = 4
[[module]]
slot = 1
ports = 4
vsan = 10
condition = "up"
[[module]]
slot = 3
number = 2
ports = 4
vsan = 10
[[port_channel]]
number = 12
vsan = 10
[[port_channel]]
number = 13
auto_created = true
)";

if_index_t fc(std::uint32_t slot, std::uint32_t port) {
  return platform::interface_index(platform::fibre_channel_port(slot - 1, port - 1));
}

struct Small {
  Small() : model({.hardware = hardware_from(kSmall, "small")}), plan(model.port_plan()) {
    model.enable_feature();
    REQUIRE(model.enable_ficon(10, kOperator) == FcdStatus::kDone);
    REQUIRE(model.enable_ficon(20, kOperator) == FcdStatus::kDone);
    model.touched.clear();
  }

  if_index_t port_channel(std::uint32_t number) const {
    return platform::interface_index({platform::InterfaceType::kPortChannel, 0, number});
  }

  Switch model;
  PortPlan& plan;
};

}  // namespace

TEST_CASE_FIXTURE(Small, "Ports are numbered through the modules, and addresses follow") {
  CHECK(plan.number_at(0) == 0);
  CHECK(plan.number_at(3) == 3);
  CHECK(plan.number_at(4) == 512);
  CHECK(plan.number_at(64) == 4);
  CHECK(plan.number_at(1024) == 0xf0);
  CHECK(plan.interface_of(5) == fc(3, 2));
  CHECK(plan.address_of(5) == 5);
  CHECK(plan.position_of(5) == 65);
  CHECK(plan.interface_of(0xf0) == 0);
  CHECK(plan.number_of_address(0xfe) == 512);
  CHECK(plan.number_of_address(0xff) == 512);
}

TEST_CASE_FIXTURE(Small, "A port address tells number, interface and whether it is installed") {
  const PortIdentity there = model.port_identity(5);
  CHECK(there.port_number == 5);
  CHECK(there.if_index == fc(3, 2));
  CHECK(there.installed);
  const PortIdentity spare = model.port_identity(0x30);
  CHECK(spare.port_number == 0x30);
  CHECK(spare.if_index == 0);
  CHECK_FALSE(spare.installed);
  CHECK_FALSE(model.port_identity(0xfe).installed);
}

TEST_CASE_FIXTURE(Small,
                  "A reservation moves the numbers of a module, and its text names what collides") {
  CHECK(plan.reserve(2, {{32, 33}, {40, 41}}).status == FcdStatus::kDone);
  CHECK(plan.number_at(64) == 32);
  CHECK(plan.number_at(66) == 40);
  CHECK(plan.interface_of(41) == fc(3, 4));
  CHECK_FALSE(plan.owner_of(4));

  const auto refused = [&](NumberOwner owner, const std::vector<PortNumberRange>& ranges) {
    const PlanVerdict verdict = plan.reserve(owner, ranges);
    CHECK(verdict.status != FcdStatus::kDone);
    return verdict.text;
  };
  CHECK(refused(1, {{0, 3}, {33, 35}}) == "port number 33 is reserved for module 2");
  CHECK(refused(kLogicalPorts, {{3, 3}}) == "port number 3 is reserved for module 1");
  CHECK(refused(1, {{240, 240}}) == "port number 240 is reserved for the logical ports");
  CHECK(refused(1, {{50, 60}, {55, 56}}) == "port number 55 stands in two ranges, 50-60 and 55-56");
  CHECK(refused(1, {{60, 50}}) == "range 60-50 ends before it begins");
  CHECK(refused(1, {{250, 256}}) == "port number 254 belongs to the control unit port");
  CHECK(refused(1, {{255, 256}}) ==
        "port number 256 is beyond the port numbers of this switch, 0 to 255");
  CHECK(refused(1, {{42, 106}}) == "65 port numbers are more than the 64 positions of module 1");
  CHECK(refused(17, {{50, 50}}) == "there is no module 17");
  CHECK(refused(1, {}) == "there is no range");
  CHECK(plan.number_at(0) == 0);  // and nothing has changed
  CHECK(plan.number_at(64) == 32);
}

TEST_CASE_FIXTURE(Small, "Numbers are released one by one or all") {
  CHECK(plan.release(1, {{2, 4}}).text == "port number 4 is reserved for module 2");
  CHECK(plan.release(1, {{1, 2}}).status == FcdStatus::kDone);
  CHECK(plan.reserved_for(1) == std::vector<PortNumberRange>{{0, 0}, {3, 3}});
  CHECK(plan.interface_of(3) == fc(1, 4));
  CHECK(plan.interface_of(2) == 0);
  CHECK(plan.release(1, {}).status == FcdStatus::kDone);
  CHECK(plan.reserved_for(1).empty());
}

TEST_CASE_FIXTURE(Small, "A number is assigned within its module, or to one logical interface") {
  CHECK(plan.assign(fc(1, 1), 4) == FcdStatus::kPortNumberNotReserved);
  CHECK(plan.assign(fc(1, 1), 2) == FcdStatus::kPortNumberTaken);
  CHECK(plan.unassign(fc(1, 3), 1) == FcdStatus::kPortNumberNotBound);
  CHECK(plan.unassign(fc(1, 3), 512) == FcdStatus::kDone);
  CHECK(plan.assign(fc(1, 1), 2) == FcdStatus::kDone);
  CHECK(plan.interface_of(2) == fc(1, 1));
  CHECK(plan.interface_of(0) == 0);
  CHECK(plan.assign(fc(2, 1), 2) == FcdStatus::kNoSuchInterface);
  CHECK(plan.assign(fc(1, 1), 254) == FcdStatus::kControlUnitPort);
  CHECK(plan.assign(fc(1, 1), 512) == FcdStatus::kPortNumberOutOfRange);

  CHECK(plan.assign(port_channel(13), 0xf0) == FcdStatus::kAutoCreatedPort);
  CHECK(plan.assign(port_channel(12), 0xf1) == FcdStatus::kDone);
  CHECK(plan.assign(port_channel(12), 0xf2) == FcdStatus::kDone);  // in place of the first
  CHECK(plan.interface_of(0xf1) == 0);
  CHECK(plan.number_of_interface(port_channel(12)) == 0xf2);
  CHECK(plan.assign(port_channel(12), 3) == FcdStatus::kPortNumberNotReserved);
}

TEST_CASE_FIXTURE(Small, "A port number has one port address at most") {
  CHECK(plan.bind_address(0x20, 3) == FcdStatus::kPortNumberHasAddress);
  CHECK(plan.bind_address(3, 512) == FcdStatus::kDone);
  CHECK(plan.bind_address(0x20, 3) == FcdStatus::kDone);
  CHECK(plan.address_of(3) == 0x20);
  CHECK(plan.address_of(0x20) == 512);
  CHECK(plan.bind_address(0xfe, 3) == FcdStatus::kControlUnitPort);
  CHECK(plan.bind_address(0xff, 3) == FcdStatus::kNotAPortAddress);
  CHECK(plan.bind_address(0x21, 254) == FcdStatus::kControlUnitPort);
  CHECK(plan.bind_address(0x21, 256) == FcdStatus::kPortNumberOutOfRange);
}

TEST_CASE_FIXTURE(Small,
                  "A swap exchanges the addresses, settings go with them, and again undoes it") {
  PortOperations ports(model);
  const std::uint32_t before = model.find_vsan(20)->key_counter;
  const std::uint32_t position = model.history.last_position();
  SwappedInterfaces done{};
  REQUIRE(ports.swap(kOperator, 1, 6, done) == FcdStatus::kDone);
  CHECK(done.first == fc(1, 2));
  CHECK(done.second == fc(3, 3));
  // Address 01 with its settings is now the spare port's, and the other way round.
  CHECK(model.port_identity(1).if_index == fc(3, 3));
  CHECK(model.port_identity(1).port_number == 6);
  CHECK(model.port_identity(6).if_index == fc(1, 2));
  CHECK(model.find_vsan(20)->key_counter == before + 1);
  CHECK(model.history.last_position() == position + 1);
  CHECK(model.history.at(position + 1)->change == Change::kPortSwap);
  CHECK(model.history.at(position + 1)->detail == "addresses 01 and 06");
  REQUIRE(ports.swap(kOperator, 1, 6, done) == FcdStatus::kDone);
  CHECK(model.port_identity(1).if_index == fc(1, 2));
  CHECK(model.port_identity(6).if_index == fc(3, 3));
}

TEST_CASE_FIXTURE(Small, "A swap is refused with its reason, and changes nothing") {
  PortOperations ports(model);
  SwappedInterfaces done{};
  CHECK(ports.swap(kOperator, 1, 1, done) == FcdStatus::kSamePort);
  CHECK(ports.swap(kOperator, 1, 0x30, done) == FcdStatus::kPortNotInstalled);
  CHECK(ports.swap(kOperator, 0xfe, 1, done) == FcdStatus::kControlUnitPort);
  CHECK(ports.swap(kOperator, 1, 512, done) == FcdStatus::kPortNumberOutOfRange);
  REQUIRE(plan.bind_address(2, 512) == FcdStatus::kDone);
  CHECK(ports.swap(kOperator, 1, 2, done) == FcdStatus::kPortWithoutAddress);
  REQUIRE(model.get_lock(20, {9, Requester::kHost}) == FcdStatus::kDone);
  CHECK(ports.swap(kOperator, 1, 3, done) == FcdStatus::kLockBusy);
  CHECK(ports.swap({9, Requester::kHost}, 1, 3, done) == FcdStatus::kDone);
}

TEST_CASE_FIXTURE(Small, "Walks go by number, interface or address") {
  PortOperations ports(model);
  const auto number_behind = [&](PortKeys keys) { return ports.next(keys)->port_number; };
  CHECK(number_behind({}) == 0);
  CHECK(number_behind({.port_number = 3}) == 4);
  CHECK(number_behind({.port_number = 7}) == 0xf0);  // a number without an interface is walked over
  CHECK(ports.next({.port_number = 7})->if_index == 0);
  CHECK_FALSE(ports.next({.port_number = 0xf9}));
  CHECK(number_behind({.if_index = fc(1, 4)}) == 4);
  CHECK(number_behind({.port_address = 3}) == 4);
  CHECK(ports.find({.port_address = 6})->if_index == fc(3, 3));
  CHECK_FALSE(ports.find({.port_number = 5, .port_address = 6}));
  CHECK_FALSE(ports.find({}));
}

TEST_CASE_FIXTURE(Small, "Where it is the default, new files prohibit what access lists can name") {
  PortOperations ports(model);
  const PortSet none;
  const auto prohibited_anew = [&](std::uint32_t vsan, std::uint32_t address) {
    REQUIRE(model.disable_ficon(vsan, kOperator) == FcdStatus::kDone);
    REQUIRE(model.enable_ficon(vsan, kOperator) == FcdStatus::kDone);
    const ConfigurationFiles& files = model.find_vsan(vsan)->files;
    CHECK(files.named.at(kIplFile) == files.active);
    CHECK(files.active.is_consistent());
    return files.active.port(address).prohibited;
  };
  CHECK(ports.set_default_prohibit(kOperator, 2) == FcdStatus::kBadProhibitSetting);
  REQUIRE(ports.set_default_prohibit(kOperator, 1) == FcdStatus::kDone);
  CHECK(model.find_vsan(10)->files.active.port(1).prohibited == none);

  SUBCASE("by FCID: the addresses of the VSAN's interfaces") {
    REQUIRE(ports.bind_address(kOperator, 6, kNoPort) == FcdStatus::kDone);
    REQUIRE(ports.assign(kOperator, port_channel(12), 0xf1) == FcdStatus::kDone);
    PortSet others_of_2;
    for (const std::uint32_t address : {0U, 1U, 3U, 4U, 5U, 7U, 0xf1U}) others_of_2.set(address);
    CHECK(prohibited_anew(10, 2) == others_of_2);
    CHECK(prohibited_anew(10, 6) == none);     // its port has lost the address
    CHECK(prohibited_anew(10, 0xf2) == none);  // no interface
    CHECK(prohibited_anew(20, 2) == none);     // the port is of another VSAN
  }
  SUBCASE("not by FCID: every usable address, until the downgrade") {
    REQUIRE(ports.set_acl_not_fcid(kOperator, 1) == FcdStatus::kDone);
    for (const std::uint32_t address : {0x00U, 0x02U, 0xf2U, 0xfdU}) {
      CHECK(prohibited_anew(20, address).count() == 253);
    }
    CHECK(prohibited_anew(20, 0xfe) == none);
    REQUIRE(ports.downgrade_acl_type(kOperator) == FcdStatus::kDone);
    CHECK(model.find_vsan(20)->files.active.port(2).prohibited.count() == 253);
    CHECK(prohibited_anew(20, 2) == none);
    CHECK(prohibited_anew(10, 2).count() == 7);
    CHECK(model.prohibit_settings() == ProhibitSettings{.prohibited_by_default = true});
  }
}
