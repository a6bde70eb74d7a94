/** FICON on and off for a VSAN, and the box status. */
#include <doctest/doctest.h>

#include "double/scripted_platform.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kVsan = 0x11223344;
constexpr std::uint32_t kRequester = 0x01020304;

constexpr std::uint8_t kOn = 0xa5;
constexpr std::uint8_t kOff = 0;

std::uint32_t set_state(ScriptedPlatform& platform, std::uint8_t state,
                        std::uint32_t requester = kRequester) {
  return ficon_cmi_set_ficon_state(requester, platform.handle(), "VSH", "UNKNOWN", 5, kVsan, state);
}

Golden state_request(std::uint8_t state) {
  return golden("ficon_state.hex").with(116, host32(state), "state");
}

/** A reply header whose other words would be wrong statuses. */
Record state_reply(std::uint32_t status) {
  return record(128).fill(0, 128, 0x77).host32(120, status);
}

const std::string kCheck =
    "ficon_send_get_enabled_vsans, token, drop request, recv, ficon_parse_get_enabled_vsans, "
    "free, drop reply, ";
const std::string kLock = "send 7874, token, drop request, recv, drop reply";
const std::string kChange = "send 7853, token, drop request, recv, drop reply";

Record box_reply(unsigned groups) {
  Record reply = record(8 + groups * 5 * 28);
  for (std::size_t i = 8; i < 8 + groups * 140; ++i) {
    reply.u8(i, static_cast<std::uint8_t>(i * 7 + i / 256));
  }
  return reply.u8(4, 0xe1).u8(5, static_cast<std::uint8_t>(groups)).u8(6, 0xe2).u8(7, 0xe3);
}

}  // namespace

TEST_CASE("state: the request, with the state alone in host order") {
  ScriptedPlatform platform;
  platform.expect_send(7853, golden("ficon_state.hex"));
  mts_msg_ref_t msg{};
  CHECK(ficon_cmi_set_ficon_state_nonblock(kRequester, platform.handle(), "VSH", "UNKNOWN", 5,
                                           kVsan, kOn, &msg) == 0);
  CHECK(platform.lines() ==
        "ficon_init_cmi_hdr 3 \"VSH\" \"UNKNOWN\" 16\n"
        "mts_send node=0xfe000000 sap=101 opcode=7853 length=128 options=1,1\n");
  mts_drop(platform.handle(), &msg);
  CHECK(platform.finished());
}

TEST_CASE("state: a failed send is the result of the form that does not block") {
  ScriptedPlatform platform;
  platform.expect_send(7853).fails(32);
  mts_msg_ref_t msg{};
  CHECK(ficon_cmi_set_ficon_state_nonblock(kRequester, platform.handle(), "VSH", "UNKNOWN", 5,
                                           kVsan, kOn, &msg) == 0xffffffff);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("state reply: the word at 120, in host order; 3 without a payload") {
  ScriptedPlatform platform;
  CHECK(ficon_cmi_parse_set_ficon_state(platform.received(state_reply(0))) == 0);
  CHECK(ficon_cmi_parse_set_ficon_state(platform.received(state_reply(0x11223344))) == 0x11223344);
  CHECK(ficon_cmi_parse_set_ficon_state(platform.received_without_payload()) == 3);
}

TEST_CASE("enable: the feature first, then the check, then unlocked as FICON is not yet there") {
  for (const std::uint32_t feature : {0u, 0x40aa0005u}) {
    ScriptedPlatform platform;
    platform.ficon_enabled_on({}).feature_answers(feature);
    platform.expect_send(7853, state_request(1)).reply(state_reply(0));
    CHECK(set_state(platform, 1) == 0);
    CHECK(platform.order() == "fm_cmi_set_feature_wait, " + kCheck + kChange);
    CHECK(platform.lines({"fm_cmi_set_feature_wait"}) ==
          "fm_cmi_set_feature_wait * \"ficon\" \"VSH\" \"UNKNOWN\" 3\n");
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("enable: where FICON is enabled already, under the lock") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({kVsan}).lock_granted().feature_answers(0);
  platform.expect_send(7853, state_request(kOn)).reply(state_reply(0x40890077));
  CHECK(set_state(platform, kOn) == 0x40890077);
  CHECK(platform.order() ==
        "fm_cmi_set_feature_wait, " + kCheck + kLock + ", " + kChange + ", " + kLock);
  CHECK(golden("lock_request.hex").difference_to(platform.sent(7874).at(0)) == "");
  CHECK(platform.finished());
}

TEST_CASE("enable: a feature that cannot be enabled is told, and nothing else done") {
  for (const auto& [feature, told] :
       {std::pair{0x40aa0006u, "ficon feature enable failed:text of 0x40aa0006\n"},
        std::pair{1u, "ficon feature enable failed:text of 0x00000001\n"},
        std::pair{0xffffffffu, "ficon feature enable failed:text of 0xffffffff\n"}}) {
    ScriptedPlatform platform;
    platform.feature_answers(feature);
    CHECK(set_state(platform, 1) == feature);
    CHECK(platform.order() == "fm_cmi_set_feature_wait");
    CHECK(platform.printed() == told);
    CHECK(platform.finished());
  }
}

TEST_CASE("disable: the check twice, no feature, under the lock") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({kVsan}).lock_granted();
  platform.expect_send(7853, state_request(kOff)).reply(state_reply(0));
  CHECK(set_state(platform, kOff) == 0);
  CHECK(platform.order() == kCheck + kCheck + kLock + ", " + kChange + ", " + kLock);
  CHECK(platform.finished());
}

TEST_CASE("disable: without a daemon there is nothing to disable") {
  ScriptedPlatform platform;
  platform.enabled_vsans_send_fails(32);
  CHECK(set_state(platform, kOff) == 0);
  CHECK(platform.order() == "ficon_send_get_enabled_vsans");
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("disable: any other outcome of the check goes on, unlocked") {
  ScriptedPlatform platform;
  platform.enabled_vsans_recv_fails(62);
  platform.expect_send(7853, state_request(kOff)).reply(state_reply(0x40890005));
  CHECK(set_state(platform, kOff) == 0x40890005);
  CHECK(platform.count("ficon_send_get_enabled_vsans") == 2);
  CHECK(platform.count("mts_send") == 1);
  CHECK(platform.finished());
}

TEST_CASE("enable: without a daemon the request is tried") {
  ScriptedPlatform platform;
  platform.enabled_vsans_send_fails(32).feature_answers(0);
  platform.expect_send(7853).fails(32);
  CHECK(set_state(platform, 1) == 0xffffffff);
  CHECK(platform.order() == "fm_cmi_set_feature_wait, ficon_send_get_enabled_vsans, send 7853");
}

TEST_CASE("state: a lock that cannot be had ends it") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({kVsan}).lock_answers({0x40890029}).feature_answers(0);
  CHECK(set_state(platform, 1, 3) == 0x40850012);
  CHECK(platform.sent(7853).empty());
  CHECK(platform.finished());
}

TEST_CASE("state: a failed send is told with the sender's name, and the lock freed") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({kVsan}).lock_granted().feature_answers(0);
  platform.expect_send(7853).fails(32);
  CHECK(set_state(platform, 1) == 0xffffffff);
  const std::string printed = platform.printed();
  CAPTURE(printed);
  CHECK(printed.starts_with("ficon_cmi_set_ficon_state("));
  CHECK(printed.ends_with("):ficon_cmi_set_ficon_state_nonblock failed:-1\n"));
  CHECK(platform.sent(7874).size() == 2);
  CHECK(platform.finished());
}

TEST_CASE("state: no reply frees the lock") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({kVsan}).lock_granted().feature_answers(0);
  platform.expect_send(7853).recv_errors({62});
  CHECK(set_state(platform, 1) == 0x40850043);
  CHECK(platform.sent(7874).size() == 2);
  CHECK(platform.finished());
}

TEST_CASE("box status: the query is the platform's part of a header") {
  ScriptedPlatform platform;
  platform.expect_send(7880, golden("box_status.hex"));
  mts_msg_ref_t msg{};
  CHECK(ficon_cmi_get_box_status(kRequester, platform.handle(), "VSH", "UNKNOWN", 5, &msg) == 0);
  CHECK(platform.lines() ==
        "ficon_init_cmi_hdr 1 \"VSH\" \"UNKNOWN\" 0\n"
        "mts_send node=0xfe000000 sap=101 opcode=7880 length=112 options=1,1\n");
  mts_drop(platform.handle(), &msg);
  CHECK(platform.finished());
}

TEST_CASE("box status: a failed send is the result") {
  ScriptedPlatform platform;
  platform.expect_send(7880).fails(5);
  mts_msg_ref_t msg{};
  CHECK(ficon_cmi_get_box_status(1, platform.handle(), "VSH", "UNKNOWN", 5, &msg) == 0xffffffff);
  CHECK(platform.finished());
}

TEST_CASE("box status reply: the whole reply in a tracked buffer") {
  for (const unsigned groups : {0u, 1u, 2u, 255u}) {
    CAPTURE(groups);
    ScriptedPlatform platform;
    const Bytes reply = box_reply(groups);
    ficon_cmi_box_status_t* status = nullptr;
    REQUIRE(ficon_cmi_parse_box_status(platform.received(reply), &status) == 0);
    REQUIRE(status != nullptr);
    const auto* copy = reinterpret_cast<const std::uint8_t*>(status);
    CHECK(difference(reply, Bytes(copy, copy + reply.size())) == "");
    CHECK(platform.lines({"mtrack_alloc"}) ==
          "mtrack_alloc module=205 type=13 size=" + std::to_string(8 + groups * 140) + "\n");
    mtrack_free(status);
    CHECK(platform.finished());
  }
}

TEST_CASE("box status reply: refused or empty, nothing is handed out") {
  ScriptedPlatform platform;
  ficon_cmi_box_status_t somewhere{};
  ficon_cmi_box_status_t* status = &somewhere;
  CHECK(ficon_cmi_parse_box_status(platform.received_without_payload(), &status) == 3);
  CHECK(status == nullptr);
  status = &somewhere;
  CHECK(ficon_cmi_parse_box_status(platform.received(box_reply(1).host32(0, 0x40890077)),
                                   &status) == 3);
  CHECK(status == nullptr);
  CHECK(platform.count("mtrack_alloc") == 0);
  CHECK(platform.finished());
}

TEST_CASE("box status reply: a failed allocation is told and copies nothing") {
  ScriptedPlatform platform;
  platform.fail_allocation(1);
  ficon_cmi_box_status_t somewhere{};
  ficon_cmi_box_status_t* status = &somewhere;
  CHECK(ficon_cmi_parse_box_status(platform.received(box_reply(2)), &status) == 0x40850010);
  CHECK(status == nullptr);
  const std::string printed = platform.printed();
  CAPTURE(printed);
  CHECK(printed.starts_with("Warning! Malloc Failure in feature/ficon/cmi/tevrak.cpp["));
  CHECK(printed.ends_with("] for size 288\n"));
  CHECK(platform.finished());
}
