/** The tool's conversation with the daemon: one handle and the leading parameters of every call. */
#pragma once

#include <ficon_cmi.h>

#include <string>
#include <utility>

#include "failure.h"
#include "wire/status.h"

namespace ficon::ctl {

struct SessionOptions {
  std::string endpoint;  // empty: the environment's, or the embedded default
  std::uint32_t requester = 1;
  std::uint32_t wait_ms = 10'000;
  bool verbose = false;
};

class Session {
 public:
  explicit Session(const SessionOptions& options) : options_(options) {}
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session();

  mts_handle_t handle();
  std::uint32_t requester() const { return options_.requester; }
  std::uint32_t wait() const { return options_.wait_ms; }
  static const char* word_a() { return "CTL"; }
  static const char* word_b() { return "ficonctl"; }

  /** Calls a function of the library with the leading parameters; its status as it stands. */
  template <class... Parameters, class... Arguments>
  std::uint32_t ask(std::uint32_t (*function)(std::uint32_t, mts_handle_t, const char*, const char*,
                                              std::uint32_t, Parameters...),
                    Arguments&&... arguments) {
    const std::uint32_t status = function(requester(), handle(), word_a(), word_b(), wait(),
                                          std::forward<Arguments>(arguments)...);
    return reason_of(status);
  }

  /** As `ask`, for what must succeed; throws a Failure that begins with `what` otherwise. */
  template <class Function, class... Arguments>
  void require(const std::string& what, Function function, Arguments&&... arguments) {
    if (const std::uint32_t status = ask(function, std::forward<Arguments>(arguments)...)) {
      throw failure(status, what);
    }
  }

  Failure failure(std::uint32_t status, const std::string& what) {
    return failure_of(reason_of(status), what, endpoint_name());
  }
  /**
   * The transport's last error number: what stands behind a send that gave -1. Never 0, so that a
   * failure stays one.
   */
  std::uint32_t transport_error();
  std::string endpoint_name() const;

 private:
  std::uint32_t reason_of(std::uint32_t status) {
    return status == status::kSendFailed ? transport_error() : status;
  }

  const SessionOptions& options_;
  mts_handle_t handle_ = nullptr;
};

/** Drops a message at the end of its block. */
class MessageDrop {
 public:
  MessageDrop(mts_handle_t handle, mts_msg_ref_t* message) : handle_(handle), message_(message) {}
  MessageDrop(const MessageDrop&) = delete;
  MessageDrop& operator=(const MessageDrop&) = delete;
  ~MessageDrop();

 private:
  mts_handle_t handle_;
  mts_msg_ref_t* message_;
};

/**
 * For the requests that only have a sender: sends with `send(&message)`, drops the request and
 * receives. The caller drops the reply.
 */
mts_msg_ref_t receive_reply(Session& session, mts_msg_ref_t* request, const std::string& what);

}  // namespace ficon::ctl
