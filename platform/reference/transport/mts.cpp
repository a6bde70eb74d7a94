/** The message transport over one socket a handle. */
#include <platform/mts.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "transport/connection.h"
#include "transport/embedded.h"
#include "transport/endpoint.h"
#include "transport/open.h"

using namespace ficon::platform;
using Clock = std::chrono::steady_clock;

namespace {

/** A request whose reply may still come and is still wanted. */
struct Outstanding {
  std::uint32_t token;
  std::uint32_t generation;  // of the connection that it went out on
  Clock::time_point sent;    // when somebody observes
  std::uint32_t node, sap, opcode;
};

/** Requests that nobody awaits a reply to leave their tokens behind; the oldest are forgotten. */
constexpr std::size_t kMaxOutstanding = 1024;

constexpr std::uint32_t kTokenWord = 3;
constexpr std::uint32_t kWaitWord = 2;

}  // namespace

struct mts_handle {
  mts_handle(std::string endpoint, int fd) : connection(std::move(endpoint), fd) {}

  std::int32_t fail(TransportError why) {
    error = why;
    return -1;
  }
  std::uint32_t next_token() {
    if (++last_token == 0) ++last_token;
    return last_token;
  }
  auto find(std::uint32_t token) {
    return std::ranges::find(outstanding, token, &Outstanding::token);
  }
  void observe(const ficon_mts_event_t& event) const {
    if (observer != nullptr) observer(&event, observer_context);
  }

  std::int32_t send(const FrameHeader& header, const void* payload, std::uint32_t length,
                    mts_msg_ref_t* msg);
  std::int32_t receive(std::uint32_t token, std::uint32_t wait_ms, mts_msg_ref_t* reply);
  TransportError receive_message(std::uint32_t wait_ms, Message*& message);
  TransportError check_awaited(std::uint32_t token);
  void keep(Message* message);
  Message* take_kept(std::uint32_t token);
  void give_up(std::uint32_t token);
  std::int32_t fail_receive(std::uint32_t token, TransportError why);
  void observe_reply(std::uint32_t token, TransportError error, Message* message);
  void deliver(Message* message, mts_msg_ref_t* reply);

  MessagePool pool;
  Connection connection;
  Message* incoming = nullptr;  // whose frames are coming in
  std::vector<Message*> kept;   // replies that came before they were asked for
  std::vector<Outstanding> outstanding;
  std::uint32_t last_token = 0;
  TransportError error = TransportError::kNone;
  ficon_mts_observer_t observer = nullptr;
  void* observer_context = nullptr;
};

std::int32_t mts_handle::send(const FrameHeader& header, const void* payload, std::uint32_t length,
                              mts_msg_ref_t* msg) {
  const TransportError failure = connection.send(header, payload, length);
  observe({0, header.node.get(), header.sap.get(), header.opcode.get(), header.token.get(), length,
           static_cast<std::int32_t>(failure), 0, payload});
  if (failure != TransportError::kNone) return fail(failure);
  if (outstanding.size() == kMaxOutstanding) give_up(outstanding.front().token);
  outstanding.push_back({header.token.get(), connection.generation(),
                         observer == nullptr ? Clock::time_point() : Clock::now(),
                         header.node.get(), header.sap.get(), header.opcode.get()});
  Message* message = pool.take();
  message->token = header.token.get();
  msg->impl = message;
  return 0;
}

Message* mts_handle::take_kept(std::uint32_t token) {
  const auto found = std::ranges::find(kept, token, &Message::token);
  if (found == kept.end()) return nullptr;
  Message* message = *found;
  kept.erase(found);
  return message;
}

/** For its receiver, or nobody: late replies, and second ones, end here. */
void mts_handle::keep(Message* message) {
  const bool wanted = find(message->token) != outstanding.end();
  const bool second = std::ranges::find(kept, message->token, &Message::token) != kept.end();
  if (wanted && !second) {
    kept.push_back(message);
  } else {
    pool.give_back(message);
  }
}

/** Nobody waits for this token any more: a late reply is dropped when it comes. */
void mts_handle::give_up(std::uint32_t token) {
  if (Message* message = take_kept(token)) pool.give_back(message);
  std::erase_if(outstanding, [&](const Outstanding& request) { return request.token == token; });
}

/** Without this check a receive could wait for ever for what cannot come. */
TransportError mts_handle::check_awaited(std::uint32_t token) {
  const auto request = find(token);
  if (request == outstanding.end()) return TransportError::kInvalid;
  return request->generation == connection.generation() ? TransportError::kNone
                                                        : TransportError::kGone;
}

void mts_handle::observe_reply(std::uint32_t token, TransportError error_number, Message* message) {
  const auto request = find(token);
  if (observer == nullptr || request == outstanding.end()) return;
  const auto elapsed =
      std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - request->sent);
  const std::size_t length = message == nullptr ? 0 : message->length();
  observe({1, request->node, request->sap, request->opcode, token,
           static_cast<std::uint32_t>(length), static_cast<std::int32_t>(error_number),
           static_cast<std::uint64_t>(elapsed.count()),
           message == nullptr ? nullptr : message->payload()});
}

std::int32_t mts_handle::fail_receive(std::uint32_t token, TransportError why) {
  observe_reply(token, why, nullptr);
  if (why != TransportError::kInterrupted) give_up(token);
  return fail(why);
}

void mts_handle::deliver(Message* message, mts_msg_ref_t* reply) {
  reply->impl = message;
  observe_reply(message->token, TransportError::kNone, message);
  give_up(message->token);
}

/** The next whole message, or null with kNone while its frames are still coming in. */
TransportError mts_handle::receive_message(std::uint32_t wait_ms, Message*& message) {
  message = nullptr;
  if (incoming == nullptr) incoming = pool.take();
  FrameHeader header{};
  bool complete = false;
  const TransportError failure = connection.receive(*incoming, wait_ms, header, complete);
  if (failure != TransportError::kNone || !complete) return failure;
  incoming->token = header.token.get();
  message = incoming;
  incoming = nullptr;
  return TransportError::kNone;
}

std::int32_t mts_handle::receive(std::uint32_t token, std::uint32_t wait_ms, mts_msg_ref_t* reply) {
  if (Message* early = take_kept(token)) {
    deliver(early, reply);
    return 0;
  }
  if (const TransportError refused = check_awaited(token); refused != TransportError::kNone) {
    return fail_receive(token, refused);
  }
  const Clock::time_point start = wait_ms == 0 ? Clock::time_point() : Clock::now();
  std::uint32_t left_ms = wait_ms;
  for (;;) {
    Message* message = nullptr;
    const TransportError failure = receive_message(left_ms, message);
    if (failure != TransportError::kNone) return fail_receive(token, failure);
    if (message != nullptr && message->token == token) {
      deliver(message, reply);
      return 0;
    }
    if (message != nullptr) keep(message);
    if (wait_ms == 0) continue;
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    if (passed.count() >= wait_ms) return fail_receive(token, TransportError::kTimedOut);
    left_ms = wait_ms - static_cast<std::uint32_t>(passed.count());
  }
}

int32_t mts_send(mts_handle_t handle, uint32_t node, uint32_t sap, uint32_t opcode,
                 const void* payload, uint32_t length, mts_msg_ref_t* msg, uint32_t /*flags*/,
                 const mts_send_opts_t* /*opts*/) {
  if (handle == nullptr) return -1;
  if (length > kMaxMessage) {
    std::fprintf(stderr, "mts: a message of %u bytes was refused; the limit is %u\n", length,
                 kMaxMessage);
    return handle->fail(TransportError::kTooLong);
  }
  if (payload == nullptr && length != 0) return handle->fail(TransportError::kInvalid);
  FrameHeader header{};
  header.magic.set(kFrameMagic);
  header.version.set(kFrameVersion);
  header.kind.set(static_cast<std::uint16_t>(FrameKind::kRequest));
  header.token.set(handle->next_token());
  header.node.set(node);
  header.sap.set(sap);
  header.opcode.set(opcode);
  header.total.set(length);
  return handle->send(header, payload, length, msg);
}

int32_t mts_recv(mts_handle_t handle, mts_msg_ref_t* reply, const mts_recv_opts_t* opts) {
  if (handle == nullptr) return -1;
  if (opts == nullptr) return handle->fail(TransportError::kInvalid);
  return handle->receive(opts->word[kTokenWord], opts->word[kWaitWord], reply);
}

int32_t mts_drop(mts_handle_t handle, mts_msg_ref_t* msg) {
  if (handle == nullptr) return -1;
  auto* message = static_cast<Message*>(msg->impl);
  if (message == nullptr || !handle->pool.owns(message)) {
    return handle->fail(TransportError::kInvalid);
  }
  handle->pool.give_back(message);
  msg->impl = nullptr;
  return 0;
}

void* mts_payload_get(mts_msg_ref_t* msg) {
  auto* message = static_cast<Message*>(msg->impl);
  return message == nullptr ? nullptr : message->payload();
}

uint32_t mts_rr_token_get(mts_msg_ref_t* msg) {
  const auto* message = static_cast<const Message*>(msg->impl);
  return message == nullptr ? 0 : message->token;
}

int32_t mts_errno_get(mts_handle_t handle) {
  const TransportError error = handle == nullptr ? TransportError::kBadHandle : handle->error;
  return static_cast<int32_t>(error);
}

void ficon_mts_observe(mts_handle_t handle, ficon_mts_observer_t observer, void* context) {
  handle->observer = observer;
  handle->observer_context = context;
}

mts_handle_t ficon::platform::open_handle(const std::string& endpoint, int fd) {
  return new mts_handle(endpoint, fd);
}

void ficon_mts_close(mts_handle_t handle) {
  delete handle;
}
