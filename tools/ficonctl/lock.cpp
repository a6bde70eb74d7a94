/** `ficonctl lock`: who may change a VSAN now. */
#include <chrono>
#include <cstring>

#include "command.h"
#include "interrupt.h"
#include "parse.h"
#include "requester.h"
#include "wire/fcd_lock.h"
#include "wire/fcd_status.h"
#include "wire/status.h"

namespace ficon::ctl {
namespace {

using Holder = wire::LockHolder;

/** The lock functions' own results. */
constexpr std::int32_t kRefused = -1;
constexpr std::int32_t kUnreachable = -2;

constexpr std::uint32_t kLongestHold = 7 * 24 * 3600;

std::string lock_of(std::uint32_t vsan) {
  return "the lock of VSAN " + std::to_string(vsan);
}

/**
 * The lock functions mix small results with statuses; both become what they mean. With the daemon
 * gone or silent some of them say that FICON is not enabled: the transport knows better.
 */
void require_lock(Context& context, std::int32_t result, const std::string& what) {
  if (result == 0) return;
  const std::uint32_t error = context.session.transport_error();
  const auto fail = [&](std::uint32_t status) { throw context.session.failure(status, what); };
  if (result == kUnreachable || error == kDaemonGone) fail(kDaemonGone);
  if (error == kWaitRanOut) fail(status::kTimedOut);
  fail(result == kRefused ? status::kLockUnavailable : static_cast<std::uint32_t>(result));
}

Holder read_holder(Context& context, std::uint32_t vsan, const std::string& what) {
  ficon_fcd_lock_rec_t record{};
  Session& session = context.session;
  require_lock(context,
               ficon_get_fcd_lock_status(session.handle(), vsan, 0, session.wait(), &record), what);
  Holder holder{};
  std::memcpy(&holder, record.reserved0, sizeof holder);
  return holder;
}

std::string held_by(const Holder& holder) {
  return "held by the " + requester_name(holder.requester) + " for " +
         std::to_string(holder.age.get()) + " s";
}

void show_status(Context& context, std::uint32_t vsan) {
  const Holder holder = read_holder(context, vsan, "cannot read " + lock_of(vsan));
  Json json{{"vsan", vsan}, {"held", holder.requester != 0}};
  if (holder.requester != 0) {
    json["holder"] = requester_name(holder.requester);
    json["seconds"] = holder.age.get();
  }
  context.output.show(json,
                      lock_of(vsan) + " is " + (holder.requester != 0 ? held_by(holder) : "free"));
}

/** A refusal has no reason of its own: who holds the lock, and whether there is one at all, has. */
[[noreturn]] void refuse_lock(Context& context, std::uint32_t vsan, const std::string& what) {
  const Holder holder = read_holder(context, vsan, what);
  if (holder.requester == 0) throw context.session.failure(status::kLockUnavailable, what);
  throw Failure(
      status::kLockBusy, "lock-busy", what + ": it is " + held_by(holder),
      "wait until it is free, or free a stuck one: ficonctl lock reset " + std::to_string(vsan));
}

void get_lock(Context& context, std::uint32_t vsan, std::uint32_t hold_seconds) {
  Session& session = context.session;
  const std::string what = "cannot take " + lock_of(vsan);
  const std::int32_t result =
      ficon_get_fcd_lock(session.handle(), vsan, session.requester(), session.wait());
  if (result == kRefused) refuse_lock(context, vsan, what);
  require_lock(context, result, what);
  watch_for_interrupt();  // before anyone is told that the lock is held
  const std::string held = hold_seconds == 0 ? "taken, and given back at the end of this command"
                                             : "held for " + std::to_string(hold_seconds) + " s";
  context.output.show({{"vsan", vsan}, {"held", true}, {"seconds", hold_seconds}},
                      lock_of(vsan) + " is " + held);
  // The lock lives as long as its connection: holding it means staying here.
  pause_unless_interrupted(std::chrono::seconds(hold_seconds));
  ficon_free_fcd_lock(session.handle(), vsan, session.requester(), session.wait());
}

/** Freeing succeeds whoever holds the lock, and also without a daemon: only its state tells. */
void free_lock(Context& context, std::uint32_t vsan) {
  Session& session = context.session;
  const std::string what = "cannot free " + lock_of(vsan);
  require_lock(context,
               ficon_free_fcd_lock(session.handle(), vsan, session.requester(), session.wait()),
               what);
  const Holder holder = read_holder(context, vsan, what);
  if (holder.requester != 0) {
    throw Failure(static_cast<std::uint32_t>(FcdStatus::kNotLockOwner), "not-lock-owner",
                  what + ": it is " + held_by(holder) + " on another connection",
                  "wait until its owner frees it, or free a stuck one: ficonctl lock reset " +
                      std::to_string(vsan));
  }
  context.output.show({{"vsan", vsan}, {"held", false}}, lock_of(vsan) + " is free");
}

void reset_lock(Context& context, std::uint32_t vsan) {
  Session& session = context.session;
  require_lock(context,
               ficon_reset_fcd_lock(session.handle(), vsan, session.requester(), session.wait()),
               "cannot reset " + lock_of(vsan));
  context.output.show({{"vsan", vsan}, {"held", false}}, lock_of(vsan) + " is reset");
}

}  // namespace

void register_lock(CLI::App& app, Context& context) {
  CLI::App& object = add_object(app, "lock", "The fcd lock of a VSAN: who may change it now");
  auto vsan = keep<std::string>();
  auto hold_seconds = keep<std::string>();
  const auto add = [&](const char* name, const char* help, std::function<void()> run) {
    CLI::App& action = add_action(object, name, help, std::move(run));
    action.add_option("VSAN", *vsan, "VSAN number, 1 to 4093")->required();
    return &action;
  };
  add("status", "Show who holds the lock and for how long",
      [&context, vsan] { show_status(context, parse_vsan(*vsan)); });
  add("get", "Take the lock, hold it and free it",
      [&context, vsan, hold_seconds] {
        get_lock(
            context, parse_vsan(*vsan),
            hold_seconds->empty() ? 0 : parse_number(*hold_seconds, 1, kLongestHold, "--hold"));
      })
      ->add_option("--hold", *hold_seconds, "Keep it so long, or until Ctrl-C")
      ->type_name("SECONDS");
  add("free", "Free the lock where this requester holds it",
      [&context, vsan] { free_lock(context, parse_vsan(*vsan)); });
  add("reset", "Free the lock whoever holds it",
      [&context, vsan] { reset_lock(context, parse_vsan(*vsan)); });
}

}  // namespace ficon::ctl
