#include "core/fcd_lock.h"

#include <platform/mts.h>

#include <ctime>

#include "exchange/console.h"
#include "exchange/exchange.h"
#include "exchange/send.h"
#include "wire/fcd_lock.h"

namespace ficon {
namespace {

using wire::LockOperation;

constexpr int kBusyRetries = 3;
constexpr timespec kBusyPause{0, 300'000'000};

constexpr std::int32_t kGranted = 0;
constexpr std::int32_t kFailed = -1;
constexpr std::int32_t kUnreachable = -2;

/** How far one lock request came, and what stopped it: the transport's number or a status. */
enum class Reached : std::uint8_t { kSend, kReceive, kParse, kAnswer };

struct LockAnswer {
  Reached reached;
  Status error;
};

wire::FcdLockRecord lock_request(LockOperation operation, std::uint32_t vsan,
                                 std::uint32_t requester) {
  wire::FcdLockRecord record{};
  record.vsan.set(vsan);
  record.operation = static_cast<std::uint8_t>(operation);
  record.requester.set(requester);
  return record;
}

/** One request to the lock's own SAP; the answer goes into the caller's record. */
LockAnswer ask(mts_handle_t handle, std::uint32_t wait, const wire::FcdLockRecord& request,
               ficon_fcd_lock_rec_t* record) {
  const mts_send_opts_t options = send_options(SendOptions::kTwoWords);
  mts_msg_ref_t message{};
  if (mts_send(handle, wire::kFcdNode, wire::kLockSap,
               static_cast<std::uint32_t>(wire::Opcode::kLock), &request, sizeof request, &message,
               0, &options) < 0) {
    return {Reached::kSend, static_cast<Status>(mts_errno_get(handle))};
  }
  mts_msg_ref_t reply{};
  if (const Status failure = await_reply({0, handle, nullptr, nullptr, wait}, &message, &reply)) {
    return {Reached::kReceive, failure};
  }
  const Status failure = ficon_parse_allegiance_msg(&reply, record);
  mts_drop(handle, &reply);
  return {failure != 0 ? Reached::kParse : Reached::kAnswer, failure};
}

void report_send_failure(const char* function, Status error) {
  console("%s:mts_send failed (errno 0x%x)\n", function, error);
}

bool is_granted(Status answer) {
  return answer == 0 || answer == status::kLockAlreadyHeld;
}

/** The operator and the management agent wait for a busy lock; anyone else is told at once. */
bool waits_for_lock(std::uint32_t requester) {
  return requester == 1 || requester == 2;
}

}  // namespace
}  // namespace ficon

using namespace ficon;

int32_t ficon_get_fcd_lock(mts_handle_t handle, uint32_t vsan, uint32_t requester, uint32_t wait) {
  for (int retries = 0;; ++retries) {
    ficon_fcd_lock_rec_t record{};
    const LockAnswer answer =
        ask(handle, wait, lock_request(LockOperation::kGet, vsan, requester), &record);
    switch (answer.reached) {
      case Reached::kSend:
        if (answer.error == kFcdGone) return kUnreachable;
        report_send_failure("ficon_get_fcd_lock", answer.error);
        return kFailed;
      case Reached::kReceive:
        return kFailed;
      case Reached::kParse:
        console("%s:failure response from fcd %x\n", "ficon_get_fcd_lock", answer.error);
        return kFailed;
      case Reached::kAnswer:
        break;
    }
    if (is_granted(record.status)) return kGranted;
    const bool busy = record.status == status::kLockBusy;
    if (!busy || !waits_for_lock(requester) || retries == kBusyRetries) return kFailed;
    nanosleep(&kBusyPause, nullptr);
  }
}

int32_t ficon_free_fcd_lock(mts_handle_t handle, uint32_t vsan, uint32_t requester, uint32_t wait) {
  ficon_fcd_lock_rec_t record{};  // its status is not examined
  const LockAnswer answer =
      ask(handle, wait, lock_request(LockOperation::kFree, vsan, requester), &record);
  if (answer.reached == Reached::kAnswer) return 0;
  if (answer.reached == Reached::kSend) {
    if (answer.error == kFcdGone) return 0;  // the lock went with fcd
    report_send_failure("ficon_free_fcd_lock", answer.error);
  }
  return kFailed;
}

int32_t ficon_reset_fcd_lock(mts_handle_t handle, uint32_t vsan, uint32_t requester,
                             uint32_t wait) {
  if (check_ficon_enabled(handle, vsan, wait) != FiconCheck::kEnabled) {
    return static_cast<int32_t>(status::kNotEnabled);
  }
  ficon_fcd_lock_rec_t record{};
  const LockAnswer answer =
      ask(handle, wait, lock_request(LockOperation::kReset, vsan, requester), &record);
  switch (answer.reached) {
    case Reached::kSend:
      if (answer.error == kFcdGone) return 0;
      report_send_failure("ficon_reset_fcd_lock", answer.error);
      return kFailed;
    case Reached::kReceive:
      return static_cast<int32_t>(answer.error);
    case Reached::kParse:
      return static_cast<int32_t>(status::kLockResetFailed);
    case Reached::kAnswer:
      break;
  }
  return is_granted(record.status) ? 0 : static_cast<int32_t>(status::kLockResetFailed);
}

int32_t ficon_get_fcd_lock_status(mts_handle_t handle, uint32_t vsan, uint32_t /*unused*/,
                                  uint32_t wait, ficon_fcd_lock_rec_t* record) {
  if (check_ficon_enabled(handle, vsan, wait) != FiconCheck::kEnabled) {
    return static_cast<int32_t>(status::kNotEnabled);
  }
  constexpr std::uint32_t kNoRequester = 0;
  const LockAnswer answer =
      ask(handle, wait, lock_request(LockOperation::kStatus, vsan, kNoRequester), record);
  switch (answer.reached) {
    case Reached::kSend:
      report_send_failure("ficon_get_fcd_lock_status", answer.error);  // error 32 too: intended
      return kFailed;
    case Reached::kReceive:
      return kFailed;
    case Reached::kParse:
      // "responsed", and the code in decimal, unlike the get function's line: intended
      console("%s:failure responsed from fcd %d\n", "ficon_get_fcd_lock_status",
              static_cast<int>(answer.error));
      return kFailed;
    case Reached::kAnswer:
      break;
  }
  return 0;
}

uint32_t ficon_parse_allegiance_msg(mts_msg_ref_t* reply, ficon_fcd_lock_rec_t* record) {
  const void* payload = mts_payload_get(reply);
  if (payload == nullptr) return status::kNoReply;
  __builtin_memcpy(record, payload, sizeof *record);
  return status::kOk;
}
