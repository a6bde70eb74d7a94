/** `ficonctl lock`: who may change a VSAN now. */
#include <chrono>
#include <csignal>
#include <cstring>
#include <thread>

#include "command.h"
#include "parse.h"
#include "wire/fcd_lock.h"
#include "wire/status.h"

namespace ficon::ctl {
namespace {

/** The lock functions' own results. */
constexpr std::int32_t kRefused = -1;
constexpr std::int32_t kUnreachable = -2;

/** What the daemon writes into the spare bytes: the holder's requester code and the lock's age. */
struct Holder {
  std::uint8_t requester;  // 0: the lock is free
  wire::host32 age;        // seconds
};
static_assert(wire::is_packed<Holder, sizeof(ficon_fcd_lock_rec_t::reserved0)>);

const char* requester_name(std::uint32_t code) {
  constexpr const char* kNames[] = {"nobody", "operator", "agent", "host"};
  return code < std::size(kNames) ? kNames[code] : "unknown";
}

/** The lock functions mix small results with statuses; both become what they mean. */
void require_lock(Context& context, std::int32_t result, const std::string& what) {
  if (result == 0) return;
  if (result == kUnreachable) throw context.session.failure(32, what);
  if (result == kRefused) {
    const std::uint32_t error = context.session.transport_error();
    throw context.session.failure(error == 32 ? error : status::kLockUnavailable, what);
  }
  throw context.session.failure(static_cast<std::uint32_t>(result), what);
}

Holder read_holder(Context& context, std::uint32_t vsan) {
  ficon_fcd_lock_rec_t record{};
  Session& session = context.session;
  require_lock(context,
               ficon_get_fcd_lock_status(session.handle(), vsan, 0, session.wait(), &record),
               "cannot read the lock of VSAN " + std::to_string(vsan));
  Holder holder{};
  std::memcpy(&holder, record.reserved0, sizeof holder);
  return holder;
}

void show_status(Context& context, std::uint32_t vsan) {
  const Holder holder = read_holder(context, vsan);
  const std::string name = requester_name(holder.requester);
  Json json{{"vsan", vsan}, {"held", holder.requester != 0}};
  std::string text = "the lock of VSAN " + std::to_string(vsan) + " is free";
  if (holder.requester != 0) {
    json["holder"] = name;
    json["seconds"] = holder.age.get();
    text = "the lock of VSAN " + std::to_string(vsan) + " is held by the " + name + " for " +
           std::to_string(holder.age.get()) + " s";
  }
  context.output.show(json, text);
}

volatile std::sig_atomic_t interrupted = 0;

void note_interrupt(int /*signal*/) {
  interrupted = 1;
}

/** The lock lives as long as its connection: holding it means staying here. */
void hold(std::uint32_t seconds) {
  using namespace std::chrono_literals;
  std::signal(SIGINT, note_interrupt);
  std::signal(SIGTERM, note_interrupt);
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  while (interrupted == 0 && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(50ms);
  }
}

void get_lock(Context& context, std::uint32_t vsan, std::uint32_t hold_seconds) {
  Session& session = context.session;
  const std::string number = std::to_string(vsan);
  require_lock(context,
               ficon_get_fcd_lock(session.handle(), vsan, session.requester(), session.wait()),
               "cannot take the lock of VSAN " + number);
  const std::string held = hold_seconds == 0 ? "taken, and given back at the end of this command"
                                             : "held for " + std::to_string(hold_seconds) + " s";
  context.output.show({{"vsan", vsan}, {"held", true}, {"seconds", hold_seconds}},
                      "the lock of VSAN " + number + " is " + held);
  hold(hold_seconds);
  ficon_free_fcd_lock(session.handle(), vsan, session.requester(), session.wait());
}

using LockFunction = std::int32_t (*)(mts_handle_t, std::uint32_t, std::uint32_t, std::uint32_t);

void change_lock(Context& context, LockFunction change, std::uint32_t vsan, const char* verb,
                 const char* done) {
  Session& session = context.session;
  const std::string lock = " the lock of VSAN " + std::to_string(vsan);
  require_lock(context, change(session.handle(), vsan, session.requester(), session.wait()),
               std::string("cannot ") + verb + lock);
  context.output.show({{"vsan", vsan}, {"done", done}}, lock.substr(1) + " is " + done);
}

}  // namespace

void register_lock(CLI::App& app, Context& context) {
  CLI::App& object = add_object(app, "lock", "The fcd lock of a VSAN: who may change it now");
  auto vsan = keep<std::string>();
  auto hold_seconds = keep<std::uint32_t>();
  const auto add = [&](const char* name, const char* help, std::function<void()> run) {
    CLI::App& action = add_action(object, name, help, std::move(run));
    action.add_option("VSAN", *vsan, "VSAN number, 1 to 4093")->required();
    return &action;
  };
  add("status", "Show who holds the lock and for how long",
      [&context, vsan] { show_status(context, parse_vsan(*vsan)); });
  add("get", "Take the lock, hold it and free it",
      [&context, vsan, hold_seconds] { get_lock(context, parse_vsan(*vsan), *hold_seconds); })
      ->add_option("--hold", *hold_seconds, "Keep it so long, or until Ctrl-C")
      ->type_name("SECONDS");
  add("free", "Free the lock if this connection holds it", [&context, vsan] {
    change_lock(context, ficon_free_fcd_lock, parse_vsan(*vsan), "free", "free");
  });
  add("reset", "Free the lock whoever holds it", [&context, vsan] {
    change_lock(context, ficon_reset_fcd_lock, parse_vsan(*vsan), "reset", "reset");
  });
}

}  // namespace ficon::ctl
