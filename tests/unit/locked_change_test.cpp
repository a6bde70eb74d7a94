/** The locked pattern, seen through one change: checked, taken, freed on every way out. */
#include <doctest/doctest.h>

#include "double/scripted_platform.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kVsan = 0x11223344;
constexpr std::uint32_t kRequester = 0x01020304;

std::uint32_t change(ScriptedPlatform& platform, std::uint32_t requester = kRequester) {
  return ficon_cmi_clock_alert_mode(requester, platform.handle(), "VSH", "UNKNOWN", 5, kVsan, 1);
}

Expectation& expect_change(ScriptedPlatform& platform) {
  return platform.expect_send(7865, golden("vsan_setting.hex"));
}

const std::string kCheck =
    "ficon_send_get_enabled_vsans, token, drop request, recv, ficon_parse_get_enabled_vsans, "
    "free, drop reply, ";
const std::string kLock = "send 7874, token, drop request, recv, drop reply";
const std::string kChange = "send 7865, token, drop request, recv, drop reply";

}  // namespace

TEST_CASE("locked: check, lock, change, free") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({7, kVsan, 9}).lock_granted();
  expect_change(platform).reply(tlvs().header_status(0));
  CHECK(change(platform) == 0);
  CHECK(platform.order() == kCheck + kLock + ", " + kChange + ", " + kLock);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("locked: VSAN, requester and wait go to the lock") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({kVsan}).lock_granted();
  expect_change(platform).reply(tlvs().header_status(0));
  CHECK(change(platform) == 0);
  const auto locks = platform.sent(7874);
  REQUIRE(locks.size() == 2);
  CHECK(golden("lock_request.hex").difference_to(locks[0]) == "");
  CHECK(golden("lock_request.hex").with(4, {0}).difference_to(locks[1]) == "");
  CHECK(platform.lines({"mts_recv"}) ==
        "mts_recv options=1,0,5,28673\n"
        "mts_recv options=1,0,5,28675\n"
        "mts_recv options=1,0,5,28677\n"
        "mts_recv options=1,0,5,28679\n");
}

TEST_CASE("locked: the daemon's refusal is the result, and the lock is freed") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({kVsan}).lock_granted();
  expect_change(platform).reply(tlvs().header_status(0x40890077));
  CHECK(change(platform) == 0x40890077);
  CHECK(platform.sent(7874).size() == 2);
  CHECK(platform.finished());
}

TEST_CASE("locked: a lock that cannot be had ends it, nothing sent, nothing freed") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({kVsan}).lock_answers({0x40890029});
  CHECK(change(platform, 3) == 0x40850012);
  CHECK(platform.order() == kCheck + kLock);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("locked: the operator's change waits for a busy lock") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({kVsan}).lock_answers({0x40890029, 0x40890029, 0});
  platform.expect_send(7865).reply(tlvs().header_status(0));
  CHECK(change(platform, 1) == 0);
  CHECK(platform.pauses().size() == 2);
  CHECK(platform.finished());
}

TEST_CASE("locked: a lock that is held already is held, and freed") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({kVsan}).lock_answers({0x40890036});
  expect_change(platform).reply(tlvs().header_status(0));
  CHECK(change(platform) == 0);
  CHECK(platform.sent(7874).size() == 2);
  CHECK(platform.finished());
}

TEST_CASE("locked: a daemon that is gone when the lock is asked for counts as locked") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({kVsan}).lock_send_fails(32);
  expect_change(platform).reply(tlvs().header_status(0));
  CHECK(change(platform) == 0);
  CHECK(platform.order() == kCheck + "send 7874, " + kChange + ", send 7874");
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("locked: a failed send is told and frees the lock") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({kVsan}).lock_granted();
  expect_change(platform).fails(32);
  CHECK(change(platform) == 0xffffffff);
  CHECK(platform.order() == kCheck + kLock + ", send 7865, " + kLock);
  CHECK(platform.printed() ==
        "ficon_cmi_set_vsan_info(999):ficon_cmi_set_vsan_info_nonblock failed:-1\n");
  CHECK(platform.finished());
}

TEST_CASE("locked: no reply frees the lock") {
  for (const auto& [error, status] : {std::pair{62, 0x40850043u}, std::pair{5, 0x40850000u}}) {
    ScriptedPlatform platform;
    platform.ficon_enabled_on({kVsan}).lock_granted();
    expect_change(platform).recv_errors({error});
    CHECK(change(platform) == status);
    CHECK(platform.order() == kCheck + kLock + ", send 7865, token, drop request, recv, " + kLock);
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE(
    "unlocked: where FICON is not enabled, or that is not known, the change goes all the same") {
  struct Case {
    void (*script)(ScriptedPlatform&);
    std::string check;  // the calls of the check
    std::string printed;
  };
  const std::string sent = "ficon_send_get_enabled_vsans, ";
  const std::string awaited = sent + "token, drop request, recv, ";
  const Case cases[] = {
      {[](ScriptedPlatform& p) { p.ficon_enabled_on({}); }, kCheck, ""},
      {[](ScriptedPlatform& p) {
         p.ficon_enabled_on({10, 0x44332211});
       },
       kCheck, ""},
      {[](ScriptedPlatform& p) { p.ficon_enabled_on({kVsan}).enabled_vsans_count(0); }, kCheck, ""},
      {[](ScriptedPlatform& p) { p.ficon_enabled_on({kVsan}).enabled_vsans_count(-1); }, kCheck,
       ""},
      {[](ScriptedPlatform& p) { p.enabled_vsans_send_fails(32); }, sent, ""},
      {[](ScriptedPlatform& p) { p.enabled_vsans_send_fails(0x40aa0033); }, sent,
       "unable to obtain the enabled vsans info:text of 0x40aa0033\n"},
      {[](ScriptedPlatform& p) { p.enabled_vsans_recv_fails(62); }, awaited, ""},
      {[](ScriptedPlatform& p) { p.enabled_vsans_parse_fails(0x40aa0044); },
       awaited + "ficon_parse_get_enabled_vsans, drop reply, ",
       "err in obtaining the enabled vsans info:text of 0x40aa0044\n"},
      {[](ScriptedPlatform& p) { p.ficon_enabled_on({kVsan}).enabled_vsans_status(0x40aa0055); },
       kCheck, "err in the enabled vsans info:text of 0x40aa0055\n"},
  };
  for (const Case& c : cases) {
    ScriptedPlatform platform;
    c.script(platform);
    expect_change(platform).reply(tlvs().header_status(0x40890005));
    CHECK(change(platform) == 0x40890005);
    CHECK(platform.order() == c.check + kChange);
    CHECK(platform.printed() == c.printed);
    CHECK(platform.finished());
  }
}

TEST_CASE("the check drops a list that it cannot read before it tells so") {
  ScriptedPlatform platform;
  platform.enabled_vsans_parse_fails(0x40aa0044);
  expect_change(platform).reply(tlvs().header_status(0));
  CHECK(change(platform) == 0);
  const auto calls = platform.calls({"mts_drop", "syserr2str"});
  REQUIRE(calls.size() == 5);  // the check's request and reply, the text, the change's two
  CHECK(calls[0].starts_with("mts_drop request"));
  CHECK(calls[1].starts_with("mts_drop reply"));
  CHECK(calls[2].starts_with("syserr2str"));
}

TEST_CASE("unlocked: a failed send is told, and no lock is freed") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({});
  expect_change(platform).returns(0x40aa0066);
  CHECK(change(platform) == 0x40aa0066);
  CHECK(platform.order() == kCheck + "send 7865");
  CHECK(platform.printed() ==
        "ficon_cmi_set_vsan_info(999):ficon_cmi_set_vsan_info_nonblock failed:1084883046\n");
}
