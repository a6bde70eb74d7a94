/** The envelope: what every reply passes through on its way in. */
#include <ficon_cmi.h>
#include <platform/mts.h>

#include "wire/status.h"

namespace {

constexpr std::int32_t kInterrupted = 4;
constexpr std::int32_t kTimerExpired = 62;

}  // namespace

uint32_t ficon_cmi_mts_recv(mts_handle_t handle, mts_msg_ref_t* reply,
                            const mts_recv_opts_t* opts) {
  while (mts_recv(handle, reply, opts) != 0) {
    const std::int32_t error = mts_errno_get(handle);
    if (error == kInterrupted) continue;  // as often as it takes
    return error == kTimerExpired ? ficon::status::kTimedOut : ficon::status::kReceiveFailed;
  }
  return ficon::status::kOk;
}
