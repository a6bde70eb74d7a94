#include <platform/diagnostics.h>
#include <platform/ficon_base.h>

#include "core/fcd_lock.h"
#include "exchange/allocation.h"
#include "exchange/console.h"
#include "exchange/exchange.h"
#include "exchange/send.h"

namespace ficon {
namespace {

FiconCheck judge_send_failure(Status error) {
  if (error == kFcdGone) return FiconCheck::kFcdUnreachable;
  console("unable to obtain the enabled vsans info:%s\n", syserr2str(error));
  return FiconCheck::kNotEnabledOrError;
}

FiconCheck search(std::uint32_t* words, std::uint32_t vsan) {
  const EnabledVsans enabled(words);
  if (enabled.status() != 0) {
    console("err in the enabled vsans info:%s\n", syserr2str(enabled.status()));
    return FiconCheck::kNotEnabledOrError;
  }
  for (std::int32_t i = 0; i < enabled.count(); ++i) {
    if (enabled.vsan(i) == vsan) return FiconCheck::kEnabled;
  }
  return FiconCheck::kNotEnabledOrError;
}

}  // namespace

FiconCheck check_ficon_enabled(mts_handle_t handle, std::uint32_t vsan, std::uint32_t wait) {
  const Caller caller{0, handle, nullptr, nullptr, wait};
  FiconCheck result = FiconCheck::kNoReply;
  Status unreadable = status::kOk;
  exchange(
      caller, [&](mts_msg_ref_t* request) { return ficon_send_get_enabled_vsans(handle, request); },
      [&](Status error) { result = judge_send_failure(error); },
      [&](mts_msg_ref_t* reply) {
        std::uint32_t* words = nullptr;
        unreadable = ficon_parse_get_enabled_vsans(reply, &words);
        result = unreadable == status::kOk ? search(words, vsan) : FiconCheck::kNotEnabledOrError;
        return status::kOk;
      });
  if (unreadable != status::kOk) {  // told after the reply is dropped, unlike the list's status
    console("err in obtaining the enabled vsans info:%s\n", syserr2str(unreadable));
  }
  return result;
}

}  // namespace ficon
