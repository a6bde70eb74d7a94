/** Port swap, and the switch-wide prohibit settings. */
#include <doctest/doctest.h>

#include "double/scripted_platform.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kFirst = 0x11223344, kSecond = 0x55667788;

std::uint32_t swap_port(ScriptedPlatform& p, std::uint32_t second,
                        ficon_cmi_swap_reply_t** record) {
  return ficon_cmi_swap_port(1, p.handle(), "VSH", "UNKNOWN", 5, kFirst, second, record);
}

Record swapped(std::uint32_t status, std::uint32_t count, std::size_t operations) {
  Record reply = record(128 + operations * 8).fill(0, 128, 0x77);
  for (std::size_t i = 0; i < operations * 8; ++i) {
    reply.u8(128 + i, static_cast<std::uint8_t>(i + 1));
  }
  return reply.host32(112, status).host32(124, count);
}

}  // namespace

TEST_CASE("swap: both forms send the same block under their own opcode") {
  for (const bool interfaces : {false, true}) {
    ScriptedPlatform platform;
    platform.expect_send(interfaces ? 7891 : 7867, golden("port_swap.hex"));
    mts_msg_ref_t msg{};
    const auto send = interfaces ? ficon_cmi_swap_intf_nonblock : ficon_cmi_swap_port_nonblock;
    CHECK(send(1, platform.handle(), "VSH", "UNKNOWN", 5, kFirst, kSecond, &msg) == 0);
    mts_drop(platform.handle(), &msg);
    CHECK(platform.finished());
  }
}

TEST_CASE("swap: a port with itself is refused without a request") {
  ScriptedPlatform platform;
  ficon_cmi_swap_reply_t* record = nullptr;
  mts_msg_ref_t msg{};
  CHECK(swap_port(platform, kFirst, &record) == 0x40850025);
  CHECK(ficon_cmi_swap_intf(1, platform.handle(), "A", "B", 5, 7, 7, &record) == 0x40850025);
  CHECK(ficon_cmi_swap_port_nonblock(1, platform.handle(), "A", "B", 5, 0, 0, &msg) == 0x40850025);
  CHECK(ficon_cmi_swap_intf_nonblock(1, platform.handle(), "A", "B", 5, 7, 7, &msg) == 0x40850025);
  CHECK(platform.order() == "");
}

TEST_CASE("swap: the record is a copy of the reply, the caller's to free") {
  for (const std::uint32_t count : {0U, 1U, 3U, 1280U}) {
    ScriptedPlatform platform;
    const Bytes reply = swapped(0, count, count);
    platform.expect_send(7867, golden("port_swap.hex")).reply(reply);
    ficon_cmi_swap_reply_t* record = nullptr;
    CHECK(swap_port(platform, kSecond, &record) == 0);
    REQUIRE(record != nullptr);
    const auto* first = reinterpret_cast<const std::uint8_t*>(record);
    CHECK(difference(reply, Bytes(first, first + reply.size())) == "");
    CHECK(platform.order() == "send 7867, token, drop request, recv, mtrack_alloc, drop reply");
    mtrack_free(record);
    CHECK(platform.finished());
  }
}

TEST_CASE("swap: refused, empty, overlong") {
  struct Case {
    std::uint32_t expected;
    Bytes reply;
  };
  for (const Case& c :
       {Case{0x40890044, swapped(0x40890044, 2, 2)}, Case{0x40850003, swapped(0, 1281, 0)},
        Case{0x40850003, swapped(0, 0x20000000, 0)}}) {
    ScriptedPlatform platform;
    platform.expect_send(7891, golden("port_swap.hex")).reply(c.reply);
    auto* record = reinterpret_cast<ficon_cmi_swap_reply_t*>(&platform);
    CHECK(ficon_cmi_swap_intf(1, platform.handle(), "VSH", "UNKNOWN", 5, kFirst, kSecond,
                              &record) == c.expected);
    CHECK(record == nullptr);
    CHECK(platform.finished());
  }
  ScriptedPlatform platform;
  platform.expect_send(7867).reply_without_payload();
  auto* record = reinterpret_cast<ficon_cmi_swap_reply_t*>(&platform);
  CHECK(swap_port(platform, kSecond, &record) == 3);
  CHECK(record == nullptr);
  CHECK(platform.finished());
}

TEST_CASE("swap: without memory there is a warning, a status and no record") {
  ScriptedPlatform platform;
  platform.fail_allocation(1);
  platform.expect_send(7867).reply(swapped(0, 1, 1));
  ficon_cmi_swap_reply_t* record = nullptr;
  CHECK(swap_port(platform, kSecond, &record) == 0x40850010);
  CHECK(record == nullptr);
  CHECK(platform.printed() ==
        "Warning! Malloc Failure in feature/ficon/cmi/tevrak.cpp[4835] for size 136\n");
  CHECK(platform.finished());
}

namespace {

Golden prohibit_request(std::uint32_t value, std::uint32_t operation) {
  return Bytes(record(124).host32(112, value).host32(120, operation));
}

struct Setting {
  std::string name;
  std::string line;
  std::uint32_t opcode;
  Golden request;
  bool gets;
  std::uint32_t (*run)(ScriptedPlatform&, std::uint32_t*);
};

const std::vector<Setting>& settings() {
  static const std::vector<Setting> list = {
      {"ficon_cmi_set_port_default_prohibit", "7126", 7895, golden("default_prohibit_set.hex"),
       false,
       [](ScriptedPlatform& p, std::uint32_t*) {
         return ficon_cmi_set_port_default_prohibit(1, p.handle(), "VSH", "UNKNOWN", 5, kFirst);
       }},
      {"ficon_cmi_get_port_default_prohibit", "7079", 7895, prohibit_request(0, 1), true,
       [](ScriptedPlatform& p, std::uint32_t* value) {
         return ficon_cmi_get_port_default_prohibit(1, p.handle(), "VSH", "UNKNOWN", 5, value);
       }},
      {"ficon_cmi_set_port_prohibit_acl_not_fcid", "7244", 7895, prohibit_request(kFirst, 2), false,
       [](ScriptedPlatform& p, std::uint32_t*) {
         return ficon_cmi_set_port_prohibit_acl_not_fcid(1, p.handle(), "VSH", "UNKNOWN", 5,
                                                         kFirst);
       }},
      {"ficon_cmi_get_port_prohibit_acl_not_fcid", "7202", 7895, prohibit_request(0, 3), true,
       [](ScriptedPlatform& p, std::uint32_t* value) {
         return ficon_cmi_get_port_prohibit_acl_not_fcid(1, p.handle(), "VSH", "UNKNOWN", 5, value);
       }},
      {"ficon_cmi_set_acl_type_downgrade", "7163", 7896, platform_header(3, 0, "VSH", "UNKNOWN"),
       false,
       [](ScriptedPlatform& p, std::uint32_t*) {
         return ficon_cmi_set_acl_type_downgrade(1, p.handle(), "VSH", "UNKNOWN", 5);
       }},
  };
  return list;
}

Bytes setting_reply(const Setting& setting, std::uint32_t value, std::uint32_t status) {
  if (setting.opcode == 7896) return record(12).fill(0, 12, 0x77).host32(8, status);
  return record(120).fill(0, 112, 0x77).host32(112, value).host32(116, status);
}

}  // namespace

TEST_CASE("prohibit settings: request, options, status; a refused get still tells the value") {
  for (const Setting& setting : settings()) {
    for (const std::uint32_t status : {0U, 0x01020304U}) {
      CAPTURE(setting.name);
      ScriptedPlatform platform;
      platform.expect_send(setting.opcode, setting.request)
          .options(1, 0)
          .reply(setting_reply(setting, kSecond, status));
      std::uint32_t value = 0x77;
      CHECK(setting.run(platform, &value) == status);
      CHECK(value == (setting.gets ? kSecond : 0x77));
      CHECK(platform.printed() == "");
      CHECK(platform.finished());
    }
  }
}

TEST_CASE("prohibit settings: a reply without payload is success and tells nothing") {
  for (const Setting& setting : settings()) {
    ScriptedPlatform platform;
    platform.expect_send(setting.opcode).options(1, 0).reply_without_payload();
    std::uint32_t value = 0x77;
    CHECK(setting.run(platform, &value) == 0);
    CHECK(value == 0x77);
    CHECK(platform.finished());
  }
}

TEST_CASE("prohibit settings: only a negative send fails, with its error number, even 0") {
  for (const Setting& setting : settings()) {
    ScriptedPlatform platform;
    platform.expect_send(setting.opcode).options(1, 0).fails(32);
    std::uint32_t value = 0x77;
    CHECK(setting.run(platform, &value) == 32);
    platform.expect_send(setting.opcode).options(1, 0).fails(0);
    CHECK(setting.run(platform, &value) == 0);
    const std::string start = setting.name + "(" + setting.line + "):mts_send failed (errno 0x";
    CHECK(platform.printed() == start + "20)\n" + start + "0)\n");
    platform.expect_send(setting.opcode)
        .options(1, 0)
        .returns(7)
        .reply(setting_reply(setting, kSecond, 9));
    CHECK(setting.run(platform, &value) == 9);
    CHECK(platform.finished());
  }
}

TEST_CASE("prohibit settings: a failed receive is the result") {
  for (const Setting& setting : settings()) {
    ScriptedPlatform platform;
    platform.expect_send(setting.opcode).options(1, 0).recv_errors({4, 4, 62});
    std::uint32_t value = 0x77;
    CHECK(setting.run(platform, &value) == 0x40850043);
    CHECK(platform.printed() == "");
    CHECK(platform.finished());
  }
}
