#include "session.h"

#include <platform/mts.h>

#include <cstdlib>

#include "exchange_trace.h"
#include "transport/endpoint.h"
#include "wire/status.h"

namespace ficon::ctl {

Session::~Session() {
  if (handle_ != nullptr) ficon_mts_close(handle_);
}

std::string Session::endpoint_name() const {
  if (!options_.endpoint.empty()) return options_.endpoint;
  const char* chosen = std::getenv("FICON_ENDPOINT");
  return chosen != nullptr && *chosen != '\0' ? chosen : "the embedded emulator";
}

mts_handle_t Session::handle() {
  if (handle_ != nullptr) return handle_;
  char error[512];
  const char* endpoint = options_.endpoint.empty() ? nullptr : options_.endpoint.c_str();
  handle_ = ficon_mts_open(endpoint, error, sizeof error);
  if (handle_ == nullptr) {
    throw Failure(0, "no-endpoint", error,
                  "put that right, or choose another endpoint with --endpoint");
  }
  if (options_.verbose) ficon_mts_observe(handle_, print_exchange, nullptr);
  return handle_;
}

std::uint32_t Session::transport_error() {
  const auto error = static_cast<std::uint32_t>(mts_errno_get(handle()));
  return error != 0 ? error : status::kSendFailed;
}

MessageDrop::~MessageDrop() {
  mts_drop(handle_, message_);
}

mts_msg_ref_t receive_reply(Session& session, mts_msg_ref_t* request, const std::string& what) {
  const mts_recv_opts_t options{{1, 0, session.wait(), mts_rr_token_get(request)}};
  mts_drop(session.handle(), request);
  mts_msg_ref_t reply{};
  if (const std::uint32_t status = ficon_cmi_mts_recv(session.handle(), &reply, &options)) {
    throw session.failure(status, what);
  }
  return reply;
}

}  // namespace ficon::ctl
