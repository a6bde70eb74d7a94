/** The fcd lock: get, free, reset, status, and what each makes of the daemon's answers. */
#include <doctest/doctest.h>

#include "double/scripted_platform.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kVsan = 0x11223344;
constexpr std::uint32_t kRequester = 0x01020304;
constexpr std::uint32_t kWait = 5;

constexpr std::uint32_t kBusy = 0x40890029;
constexpr std::uint32_t kAlreadyHeld = 0x40890036;

constexpr std::int32_t kNotEnabled = 0x40850004;
constexpr std::int32_t kResetFailed = 0x40850013;

enum class Op : std::uint8_t { kFree, kGet, kReset, kStatus };

Golden lock_request(Op operation, std::uint32_t requester = kRequester) {
  return golden("lock_request.hex")
      .with(4, {static_cast<std::uint8_t>(operation)}, "operation")
      .with(9, host32(requester), "requester");
}

Bytes lock_reply(std::uint32_t status) {
  return record(18)
      .host32(0, kVsan)
      .u8(4, 0x77)
      .host32(5, status)
      .host32(9, 0x0a0b0c0d)
      .put(13, {0xe1, 0xe2, 0xe3, 0xe4, 0xe5});
}

Expectation& expect_lock(ScriptedPlatform& platform, Op operation,
                         std::uint32_t requester = kRequester) {
  platform.lock_may_stay();
  return platform.expect_send(7874, lock_request(operation, requester)).to(0xfe000000, 103);
}

std::int32_t get(ScriptedPlatform& platform, std::uint32_t requester = kRequester) {
  return ficon_get_fcd_lock(platform.handle(), kVsan, requester, kWait);
}
std::int32_t free_lock(ScriptedPlatform& platform) {
  return ficon_free_fcd_lock(platform.handle(), kVsan, kRequester, kWait);
}
std::int32_t reset(ScriptedPlatform& platform) {
  return ficon_reset_fcd_lock(platform.handle(), kVsan, kRequester, kWait);
}
std::int32_t status(ScriptedPlatform& platform, ficon_fcd_lock_rec_t* record) {
  return ficon_get_fcd_lock_status(platform.handle(), kVsan, 0x0badbeef, kWait, record);
}

constexpr char kOneExchange[] = "send 7874, token, drop request, recv, drop reply";
const std::string kCheckThenExchange =
    std::string(
        "ficon_send_get_enabled_vsans, token, drop request, recv, "
        "ficon_parse_get_enabled_vsans, free, drop reply, ") +
    kOneExchange;

}  // namespace

TEST_CASE("get: granted, or held already by the asker") {
  for (const std::uint32_t answer : {0u, kAlreadyHeld}) {
    ScriptedPlatform platform;
    expect_lock(platform, Op::kGet).reply(lock_reply(answer));
    CHECK(get(platform) == 0);
    CHECK(platform.order() == kOneExchange);
    CHECK(platform.lines({"mts_send", "mts_recv"}) ==
          "mts_send node=0xfe000000 sap=103 opcode=7874 length=18 options=1,1\n"
          "mts_recv options=1,0,5,28673\n");
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("get: busy for the operator and the agent is asked again three times, 300 ms apart") {
  for (const std::uint32_t requester : {1u, 2u}) {
    ScriptedPlatform platform;
    for (int i = 0; i < 4; ++i) {
      expect_lock(platform, Op::kGet, requester).reply(lock_reply(kBusy));
    }
    CHECK(get(platform, requester) == -1);
    CHECK(platform.pauses() == std::vector<std::uint64_t>(3, 300'000'000));
    CHECK(platform.order() == std::string(kOneExchange) + ", nanosleep, " + kOneExchange +
                                  ", nanosleep, " + kOneExchange + ", nanosleep, " + kOneExchange);
    CHECK(platform.lines({"nanosleep"}) ==
          "nanosleep seconds=0 nanoseconds=300000000\n"
          "nanosleep seconds=0 nanoseconds=300000000\n"
          "nanosleep seconds=0 nanoseconds=300000000\n");
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("get: granted at the last try") {
  ScriptedPlatform platform;
  for (const std::uint32_t answer : {kBusy, kBusy, kBusy, 0u}) {
    expect_lock(platform, Op::kGet, 1).reply(lock_reply(answer));
  }
  CHECK(get(platform, 1) == 0);
  CHECK(platform.pauses().size() == 3);
  CHECK(platform.finished());
}

TEST_CASE("get: busy for anyone else fails at once") {
  for (const std::uint32_t requester : {0u, 3u, 4u, 0xffffffffu}) {
    ScriptedPlatform platform;
    expect_lock(platform, Op::kGet, requester).reply(lock_reply(kBusy));
    CHECK(get(platform, requester) == -1);
    CHECK(platform.order() == kOneExchange);
    CHECK(platform.finished());
  }
}

TEST_CASE("get: another answer fails at once, without a word") {
  for (const std::uint32_t answer : {1u, 0xffffffffu, 0x40890028u, 0x40890037u}) {
    ScriptedPlatform platform;
    expect_lock(platform, Op::kGet, 1).reply(lock_reply(answer));
    CHECK(get(platform, 1) == -1);
    CHECK(platform.order() == kOneExchange);
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("get: busy, then something else ends the tries") {
  ScriptedPlatform platform;
  expect_lock(platform, Op::kGet, 1).reply(lock_reply(kBusy));
  expect_lock(platform, Op::kGet, 1).recv_errors({62});
  CHECK(get(platform, 1) == -1);
  CHECK(platform.pauses().size() == 1);
  CHECK(platform.finished());
}

TEST_CASE("get: the daemon is not there") {
  ScriptedPlatform platform;
  expect_lock(platform, Op::kGet).fails(32);
  CHECK(get(platform) == -2);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("get: another send failure is told") {
  ScriptedPlatform platform;
  expect_lock(platform, Op::kGet).fails(0x1b);
  CHECK(get(platform) == -1);
  CHECK(platform.printed() == "ficon_get_fcd_lock:mts_send failed (errno 0x1b)\n");
  CHECK(platform.finished());
}

TEST_CASE("get: no reply, and a reply without payload") {
  {
    ScriptedPlatform platform;
    expect_lock(platform, Op::kGet).recv_errors({62});
    CHECK(get(platform) == -1);
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
  ScriptedPlatform platform;
  expect_lock(platform, Op::kGet).reply_without_payload();
  CHECK(get(platform) == -1);
  CHECK(platform.printed() == "ficon_get_fcd_lock:failure response from fcd 3\n");
  CHECK(platform.order() == kOneExchange);
  CHECK(platform.finished());
}

TEST_CASE("free: what the daemon answers does not matter") {
  for (const std::uint32_t answer : {0u, kBusy, kAlreadyHeld, 0xffffffffu}) {
    ScriptedPlatform platform;
    expect_lock(platform, Op::kFree).reply(lock_reply(answer));
    CHECK(free_lock(platform) == 0);
    CHECK(platform.order() == kOneExchange);
    CHECK(platform.finished());
  }
}

TEST_CASE("free: a daemon that is not there has freed it") {
  ScriptedPlatform platform;
  expect_lock(platform, Op::kFree).fails(32);
  CHECK(free_lock(platform) == 0);
  CHECK(platform.printed().empty());
}

TEST_CASE("free: another send failure is told") {
  ScriptedPlatform platform;
  expect_lock(platform, Op::kFree).fails(0x1b);
  CHECK(free_lock(platform) == -1);
  CHECK(platform.printed() == "ficon_free_fcd_lock:mts_send failed (errno 0x1b)\n");
}

TEST_CASE("free: no reply, and a reply without payload, fail without a word") {
  {
    ScriptedPlatform platform;
    expect_lock(platform, Op::kFree).recv_errors({5});
    CHECK(free_lock(platform) == -1);
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
  ScriptedPlatform platform;
  expect_lock(platform, Op::kFree).reply_without_payload();
  CHECK(free_lock(platform) == -1);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("reset: after the check, granted or held counts as reset") {
  for (const std::uint32_t answer : {0u, kAlreadyHeld}) {
    ScriptedPlatform platform;
    platform.ficon_enabled_on({kVsan});
    expect_lock(platform, Op::kReset).reply(lock_reply(answer));
    CHECK(reset(platform) == 0);
    CHECK(platform.order() == kCheckThenExchange);
    CHECK(platform.lines({"mts_recv"}) ==
          "mts_recv options=1,0,5,28673\nmts_recv options=1,0,5,28675\n");
    CHECK(platform.finished());
  }
}

TEST_CASE("reset: any other answer is a refusal, busy too and without another try") {
  for (const std::uint32_t answer : {kBusy, 1u, 0xffffffffu}) {
    ScriptedPlatform platform;
    platform.ficon_enabled_on({kVsan});
    expect_lock(platform, Op::kReset).reply(lock_reply(answer));
    CHECK(reset(platform) == kResetFailed);
    CHECK(platform.order() == kCheckThenExchange);
    CHECK(platform.finished());
  }
}

TEST_CASE("reset: failures on the way") {
  struct Case {
    void (*script)(Expectation&);
    std::int32_t result;
    const char* printed;
  };
  const Case cases[] = {
      {[](Expectation& lock) { lock.fails(32); }, 0, ""},
      {[](Expectation& lock) { lock.fails(0x1b); }, -1,
       "ficon_reset_fcd_lock:mts_send failed (errno 0x1b)\n"},
      {[](Expectation& lock) { lock.recv_errors({62}); }, 0x40850043, ""},
      {[](Expectation& lock) { lock.recv_errors({5}); }, 0x40850000, ""},
      {[](Expectation& lock) { lock.reply_without_payload(); }, kResetFailed, ""},
  };
  for (const Case& c : cases) {
    ScriptedPlatform platform;
    platform.ficon_enabled_on({kVsan});
    c.script(expect_lock(platform, Op::kReset));
    CHECK(reset(platform) == c.result);
    CHECK(platform.printed() == c.printed);
    CHECK(platform.finished());
  }
}

TEST_CASE("reset and status: without FICON on the VSAN nothing is sent") {
  using Script = void (*)(ScriptedPlatform&);
  const Script scripts[] = {
      [](ScriptedPlatform& p) { p.ficon_enabled_on({}); },
      [](ScriptedPlatform& p) {
        p.ficon_enabled_on({1, 2, 0x44332211});
      },
      [](ScriptedPlatform& p) { p.enabled_vsans_send_fails(32); },
      [](ScriptedPlatform& p) { p.enabled_vsans_send_fails(6); },
      [](ScriptedPlatform& p) { p.enabled_vsans_recv_fails(62); },
      [](ScriptedPlatform& p) { p.enabled_vsans_parse_fails(6); },
      [](ScriptedPlatform& p) { p.ficon_enabled_on({kVsan}).enabled_vsans_status(6); },
  };
  for (const Script script : scripts) {
    {
      ScriptedPlatform platform;
      script(platform);
      CHECK(reset(platform) == kNotEnabled);
      CHECK(platform.count("mts_send") == 0);
      CHECK(platform.finished());
    }
    ScriptedPlatform platform;
    script(platform);
    ficon_fcd_lock_rec_t record;
    CHECK(status(platform, &record) == kNotEnabled);
    CHECK(platform.count("mts_send") == 0);
    CHECK(platform.finished());
  }
}

TEST_CASE("status: the record as it stands, whatever it says, asked for without a requester") {
  for (const std::uint32_t answer : {0u, kBusy, 0xdeadbeefu}) {
    ScriptedPlatform platform;
    platform.ficon_enabled_on({kVsan});
    expect_lock(platform, Op::kStatus, 0).reply(lock_reply(answer));
    ficon_fcd_lock_rec_t record;
    CHECK(status(platform, &record) == 0);
    CHECK(difference(lock_reply(answer), bytes_of(record)) == "");
    const std::uint32_t holder = record.requester;
    CHECK(holder == 0x0a0b0c0d);
    CHECK(platform.order() == kCheckThenExchange);
    CHECK(platform.finished());
  }
}

TEST_CASE("status: failures on the way; a daemon that is not there is one of them") {
  struct Case {
    void (*script)(Expectation&);
    const char* printed;
  };
  const Case cases[] = {
      {[](Expectation& lock) { lock.fails(32); },
       "ficon_get_fcd_lock_status:mts_send failed (errno 0x20)\n"},
      {[](Expectation& lock) { lock.fails(0x1b); },
       "ficon_get_fcd_lock_status:mts_send failed (errno 0x1b)\n"},
      {[](Expectation& lock) { lock.recv_errors({62}); }, ""},
      {[](Expectation& lock) { lock.reply_without_payload(); },
       "ficon_get_fcd_lock_status:failure responsed from fcd 3\n"},
  };
  for (const Case& c : cases) {
    ScriptedPlatform platform;
    platform.ficon_enabled_on({kVsan});
    c.script(expect_lock(platform, Op::kStatus, 0));
    ficon_fcd_lock_rec_t record;
    CHECK(status(platform, &record) == -1);
    CHECK(platform.printed() == c.printed);
    CHECK(platform.finished());
  }
}

TEST_CASE("lock reply: 18 bytes into the record, untouched without a payload") {
  ScriptedPlatform platform;
  ficon_fcd_lock_rec_t record{};
  CHECK(ficon_parse_allegiance_msg(platform.received(lock_reply(0x55667788)), &record) == 0);
  CHECK(difference(lock_reply(0x55667788), bytes_of(record)) == "");
  CHECK(ficon_parse_allegiance_msg(platform.received_without_payload(), &record) == 3);
  CHECK(difference(lock_reply(0x55667788), bytes_of(record)) == "");
  CHECK(platform.finished());
}
