/** The feature manager's client: one feature, one question. */
#include <platform/feature_services.h>
#include <platform/mts.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "protocol/services.h"
#include "wire/address.h"
#include "wire/status.h"

using namespace ficon;

uint32_t fm_cmi_set_feature_wait(mts_handle_t handle, const char* feature, const char* /*word_a*/,
                                 const char* /*word_b*/, uint32_t arg5) {
  platform::EnableFeatureRequest request{};
  std::copy_n(feature, strnlen(feature, sizeof request.name.raw - 1), request.name.raw);
  const mts_send_opts_t send_options{{1, 1}};
  mts_msg_ref_t message{};
  if (mts_send(handle, wire::kFcdNode,
               static_cast<std::uint32_t>(platform::ServiceSap::kFeatureManager),
               static_cast<std::uint32_t>(platform::FeatureManagerOpcode::kEnableFeature), &request,
               sizeof request, &message, 0, &send_options) != 0) {
    return static_cast<std::uint32_t>(mts_errno_get(handle));
  }
  constexpr std::uint32_t kMillisecondsPerSecond = 1000;  // the last argument is in seconds
  const mts_recv_opts_t options{{1, 0, arg5 * kMillisecondsPerSecond, mts_rr_token_get(&message)}};
  mts_drop(handle, &message);
  mts_msg_ref_t reply{};
  while (mts_recv(handle, &reply, &options) != 0) {
    const std::int32_t error = mts_errno_get(handle);
    if (error != EINTR) return static_cast<std::uint32_t>(error);
  }
  const auto* answer = static_cast<const platform::EnableFeatureReply*>(mts_payload_get(&reply));
  const Status result = answer == nullptr ? status::kNoReply : answer->status.get();
  mts_drop(handle, &reply);
  return result;
}
