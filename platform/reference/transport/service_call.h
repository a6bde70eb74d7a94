/** One question to a service of the platform, and its answer. */
#pragma once

#include <platform/mts.h>

#include <cerrno>
#include <span>

#include "protocol/services.h"
#include "wire/address.h"

namespace ficon::platform {

/** 0 with the reply, to be dropped, or the transport's error number. `wait_ms` 0 waits forever. */
template <class Opcode>
std::uint32_t call_service(mts_handle_t handle, ServiceSap sap, Opcode opcode,
                           std::span<const std::uint8_t> request, std::uint32_t wait_ms,
                           mts_msg_ref_t* reply) {
  const mts_send_opts_t send_options{{1, 1}};
  mts_msg_ref_t message{};
  if (mts_send(handle, wire::kFcdNode, static_cast<std::uint32_t>(sap),
               static_cast<std::uint32_t>(opcode), request.data(),
               static_cast<std::uint32_t>(request.size()), &message, 0, &send_options) != 0) {
    return static_cast<std::uint32_t>(mts_errno_get(handle));
  }
  const mts_recv_opts_t options{{1, 0, wait_ms, mts_rr_token_get(&message)}};
  mts_drop(handle, &message);
  while (mts_recv(handle, reply, &options) != 0) {
    const std::int32_t error = mts_errno_get(handle);
    if (error != EINTR) return static_cast<std::uint32_t>(error);
  }
  return 0;
}

}  // namespace ficon::platform
