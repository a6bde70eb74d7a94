/** The message transport of the double. */
#include <platform/mts.h>

#include <cstring>

#include "double/format.h"
#include "double/message.h"

namespace ficon::test {
namespace {

constexpr std::uint32_t kLockOpcode = 7874;
constexpr std::size_t kLockOperationOffset = 4;
constexpr std::size_t kLockStatusOffset = 5;

Bytes copy_of(const void* payload, std::uint32_t length) {
  const auto* first = static_cast<const std::uint8_t*>(payload);
  return payload == nullptr ? Bytes{} : Bytes(first, first + length);
}

std::string option_words(const std::uint32_t* words, std::size_t count) {
  if (words == nullptr) return "none";
  std::size_t used = count;
  while (used > 1 && words[used - 1] == 0) --used;
  std::string text;
  for (std::size_t i = 0; i < used; ++i) {
    text += (i == 0 ? "" : ",") + std::to_string(words[i]);
  }
  return text;
}

}  // namespace

ScriptedPlatform::Message& ScriptedPlatform::create(mts_msg_ref_t* msg, bool request,
                                                    std::string what) {
  messages_.push_back(std::make_unique<Message>(++next_token_, request, std::move(what)));
  msg->impl = messages_.back().get();
  return *messages_.back();
}

ScriptedPlatform::Message* ScriptedPlatform::find(const mts_msg_ref_t* msg,
                                                  const char* function) const {
  for (const auto& message : messages_) {
    if (msg == nullptr || message.get() != msg->impl) continue;
    if (message->dropped)
      problem(std::string(function) + " after the drop of " + message->described());
    return message.get();
  }
  problem(std::string(function) + " of a message that the transport does not know");
  return nullptr;
}

void ScriptedPlatform::check_handle(mts_handle_t handle, const char* function) const {
  if (handle != reinterpret_cast<mts_handle_t>(const_cast<ScriptedPlatform*>(this))) {
    problem(std::string(function) + " with another handle");
  }
}

void ScriptedPlatform::send_request(mts_msg_ref_t* msg, const std::string& what, Bytes reply) {
  create(msg, true, what).reply = {{}, true, std::move(reply)};
}

void ScriptedPlatform::deliver(mts_msg_ref_t* msg, Bytes payload) {
  create(msg, false, "delivered").set_payload(payload);
}

mts_msg_ref_t* ScriptedPlatform::received(Bytes payload, std::size_t slack) {
  mts_msg_ref_t* msg = received_without_payload();
  payload.resize(payload.size() + slack);
  messages_.back()->set_payload(payload);
  return msg;
}

mts_msg_ref_t* ScriptedPlatform::received_without_payload() {
  mts_msg_ref_t* msg = &received_.emplace_back();
  create(msg, false, "received by the test").belongs_to_test = true;
  return msg;
}

std::int32_t ScriptedPlatform::send(mts_handle_t handle, std::uint32_t node, std::uint32_t sap,
                                    std::uint32_t opcode, const void* payload, std::uint32_t length,
                                    mts_msg_ref_t* msg, std::uint32_t flags,
                                    const mts_send_opts_t* opts) {
  check_handle(handle, "mts_send");
  const Bytes bytes = copy_of(payload, length);
  const std::string line =
      formatted("mts_send node=0x%x sap=%u opcode=%u length=%u options=%s", node, sap, opcode,
                length, option_words(opts == nullptr ? nullptr : opts->word, 19).c_str());
  note(line);
  sent_.emplace_back(opcode, bytes);
  if (flags != 0) problem("mts_send with flags");

  Expectation* expected = next_expectation(opcode);
  const bool fails = faulted(line);
  if (opcode == kLockOpcode) {
    note_lock_request(
        bytes, !fails && (expected != nullptr ? expected->result_ >= 0 : lock_.send_error == 0));
  }
  if (fails) return -1;
  if (expected != nullptr) return play_send(*expected, node, sap, bytes, msg, opts);
  if (opcode == kLockOpcode && lock_.scripted) {
    if (sap != 103 || node != 0xfe000000) problem("a lock request to another place: " + line);
    return play_lock(bytes, msg);
  }
  problem("not expected: " + line);
  error_ = kInjectedError;
  return -1;
}

/** The lock and what is expected by name share an opcode: what is expected by name comes first. */
Expectation* ScriptedPlatform::next_expectation(std::uint32_t opcode) {
  std::size_t i = played_;
  // after a fault the course is another one: requests may be left out
  while (fault_was_hit() && i < script_.size() && script_[i].opcode_ != opcode) ++i;
  if (i >= script_.size() || script_[i].opcode_ != opcode) return nullptr;
  played_ = i + 1;
  return &script_[i];
}

std::int32_t ScriptedPlatform::play_send(const Expectation& expected, std::uint32_t node,
                                         std::uint32_t sap, const Bytes& payload,
                                         mts_msg_ref_t* msg, const mts_send_opts_t* opts) {
  const std::string name = "opcode " + std::to_string(expected.opcode_);
  if (node != expected.node_ || sap != expected.sap_) {
    problem(formatted("%s to 0x%x/%u, expected 0x%x/%u", name.c_str(), node, sap, expected.node_,
                      expected.sap_));
  }
  const std::uint32_t wanted[19] = {expected.options_[0], expected.options_[1]};
  const std::string wanted_options = option_words(expected.has_options_ ? wanted : nullptr, 19);
  const std::string options = option_words(opts == nullptr ? nullptr : opts->word, 19);
  if (options != wanted_options) {
    problem(name + " with send options " + options + ", expected " + wanted_options);
  }
  if (expected.payload_) {
    const std::string found = expected.payload_->difference_to(payload);
    if (!found.empty()) problem(name + ": " + found);
  }
  if (expected.result_ != 0) error_ = expected.error_;
  if (expected.result_ < 0) return expected.result_;
  Message& request = create(msg, true, name);
  request.may_stay = expected.result_ != 0;  // a failure to some callers, a message to others
  request.reply = expected.reply_;
  if (expected.opcode_ == kLockOpcode) request.lock_get = payload.at(kLockOperationOffset) == 1;
  return expected.result_;
}

std::int32_t ScriptedPlatform::play_lock(const Bytes& payload, mts_msg_ref_t* msg) {
  if (lock_.send_error != 0) {
    error_ = lock_.send_error;
    return -1;
  }
  const std::uint8_t operation = payload.at(kLockOperationOffset);
  std::uint32_t answer = 0;
  if (operation != 0) {
    answer = lock_.answers.at(lock_.next);
    if (lock_.next + 1 < lock_.answers.size()) ++lock_.next;
  }
  Bytes reply = payload;
  const Bytes status = host32(answer);
  std::copy(status.begin(), status.end(), reply.begin() + kLockStatusOffset);
  Message& request = create(msg, true, "lock");
  request.lock_get = operation == 1;
  request.reply = {{}, true, reply};
  return 0;
}

void ScriptedPlatform::note_lock_request(const Bytes& payload, bool reaches_daemon) {
  if (payload.size() != 18) return problem("a lock request that is not 18 bytes long");
  const std::uint8_t operation = payload[kLockOperationOffset];
  if (operation == 1 && !reaches_daemon) lock_.unsure = true;
  if (operation != 0) return;
  int& held = lock_.held[read_host32(payload, 0)];
  if (held > 0) {
    --held;
  } else if (!lock_.unsure && !lock_.may_stay) {
    problem("the lock is freed and was not held");
  }
}

std::int32_t ScriptedPlatform::recv(mts_handle_t handle, mts_msg_ref_t* reply,
                                    const mts_recv_opts_t* opts) {
  check_handle(handle, "mts_recv");
  const std::string line = "mts_recv options=" + option_words(opts->word, 10);
  note(line);
  if (opts->word[0] != 1) problem("receive options that do not begin with 1: " + line);
  for (std::size_t i : {1u, 4u, 5u, 6u, 7u, 8u, 9u}) {
    if (opts->word[i] != 0) problem("receive options with an unknown word: " + line);
  }
  const auto waiting = std::find_if(messages_.begin(), messages_.end(), [&](const auto& message) {
    return message->request && message->token == opts->word[3];
  });
  if (waiting == messages_.end()) {
    problem("a receive for a token that was never given out: " + line);
    error_ = kInjectedError;
    return -1;
  }
  Message& request = **waiting;
  if (!request.dropped) problem("a receive before the drop of " + request.described());
  if (faulted(line)) return -1;
  if (!request.reply.errors.empty()) {
    error_ = request.reply.errors.front();
    request.reply.errors.pop_front();
    return -1;
  }
  if (!request.reply.arrives) {
    problem("no reply is scripted for " + request.described());
    error_ = kInjectedError;
    return -1;
  }
  request.reply.arrives = false;
  Message& message = create(reply, false, request.what);
  message.lock_get = request.lock_get;
  message.enabled_vsans = request.enabled_vsans;
  if (request.reply.payload) message.set_payload(*request.reply.payload);
  return 0;
}

std::int32_t ScriptedPlatform::drop(mts_handle_t handle, mts_msg_ref_t* msg) {
  check_handle(handle, "mts_drop");
  Message* message = find(msg, "mts_drop");
  note("mts_drop " + (message == nullptr ? "?" : message->described()));
  if (message == nullptr || message->dropped) return -1;
  if (message->belongs_to_test) problem("a parse function dropped its reply");
  message->drop();
  if (message->request || reply_drop_error_ == 0) return 0;
  error_ = reply_drop_error_;
  return -1;
}

void* ScriptedPlatform::payload(mts_msg_ref_t* msg) {
  Message* message = find(msg, "mts_payload_get");
  const std::string line = "mts_payload_get " + (message == nullptr ? "?" : message->described());
  note(line);
  if (message == nullptr || faulted(line)) return nullptr;
  if (message->lock_get && message->payload != nullptr) {
    std::uint32_t fields[2];  // VSAN, then status behind the operation byte
    std::memcpy(&fields[0], message->payload, 4);
    std::memcpy(&fields[1], message->payload + kLockStatusOffset, 4);
    if (fields[1] == 0 || fields[1] == 0x40890036) ++lock_.held[fields[0]];
  }
  return message->payload;
}

std::uint32_t ScriptedPlatform::token(mts_msg_ref_t* msg) {
  Message* message = find(msg, "mts_rr_token_get");
  note("mts_rr_token_get " + (message == nullptr ? "?" : message->described()));
  return message == nullptr ? 0 : message->token;
}

std::int32_t ScriptedPlatform::error(mts_handle_t handle) {
  check_handle(handle, "mts_errno_get");
  note("mts_errno_get " + std::to_string(error_));
  return error_;
}

std::uint32_t ScriptedPlatform::send_enabled_vsans(mts_handle_t handle, mts_msg_ref_t* msg) {
  check_handle(handle, "ficon_send_get_enabled_vsans");
  const std::string line = "ficon_send_get_enabled_vsans";
  note(line);
  if (!enabled_.scripted) problem("not expected: " + line);
  if (faulted(line)) return kInjected;
  if (enabled_.send_error != 0) return enabled_.send_error;
  Message& request = create(msg, true, "enabled VSANs");
  request.enabled_vsans = true;
  if (enabled_.recv_error != 0) {
    request.reply.errors = {enabled_.recv_error};
  } else {
    request.reply = {{}, true, Bytes{}};
  }
  return 0;
}

std::uint32_t ScriptedPlatform::parse_enabled_vsans(mts_msg_ref_t* reply, std::uint32_t** list) {
  const std::string line = "ficon_parse_get_enabled_vsans";
  note(line);
  Message* message = find(reply, "ficon_parse_get_enabled_vsans");
  if (message == nullptr || !message->enabled_vsans) problem("not the enabled VSANs: " + line);
  if (faulted(line)) return kInjected;
  if (enabled_.parse_error != 0) return enabled_.parse_error;
  const std::size_t count = enabled_.vsans.size();
  auto* words = static_cast<std::uint32_t*>(std::malloc((2 + count) * sizeof(std::uint32_t)));
  words[0] = enabled_.status;
  words[1] = static_cast<std::uint32_t>(enabled_.count.value_or(static_cast<std::int32_t>(count)));
  std::copy(enabled_.vsans.begin(), enabled_.vsans.end(), words + 2);
  *list = words;
  return 0;
}

}  // namespace ficon::test

using ficon::test::ScriptedPlatform;

int32_t mts_send(mts_handle_t handle, uint32_t node, uint32_t sap, uint32_t opcode,
                 const void* payload, uint32_t length, mts_msg_ref_t* msg, uint32_t flags,
                 const mts_send_opts_t* opts) {
  return ScriptedPlatform::require("mts_send")
      .send(handle, node, sap, opcode, payload, length, msg, flags, opts);
}
int32_t mts_recv(mts_handle_t handle, mts_msg_ref_t* reply, const mts_recv_opts_t* opts) {
  return ScriptedPlatform::require("mts_recv").recv(handle, reply, opts);
}
int32_t mts_drop(mts_handle_t handle, mts_msg_ref_t* msg) {
  return ScriptedPlatform::require("mts_drop").drop(handle, msg);
}
void* mts_payload_get(mts_msg_ref_t* msg) {
  return ScriptedPlatform::require("mts_payload_get").payload(msg);
}
uint32_t mts_rr_token_get(mts_msg_ref_t* msg) {
  return ScriptedPlatform::require("mts_rr_token_get").token(msg);
}
int32_t mts_errno_get(mts_handle_t handle) {
  return ScriptedPlatform::require("mts_errno_get").error(handle);
}
uint32_t ficon_send_get_enabled_vsans(mts_handle_t handle, mts_msg_ref_t* msg) {
  return ScriptedPlatform::require("ficon_send_get_enabled_vsans").send_enabled_vsans(handle, msg);
}
uint32_t ficon_parse_get_enabled_vsans(mts_msg_ref_t* reply, uint32_t** list) {
  return ScriptedPlatform::require("ficon_parse_get_enabled_vsans")
      .parse_enabled_vsans(reply, list);
}
