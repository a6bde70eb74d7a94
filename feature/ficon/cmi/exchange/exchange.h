/** The road of one request: send, token, drop, receive, parse, drop. */
#pragma once

#include <platform/mts.h>

#include "exchange/caller.h"
#include "exchange/console.h"
#include "wire/status.h"

namespace ficon {

/**
 * What became of a send. Most senders fail with a nonzero status; those that report the
 * transport's error number can fail with 0, hence the flag.
 */
struct Sent {
  Status status;
  bool failed;

  Sent(Status result) : status(result), failed(result != 0) {}  // a status is an outcome
  static Sent failure(Status error_number) {
    Sent sent{error_number};
    sent.failed = true;
    return sent;
  }
};

/**
 * For the senders that report the transport's error number: only a negative result is a failure,
 * printed with the sender's name and line.
 */
inline Sent sent_or_errno(mts_handle_t handle, std::int32_t result, const char* function,
                          int line) {
  if (result >= 0) return status::kOk;
  const std::int32_t error = mts_errno_get(handle);
  console("%s(%d):mts_send failed (errno 0x%x)\n", function, line, static_cast<unsigned>(error));
  return Sent::failure(static_cast<Status>(error));
}

/** For blocking forms that print nothing when their sender fails. */
inline void report_nothing(Status) {}

/** Drops a request that was sent; what to receive its reply with. */
inline mts_recv_opts_t drop_request(const Caller& caller, mts_msg_ref_t* request) {
  mts_recv_opts_t options{};
  options.word[0] = 1;
  options.word[2] = caller.wait;
  options.word[3] = mts_rr_token_get(request);
  mts_drop(caller.handle, request);
  return options;
}

/** Drops the request, then waits for the reply to it. */
inline Status await_reply(const Caller& caller, mts_msg_ref_t* request, mts_msg_ref_t* reply) {
  const mts_recv_opts_t options = drop_request(caller, request);
  return ficon_cmi_mts_recv(caller.handle, reply, &options);
}

/** For the requests that fcd does not answer: 0 says that the request left, and no more. */
template <class Send>
Status send_only(const Caller& caller, Send send) {
  mts_msg_ref_t request{};
  const Sent sent = send(&request);
  if (!sent.failed) drop_request(caller, &request);
  return sent.status;
}

/**
 * The blocking pattern. `send(&request)` gives a Sent or a status, `report(status)` says that it
 * failed, `parse(&reply)` gives the result. A failed send or receive leaves nothing to drop; a
 * failed parse still drops the reply.
 */
template <class Send, class Report, class Parse>
Status exchange(const Caller& caller, Send send, Report report, Parse parse) {
  mts_msg_ref_t request{};
  const Sent sent = send(&request);
  if (sent.failed) {
    report(sent.status);
    return sent.status;
  }
  mts_msg_ref_t reply{};
  if (const Status failure = await_reply(caller, &request, &reply)) return failure;
  const Status result = parse(&reply);
  mts_drop(caller.handle, &reply);
  return result;
}

}  // namespace ficon
