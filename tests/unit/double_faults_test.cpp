/** What the double must not let pass. A test marked `should_fail` holds that it fails. */
#include <doctest/doctest.h>

#include "double/fault_sweep.h"

using namespace ficon::test;

namespace {

using Lines = std::vector<std::string>;

constexpr std::uint32_t kVsan = 0x11223344;

mts_recv_opts_t recv_options(std::uint32_t token) {
  mts_recv_opts_t options{};
  options.word[0] = 1;
  options.word[3] = token;
  return options;
}

/** Sends any request and leaves its message. */
mts_msg_ref_t sent(ScriptedPlatform& platform) {
  mts_msg_ref_t msg{};
  ficon_cmi_get_box_status(1, platform.handle(), "A", "B", 0, &msg);
  return msg;
}

}  // namespace

TEST_CASE("double: a request that is not in the script" * doctest::should_fail()) {
  ScriptedPlatform platform;
  platform.expect_send(7855);
  sent(platform);
}

TEST_CASE("double: a request with another byte" * doctest::should_fail()) {
  ScriptedPlatform platform;
  platform.expect_send(7880, golden("box_status.hex"));
  sent(platform);
}

TEST_CASE("double: a request to another place" * doctest::should_fail()) {
  ScriptedPlatform platform;
  platform.expect_send(7880).to(0xfe000000, 103);
  sent(platform);
}

TEST_CASE("double: a request with other options" * doctest::should_fail()) {
  ScriptedPlatform platform;
  platform.expect_send(7880).options(1, 0);
  sent(platform);
}

TEST_CASE("double: another handle" * doctest::should_fail()) {
  ScriptedPlatform platform;
  platform.expect_send(7880);
  mts_msg_ref_t msg{};
  ficon_cmi_get_box_status(1, nullptr, "A", "B", 0, &msg);
}

TEST_CASE("double: a message dropped twice" * doctest::should_fail()) {
  ScriptedPlatform platform;
  platform.expect_send(7880);
  mts_msg_ref_t msg = sent(platform);
  mts_drop(platform.handle(), &msg);
  mts_drop(platform.handle(), &msg);
}

TEST_CASE("double: a receive before the drop of the request" * doctest::should_fail()) {
  ScriptedPlatform platform;
  platform.expect_send(7880).reply({1});
  mts_msg_ref_t msg = sent(platform);
  const mts_recv_opts_t options = recv_options(mts_rr_token_get(&msg));
  mts_msg_ref_t reply{};
  mts_recv(platform.handle(), &reply, &options);
}

TEST_CASE("double: a receive for a token of nobody" * doctest::should_fail()) {
  ScriptedPlatform platform;
  const mts_recv_opts_t options = recv_options(1);
  mts_msg_ref_t reply{};
  mts_recv(platform.handle(), &reply, &options);
}

TEST_CASE("double: a receive option that no one may set" * doctest::should_fail()) {
  ScriptedPlatform platform;
  platform.expect_send(7880).reply({1});
  mts_msg_ref_t msg = sent(platform);
  mts_recv_opts_t options = recv_options(mts_rr_token_get(&msg));
  options.word[9] = 1;
  mts_drop(platform.handle(), &msg);
  mts_msg_ref_t reply{};
  mts_recv(platform.handle(), &reply, &options);
}

TEST_CASE("double: a lock freed that was not held" * doctest::should_fail()) {
  ScriptedPlatform platform;
  platform.lock_granted();
  ficon_free_fcd_lock(platform.handle(), kVsan, 1, 0);
}

TEST_CASE("double: a function without an answer" * doctest::should_fail()) {
  ScriptedPlatform platform;
  if_index_t next = 0;
  ficon_pmap_get_next_if(1, &next);
}

TEST_CASE("double: a parser that drops its reply" * doctest::should_fail()) {
  ScriptedPlatform platform;
  mts_drop(platform.handle(), platform.received({1}));
}

TEST_CASE("double: what is missing at the end") {
  ScriptedPlatform platform;
  platform.lock_granted();
  platform.expect_send(7880);
  platform.expect_send(7855);
  mts_msg_ref_t msg = sent(platform);
  CHECK(ficon_get_fcd_lock(platform.handle(), kVsan, 1, 0) == 0);
  void* block = mtrack_alloc(205, 3, 40);
  CHECK_FALSE(platform.messages_dropped());
  CHECK_FALSE(platform.lock_balanced());
  CHECK(platform.complaints() ==
        Lines{"never sent: opcode 7855", "never dropped: request opcode 7880 token=28673",
              "the lock is still held", "never released: mtrack_alloc module=205 type=3 size=40"});
  mts_drop(platform.handle(), &msg);
  mtrack_free(block);
  CHECK(platform.complaints() == Lines{"never sent: opcode 7855", "the lock is still held"});
}

TEST_CASE("double: which release met which allocation") {
  ScriptedPlatform platform;
  std::free(mtrack_alloc(205, 3, 40));
  mtrack_free(std::malloc(7));
  CHECK(platform.lines({"free", "mtrack_free"}) ==
        "free block=mtrack_alloc module=205 type=3 size=40\n"
        "mtrack_free block=malloc size=7\n");
  CHECK(platform.complaints().empty());
}

TEST_CASE("sweep: a row too few, and a row too many" * doctest::should_fail()) {
  std::vector<FaultCase> rows;
  SUBCASE("too few") {}
  SUBCASE("too many") {
    rows = {{"mts_send", 0xffffffff}, {"mts_recv", 0}};
  }
  fault_sweep(
      [](ScriptedPlatform& platform) {
        mts_msg_ref_t msg = sent(platform);
        if (msg.impl == nullptr) return 0xffffffff;
        mts_drop(platform.handle(), &msg);
        return 0u;
      },
      [](ScriptedPlatform& platform) { platform.expect_send(7880); }, rows);
}

TEST_CASE("sweep: a message that a fault leaves undropped" * doctest::should_fail()) {
  fault_sweep(
      [](ScriptedPlatform& platform) {
        mts_msg_ref_t msg = sent(platform);
        if (mts_payload_get(&msg) == nullptr && platform.fault_was_hit()) return 3u;
        mts_drop(platform.handle(), &msg);
        return 0u;
      },
      [](ScriptedPlatform& platform) { platform.expect_send(7880); },
      {{"mts_send", 3}, {"mts_payload_get", 3}});
}
