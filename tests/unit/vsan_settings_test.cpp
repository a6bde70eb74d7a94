/** The setters of a VSAN: their requests byte by byte, and what becomes of the reply. */
#include <doctest/doctest.h>

#include "unit/vsan_setting_table.h"

using namespace ficon::test;

namespace {

std::uint32_t parse(ScriptedPlatform& platform, const Bytes& reply) {
  return ficon_cmi_parse_vsan_cfg(platform.received(reply));
}

}  // namespace

TEST_CASE("settings: fifteen operations, eleven of them with a form that does not block") {
  int nonblocking = 0;
  std::uint32_t operation = 0;
  for (const VsanSetting& setting : vsan_settings()) {
    CHECK(setting.operation == ++operation);
    if (setting.nonblock) ++nonblocking;
  }
  CHECK(operation == 15);
  CHECK(nonblocking == 11);
}

TEST_CASE("settings: the form that does not block sends the request and nothing else") {
  for (const VsanSetting& setting : vsan_settings()) {
    if (!setting.nonblock) continue;
    CAPTURE(setting.name);
    ScriptedPlatform platform;
    platform.expect_send(7865, setting.request());
    mts_msg_ref_t msg{};
    CHECK(setting.nonblock(platform.handle(), &msg) == 0);
    CHECK(platform.lines() ==
          "ficon_init_cmi_hdr 3 \"VSH\" \"UNKNOWN\" 16\n"
          "tlv_aligned_array_add_tlv capacity=2048 type=12 length=128\n"
          "tlv_aligned_array_add_tlv capacity=2048 type=2 length=1347\n"
          "tlv_aligned_array_size_get\n"
          "mts_send node=0xfe000000 sap=101 opcode=7865 length=1487 options=1,1\n");
    CHECK(platform.printed().empty());
    mts_drop(platform.handle(), &msg);
    CHECK(platform.finished());
  }
}

TEST_CASE("settings: a failed send is the result of the form that does not block, untold") {
  for (const VsanSetting& setting : vsan_settings()) {
    if (!setting.nonblock) continue;
    CAPTURE(setting.name);
    ScriptedPlatform platform;
    platform.expect_send(7865).fails(32);
    mts_msg_ref_t msg{};
    CHECK(setting.nonblock(platform.handle(), &msg) == 0xffffffff);
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("settings: the blocking form sends the same request, under the lock") {
  for (const VsanSetting& setting : vsan_settings()) {
    CAPTURE(setting.name);
    ScriptedPlatform platform;
    platform.ficon_enabled_on({kSettingVsan}).lock_granted();
    platform.expect_send(7865, setting.request()).reply(tlvs().header_status(0x40890077));
    CHECK(setting.blocking(platform.handle()) == 0x40890077);
    const auto locks = platform.sent(7874);
    REQUIRE(locks.size() == 2);
    CHECK(golden("lock_request.hex").difference_to(locks[0]) == "");
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("settings: null words are passed on") {
  ScriptedPlatform platform;
  platform.expect_send(7865);
  mts_msg_ref_t msg{};
  CHECK(ficon_cmi_inc_key_counter_nonblock(1, platform.handle(), nullptr, nullptr, 0, 10, &msg) ==
        0);
  CHECK(platform.lines({"ficon_init_cmi_hdr"}) == "ficon_init_cmi_hdr 3 null null 16\n");
  mts_drop(platform.handle(), &msg);
}

TEST_CASE("settings reply: the header's status, in host order, wherever the header stands") {
  ScriptedPlatform platform;
  CHECK(parse(platform, tlvs().header_status(0)) == 0);
  CHECK(parse(platform, tlvs().header_status(0x11223344)) == 0x11223344);
  CHECK(parse(platform, tlvs().add(2, zeros(1347)).header_status(0x11223344)) == 0x11223344);
  CHECK(parse(platform, tlvs().add(99, {}).add(13, zeros(145)).header_status(7)) == 7);
  CHECK(platform.printed().empty());
}

TEST_CASE("settings reply: the first header counts, and what follows is not looked at") {
  ScriptedPlatform platform;
  CHECK(parse(platform, tlvs().header_status(5).header_status(6)) == 5);
  CHECK(parse(platform, tlvs().header_status(0).header_status(6)) == 0);
  CHECK(parse(platform, tlvs().header_status(5).add_claiming(2, 5000, {1})) == 5);
}

TEST_CASE("settings reply: TLVs, but no header among them") {
  ScriptedPlatform platform;
  CHECK(parse(platform, tlvs().add(2, zeros(1347))) == 3);
  CHECK(parse(platform, tlvs().add(2, {}).add(0x0c00, zeros(128))) == 3);
  CHECK(platform.printed().empty());
}

TEST_CASE("settings reply: no TLVs, or no payload, is told without a prefix") {
  {
    ScriptedPlatform platform;
    CHECK(parse(platform, tlvs()) == 0x40850003);
    CHECK(platform.printed() == "invalid cmi payload: no tlvs present\n");
  }
  ScriptedPlatform platform;
  CHECK(ficon_cmi_parse_vsan_cfg(platform.received_without_payload()) == 0x40850003);
  CHECK(platform.printed() == "invalid cmi payload: no tlvs present\n");
}

TEST_CASE("settings reply: the walk's error is the result") {
  ScriptedPlatform platform;
  CHECK(parse(platform, tlvs().add(2, {1, 2}).add_claiming(12, 5000, zeros(128))) == 0x40aa0100);
  platform.fail_call(4);  // payload, count, first TLV, second TLV
  CHECK(parse(platform, tlvs().add(2, {1, 2}).header_status(5)) == kInjected);
}

TEST_CASE("settings reply: a header too short for a status says 0") {
  ScriptedPlatform platform;
  CHECK(parse(platform, tlvs().add(12, Bytes(124, 0xff))) == 0);
  CHECK(parse(platform, tlvs().add(12, {})) == 0);
}
