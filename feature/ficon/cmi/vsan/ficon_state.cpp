/** FICON as a whole: on or off for a VSAN, and the box status. */
#include <platform/diagnostics.h>
#include <platform/feature_services.h>

#include "core/fcd_lock.h"
#include "exchange/allocation.h"
#include "exchange/console.h"
#include "exchange/exchange.h"
#include "exchange/header.h"
#include "exchange/send.h"
#include "wire/box_status.h"
#include "wire/ficon_state.h"

using namespace ficon;

namespace {

constexpr std::uint32_t kFeatureWait = 3;

/** FICON on a VSAN needs the switch's feature; one that is on already is as good. */
Status enable_feature(const Caller& caller) {
  const Status result =
      fm_cmi_set_feature_wait(caller.handle, "ficon", caller.word_a, caller.word_b, kFeatureWait);
  if (result == 0 || result == status::kFeatureAlreadyEnabled) return status::kOk;
  console("ficon feature enable failed:%s\n", syserr2str(result));
  return result;
}

}  // namespace

uint32_t ficon_cmi_set_ficon_state_nonblock(uint32_t requester, mts_handle_t handle,
                                            const char* word_a, const char* word_b, uint32_t wait,
                                            uint32_t vsan, uint8_t state, mts_msg_ref_t* msg) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  auto request = request_header<wire::FiconStateRequest>(caller, wire::MessageType::kSet,
                                                         wire::Subtype::kVsan);
  request.vsan.set(vsan);
  request.state.set(state);
  request.requester.set(requester);
  return send_record(caller, wire::Opcode::kFiconState, request, msg);
}

uint32_t ficon_cmi_parse_set_ficon_state(mts_msg_ref_t* reply) {
  const auto* answer = static_cast<const wire::FiconStateRequest*>(mts_payload_get(reply));
  return answer == nullptr ? status::kNoReply : answer->status.get();
}

uint32_t ficon_cmi_set_ficon_state(uint32_t requester, mts_handle_t handle, const char* word_a,
                                   const char* word_b, uint32_t wait, uint32_t vsan,
                                   uint8_t state) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  if (state != 0) {
    if (const Status refused = enable_feature(caller)) return refused;
  } else if (check_ficon_enabled(handle, vsan, wait) == FiconCheck::kFcdUnreachable) {
    return status::kOk;  // without fcd there is nothing to disable
  }
  return locked(caller, vsan, [&] {
    return exchange(
        caller,
        [&](mts_msg_ref_t* request) {
          return ficon_cmi_set_ficon_state_nonblock(requester, handle, word_a, word_b, wait, vsan,
                                                    state, request);
        },
        [](Status failure) {
          console("%s(%d):ficon_cmi_set_ficon_state_nonblock failed:%d\n",
                  "ficon_cmi_set_ficon_state", __LINE__, static_cast<int>(failure));
        },
        ficon_cmi_parse_set_ficon_state);
  });
}

uint32_t ficon_cmi_get_box_status(uint32_t requester, mts_handle_t handle, const char* word_a,
                                  const char* word_b, uint32_t wait, mts_msg_ref_t* msg) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  const auto header =
      request_header<wire::PlatformHeader>(caller, wire::MessageType::kGet, wire::Subtype::kPlain);
  return send_record(caller, wire::Opcode::kBoxStatus, header, msg);
}

uint32_t ficon_cmi_parse_box_status(mts_msg_ref_t* reply, ficon_cmi_box_status_t** status) {
  *status = nullptr;
  const auto* head = static_cast<const wire::BoxStatusHead*>(mts_payload_get(reply));
  if (head == nullptr || head->status.get() != 0) return status::kNoReply;
  const std::size_t size =
      sizeof *head + head->group_count * wire::kBoxEntriesPerGroup * sizeof(wire::BoxStatusEntry);
  void* copy = allocate(TEVRAK_MEM_boxstatus, size, __LINE__);
  if (copy == nullptr) return status::kAllocationFailed;
  __builtin_memcpy(copy, head, size);
  *status = static_cast<ficon_cmi_box_status_t*>(copy);
  return status::kOk;
}
