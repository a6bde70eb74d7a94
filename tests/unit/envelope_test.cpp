/** What every request and every reply share: receiving, options, drops, order. */
#include <doctest/doctest.h>

#include "double/scripted_platform.h"
#include "exchange/trace.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kVsan = 0x11223344;

/** Sends the box status query and gives the result of receiving its reply. */
std::uint32_t send_and_receive(ScriptedPlatform& platform, mts_msg_ref_t* reply) {
  mts_msg_ref_t request{};
  REQUIRE(ficon_cmi_get_box_status(1, platform.handle(), "A", "B", 0, &request) == 0);
  mts_recv_opts_t options{};
  options.word[0] = 1;
  options.word[2] = 0x01020304;
  options.word[3] = mts_rr_token_get(&request);
  mts_drop(platform.handle(), &request);
  return ficon_cmi_mts_recv(platform.handle(), reply, &options);
}

std::uint32_t get_info(ScriptedPlatform& platform, ficon_cmi_vsan_cfg_t* record,
                       std::uint32_t wait = 5) {
  return ficon_cmi_get_vsan_info(1, platform.handle(), "VSH", "UNKNOWN", wait, 1, kVsan, record);
}

}  // namespace

TEST_CASE("receive: a reply at once") {
  ScriptedPlatform platform;
  platform.expect_send(7880).reply({1, 2, 3});
  mts_msg_ref_t reply{};
  CHECK(send_and_receive(platform, &reply) == 0);
  CHECK(static_cast<std::uint8_t*>(mts_payload_get(&reply))[2] == 3);
  CHECK(platform.count("mts_errno_get") == 0);
  mts_drop(platform.handle(), &reply);
  CHECK(platform.finished());
}

TEST_CASE("receive: interrupted as often as it takes, then the reply") {
  ScriptedPlatform platform;
  platform.expect_send(7880).recv_errors({4, 4, 4, 4, 4, 4, 4, 4}).reply({1});
  mts_msg_ref_t reply{};
  CHECK(send_and_receive(platform, &reply) == 0);
  CHECK(platform.count("mts_recv") == 9);
  CHECK(platform.count("mts_errno_get") == 8);
  mts_drop(platform.handle(), &reply);
  CHECK(platform.finished());
}

TEST_CASE("receive: the same options record at every try") {
  ScriptedPlatform platform;
  platform.expect_send(7880).recv_errors({4}).reply({1});
  mts_msg_ref_t reply{};
  CHECK(send_and_receive(platform, &reply) == 0);
  CHECK(platform.lines({"mts_recv"}) ==
        "mts_recv options=1,0,16909060,28673\n"
        "mts_recv options=1,0,16909060,28673\n");
  mts_drop(platform.handle(), &reply);
}

TEST_CASE("receive: errors and the status that each becomes") {
  struct Case {
    std::initializer_list<std::int32_t> errors;
    std::uint32_t status;
  };
  const Case cases[] = {{{62}, 0x40850043},  {{4, 4, 62}, 0x40850043}, {{5}, 0x40850000},
                        {{32}, 0x40850000},  {{4, 5}, 0x40850000},     {{0}, 0x40850000},
                        {{-62}, 0x40850000}, {{63}, 0x40850000},       {{61}, 0x40850000}};
  for (const Case& c : cases) {
    ScriptedPlatform platform;
    platform.expect_send(7880).recv_errors(c.errors);
    mts_msg_ref_t reply{};
    CAPTURE(*(c.errors.end() - 1));
    CHECK(send_and_receive(platform, &reply) == c.status);
    CHECK(platform.count("mts_recv") == c.errors.size());
    CHECK(platform.finished());
    CHECK(platform.printed().empty());
  }
}

TEST_CASE("blocking: the request is dropped before the reply is awaited") {
  ScriptedPlatform platform;
  platform.expect_send(7855, golden("vsan_info.hex"))
      .reply(tlvs().header_status(0).add(2, zeros(1347)));
  ficon_cmi_vsan_cfg_t record{};
  CHECK(get_info(platform, &record) == 0);
  CHECK(platform.order() == "send 7855, token, drop request, recv, drop reply");
  CHECK(platform.lines({"mts_send", "mts_recv"}) ==
        "mts_send node=0xfe000000 sap=101 opcode=7855 length=136 options=1,1\n"
        "mts_recv options=1,0,5,28673\n");
  CHECK(platform.finished());
}

TEST_CASE("blocking: the request is dropped also when no reply comes, and nothing else") {
  ScriptedPlatform platform;
  platform.expect_send(7855).recv_errors({62});
  ficon_cmi_vsan_cfg_t record{};
  CHECK(get_info(platform, &record) == 0x40850043);
  CHECK(platform.order() == "send 7855, token, drop request, recv");
  CHECK(platform.finished());
}

TEST_CASE("blocking: a failed send has no message to drop") {
  ScriptedPlatform platform;
  platform.expect_send(7855).fails(32);
  ficon_cmi_vsan_cfg_t record{};
  CHECK(get_info(platform, &record) == 0xffffffff);
  CHECK(platform.order() == "send 7855");
  CHECK(platform.finished());
}

TEST_CASE("blocking: any nonzero send result is the result") {
  ScriptedPlatform platform;
  platform.expect_send(7855).returns(0x01020304);
  ficon_cmi_vsan_cfg_t record{};
  CHECK(get_info(platform, &record) == 0x01020304);
  CHECK(platform.order() == "send 7855");
}

TEST_CASE("blocking: a reply that cannot be parsed is dropped") {
  ScriptedPlatform platform;
  platform.expect_send(7855).reply_without_payload();
  ficon_cmi_vsan_cfg_t record{};
  CHECK(get_info(platform, &record) == 0x40850003);
  CHECK(platform.order() == "send 7855, token, drop request, recv, drop reply");
  CHECK(platform.finished());
}

TEST_CASE("blocking: the wait argument is passed on as it is") {
  for (const std::uint32_t wait : {0u, 1u, 0x80000000u, 0xffffffffu}) {
    ScriptedPlatform platform;
    platform.expect_send(7855).recv_errors({62});
    ficon_cmi_vsan_cfg_t record{};
    CHECK(get_info(platform, &record, wait) == 0x40850043);
    CHECK(platform.lines({"mts_recv"}) ==
          "mts_recv options=1,0," + std::to_string(wait) + ",28673\n");
  }
}

TEST_CASE("a TLV that does not fit ends the request: its code, nothing sent") {
  for (const int call : {1, 2}) {
    ScriptedPlatform platform;
    platform.fail_call(call);
    mts_msg_ref_t msg{};
    CHECK(ficon_cmi_clock_alert_mode_nonblock(1, platform.handle(), "A", "B", 5, kVsan, 1, &msg) ==
          kInjected);
    CHECK(platform.count("tlv_aligned_array_add_tlv") == static_cast<std::size_t>(call));
    CHECK(platform.count("mts_send") == 0);
    CHECK(platform.finished());
  }
}

TEST_CASE("trace: into the history when it takes the events, to the debug channel when it is on") {
  ScriptedPlatform platform;
  SUBCASE("both") {
    platform.debug_on = true;
    ficon::trace("CMI_ERROR: %d\n", 7);
    CHECK(platform.history() == std::vector<std::string>{"CMI_ERROR: 7\n"});
    CHECK(platform.debug_output() == std::vector<std::string>{"CMI_ERROR: 7\n"});
    CHECK(platform.lines() ==
          "sdwrap_hist_event_subtype_check 0x730000 101\n"
          "sdwrap_hist_event 0x730000 14\n"
          "sdwrap_chk_int 101 0 0 1\n"
          "buginf 1 \"ficon\" 0 \"CMI_ERROR: 7\n\"\n");
  }
  SUBCASE("history alone") {
    ficon::trace("x");
    CHECK(platform.history().size() == 1);
    CHECK(platform.debug_output().empty());
  }
  SUBCASE("neither") {
    platform.history_on = false;
    ficon::trace("x");
    CHECK(platform.history().empty());
    CHECK(platform.debug_output().empty());
  }
  SUBCASE("a long text is cut to 511 characters") {
    platform.debug_on = true;
    ficon::trace("%s", std::string(600, 'x').c_str());
    CHECK(platform.history().at(0) == std::string(511, 'x'));
    CHECK(platform.debug_output().at(0) == std::string(511, 'x'));
    CHECK(platform.lines({"sdwrap_hist_event"}) == "sdwrap_hist_event 0x730000 512\n");
  }
  CHECK(platform.printed().empty());
}
