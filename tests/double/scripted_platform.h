/**
 * The whole platform as one double: plays a script, records every call, fails the test on what was
 * not scripted. One at a time.
 *
 *   ScriptedPlatform platform;
 *   platform.ficon_enabled_on({10}).lock_granted();
 *   platform.expect_send(7865, golden("clock_alert_on.hex")).reply(tlvs().header_status(0));
 *   CHECK(ficon_cmi_clock_alert_mode(1, platform.handle(), "VSH", "A", 5, 10, 1) == 0);
 *   CHECK(platform.finished());
 */
#pragma once

#include <platform/mts.h>

#include <deque>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "double/expectation.h"
#include "double/hooks.h"

namespace ficon::test {

/** What a platform call gives when `fail_call` made it fail and its result is a status. */
inline constexpr std::uint32_t kInjected = 0x40aa7777;
/** The error number that goes with an injected transport failure, and what the receive makes of it.
 */
inline constexpr std::int32_t kInjectedError = 5;

class ScriptedPlatform {
 public:
  ScriptedPlatform();
  ~ScriptedPlatform();
  ScriptedPlatform(const ScriptedPlatform&) = delete;
  ScriptedPlatform& operator=(const ScriptedPlatform&) = delete;

  mts_handle_t handle() { return reinterpret_cast<mts_handle_t>(this); }

  // ---- the script ----

  /** The next request not answered by a standing answer below. In order. */
  Expectation& expect_send(std::uint32_t opcode);
  Expectation& expect_send(std::uint32_t opcode, Golden payload);

  /** Standing answers to the enabled-VSANs query. */
  ScriptedPlatform& ficon_enabled_on(std::vector<std::uint32_t> vsans);
  ScriptedPlatform& enabled_vsans_send_fails(std::uint32_t error);
  ScriptedPlatform& enabled_vsans_recv_fails(std::int32_t error);
  ScriptedPlatform& enabled_vsans_parse_fails(std::uint32_t error);
  ScriptedPlatform& enabled_vsans_status(std::uint32_t status);
  /** The count word as it is, for counts that the list does not hold. */
  ScriptedPlatform& enabled_vsans_count(std::int32_t count);

  /** Standing answers to lock requests; frees are always answered with 0. */
  ScriptedPlatform& lock_granted() { return lock_answers({0}); }
  /** One status for each get, reset or status request; the last one stays. */
  ScriptedPlatform& lock_answers(std::vector<std::uint32_t> statuses);
  /** Every lock request fails to be sent. */
  ScriptedPlatform& lock_send_fails(std::int32_t error);
  /** For tests of the lock functions by themselves: a lock may still be held at the end. */
  ScriptedPlatform& lock_may_stay();

  /** Answers of every other platform function. */
  Hooks on;
  ScriptedPlatform& feature_answers(std::uint32_t status);

  bool history_on = true;
  bool debug_on = false;

  /** For hooks that send or receive: a request in `*msg` whose reply is this; a reply in `*msg`. */
  void send_request(mts_msg_ref_t* msg, const std::string& what, Bytes reply);
  void deliver(mts_msg_ref_t* msg, Bytes payload);

  /** A reply for a parse function: the test's own, and not to be dropped by the parser. */
  mts_msg_ref_t* received(Bytes payload, std::size_t slack = 0);
  mts_msg_ref_t* received_without_payload();

  // ---- what happened ----

  /** Every call as a line; with names, only the calls of these functions. */
  std::vector<std::string> calls(std::initializer_list<std::string_view> names = {}) const;
  /** The same as one text, a call a line: for comparisons that show what differs. */
  std::string lines(std::initializer_list<std::string_view> names = {}) const;
  std::size_t count(std::string_view name) const { return calls({name}).size(); }
  /** The calls in short: "send 7865, token, drop request, recv, drop reply". Without the TLV and
   * payload calls. */
  std::string order() const;
  /** The payloads sent with an opcode. */
  std::vector<Bytes> sent(std::uint32_t opcode) const;
  /** Standard output since the beginning. */
  std::string printed() const;
  /** The texts of the event history and of the debug channel. */
  const std::vector<std::string>& history() const { return history_; }
  const std::vector<std::string>& debug_output() const { return debug_output_; }
  /** The pauses taken, in nanoseconds; none takes real time. */
  const std::vector<std::uint64_t>& pauses() const { return pauses_; }

  bool messages_dropped() const;
  bool lock_balanced() const;
  /** Blocks allocated since the beginning and not released: as lines. */
  std::vector<std::string> leaks() const;
  /** Releases them: for the buffers that the interface keeps by intention. */
  void release_leaks();
  /** The whole script was played, every message dropped, the lock free, nothing leaked. */
  bool finished() const;
  /** What `finished` finds wanting, as lines. */
  std::vector<std::string> complaints() const;

  // ---- faults ----

  /** The n-th call (from 1) that can fail does. */
  ScriptedPlatform& fail_call(int n, std::int32_t error = kInjectedError);
  /** Drops of replies are told to have failed; the replies are gone all the same. */
  ScriptedPlatform& fail_reply_drops(std::int32_t error) {
    reply_drop_error_ = error;
    return *this;
  }
  /** The n-th allocation (from 1) gives null. */
  ScriptedPlatform& fail_allocation(int n);
  bool fault_was_hit() const { return !fault_.empty(); }
  /** The line of the call that failed. */
  const std::string& fault() const { return fault_; }

  // ---- for the platform functions themselves ----

  static ScriptedPlatform* active();
  static ScriptedPlatform& require(const char* function);
  void note(std::string line) { calls_.push_back(std::move(line)); }
  void problem(const std::string& text) const;
  /** Counts a call that can fail; true if it is to fail now. */
  bool faulted(const std::string& line);
  bool allocation_fails();
  void allocated(const void* block, std::string what);
  /** What the block was allocated as; empty for one that is not known. */
  std::string released(const void* block);
  void paused(std::uint64_t nanoseconds) { pauses_.push_back(nanoseconds); }
  void traced_history(std::string text) { history_.push_back(std::move(text)); }
  void traced_debug(std::string text) { debug_output_.push_back(std::move(text)); }

  std::int32_t send(mts_handle_t handle, std::uint32_t node, std::uint32_t sap,
                    std::uint32_t opcode, const void* payload, std::uint32_t length,
                    mts_msg_ref_t* msg, std::uint32_t flags, const mts_send_opts_t* opts);
  std::int32_t recv(mts_handle_t handle, mts_msg_ref_t* reply, const mts_recv_opts_t* opts);
  std::int32_t drop(mts_handle_t handle, mts_msg_ref_t* msg);
  void* payload(mts_msg_ref_t* msg);
  std::uint32_t token(mts_msg_ref_t* msg);
  std::int32_t error(mts_handle_t handle);
  std::uint32_t send_enabled_vsans(mts_handle_t handle, mts_msg_ref_t* msg);
  std::uint32_t parse_enabled_vsans(mts_msg_ref_t* reply, std::uint32_t** list);

 private:
  struct Message;
  struct Lock {
    std::vector<std::uint32_t> answers;
    std::size_t next = 0;
    std::int32_t send_error = 0;
    bool scripted = false;
    bool may_stay = false;
    bool unsure = false;  // a get that did not reach the daemon: its free is no mistake
    std::map<std::uint32_t, int> held;
  };
  struct EnabledVsansAnswer {
    bool scripted = false;
    std::uint32_t send_error = 0;
    std::int32_t recv_error = 0;
    std::uint32_t parse_error = 0;
    std::uint32_t status = 0;
    std::optional<std::int32_t> count;
    std::vector<std::uint32_t> vsans;
  };

  Message& create(mts_msg_ref_t* msg, bool request, std::string what);
  Message* find(const mts_msg_ref_t* msg, const char* function) const;
  void check_handle(mts_handle_t handle, const char* function) const;
  Expectation* next_expectation(std::uint32_t opcode);
  std::int32_t play_send(const Expectation& expected, std::uint32_t node, std::uint32_t sap,
                         const Bytes& payload, mts_msg_ref_t* msg, const mts_send_opts_t* opts);
  std::int32_t play_lock(const Bytes& payload, mts_msg_ref_t* msg);
  void note_lock_request(const Bytes& payload, bool sent);

  std::deque<Expectation> script_;
  std::size_t played_ = 0;
  Lock lock_;
  EnabledVsansAnswer enabled_;
  std::deque<std::unique_ptr<Message>> messages_;
  std::deque<mts_msg_ref_t> received_;
  std::uint32_t next_token_ = 0x7000;
  std::int32_t error_ = 0;
  std::vector<std::string> calls_;
  std::vector<std::pair<std::uint32_t, Bytes>> sent_;
  std::vector<std::string> history_;
  std::vector<std::string> debug_output_;
  std::vector<std::uint64_t> pauses_;
  std::map<const void*, std::string> blocks_;
  int fail_call_ = 0;
  std::int32_t fail_error_ = kInjectedError;
  std::int32_t reply_drop_error_ = 0;
  int fail_allocation_ = 0;
  std::string fault_;
};

}  // namespace ficon::test
