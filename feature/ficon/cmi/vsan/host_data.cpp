/** Host data: what the host side keeps on the switch, read whole and written in pieces. */
#include <platform/mts.h>

#include "core/fcd_lock.h"
#include "exchange/allocation.h"
#include "exchange/console.h"
#include "exchange/exchange.h"
#include "exchange/send.h"
#include "wire/host_data.h"

using namespace ficon;

namespace {

constexpr std::uint32_t kNoVsan = 4094;

/** Both failures name the get function, the set form's too: intended. */
void report_send_failure(const char* function, int line, Status failure) {
  console("%s(%d): ficon_cmi_get_host_data_nonblock failed:%d\n", function, line,
          static_cast<int>(failure));
}

}  // namespace

uint32_t ficon_cmi_send_get_host_data_nonblock(uint32_t requester, mts_handle_t handle,
                                               const char* word_a, const char* word_b,
                                               uint32_t wait, uint32_t vsan, mts_msg_ref_t* msg) {
  wire::GetHostDataRequest request{};
  request.vsan.set(vsan);
  return send_record({requester, handle, word_a, word_b, wait}, wire::Opcode::kGetHostData, request,
                     msg);
}

uint32_t ficon_cmi_parse_get_host_data(mts_msg_ref_t* reply, uint32_t* vsan, uint8_t* data,
                                       uint32_t* length) {
  *length = 0;
  const auto* answer = static_cast<const wire::GetHostDataReply*>(mts_payload_get(reply));
  if (answer == nullptr) return status::kNoReply;
  if (answer->status.get() != 0) return answer->status.get();
  if (answer->length.get() > wire::kHostDataSize) return status::kInvalidPayload;
  *vsan = answer->vsan.get();
  *length = answer->length.get();
  __builtin_memcpy(data, answer + 1, *length);
  return status::kOk;
}

uint32_t ficon_cmi_get_host_data(uint32_t requester, mts_handle_t handle, const char* word_a,
                                 const char* word_b, uint32_t wait, uint32_t vsan, uint8_t* data,
                                 uint32_t* length) {
  return exchange(
      {requester, handle, word_a, word_b, wait},
      [&](mts_msg_ref_t* request) {
        return ficon_cmi_send_get_host_data_nonblock(requester, handle, word_a, word_b, wait, vsan,
                                                     request);
      },
      [](Status failure) { report_send_failure("ficon_cmi_get_host_data", 6329, failure); },
      [&](mts_msg_ref_t* reply) {
        uint32_t reply_vsan = 0;
        return ficon_cmi_parse_get_host_data(reply, &reply_vsan, data, length);
      });
}

uint32_t ficon_cmi_send_set_host_data_nonblock(uint32_t requester, mts_handle_t handle,
                                               const char* word_a, const char* word_b,
                                               uint32_t wait, uint32_t vsan, uint32_t offset,
                                               const uint8_t* data, uint32_t length,
                                               mts_msg_ref_t* msg) {
  if (std::uint64_t{offset} + length > wire::kHostDataSize) return status::kInvalidPayload;
  const Caller caller{requester, handle, word_a, word_b, wait};
  const std::uint32_t size = sizeof(wire::SetHostDataRequest) + length;
  // Tracked memory, released with plain `free`: intended.
  const Malloced<wire::SetHostDataRequest> request(allocate(TEVRAK_MEM_sethostdata, size, 6479));
  if (!request) return status::kAllocationFailed;
  request->vsan.set(vsan);
  request->offset.set(offset);
  request->length.set(length);
  if (length != 0) __builtin_memcpy(request.get() + 1, data, length);
  return static_cast<Status>(
      send_to_fcd(caller.handle, wire::Opcode::kSetHostData, request.get(), size, msg));
}

uint32_t ficon_cmi_parse_set_host_data(mts_msg_ref_t* reply, uint32_t* vsan) {
  *vsan = kNoVsan;
  const auto* answer = static_cast<const wire::SetHostDataReply*>(mts_payload_get(reply));
  if (answer == nullptr) return status::kNoReply;
  if (answer->status.get() != 0) return answer->status.get();
  *vsan = answer->vsan.get();
  return status::kOk;
}

uint32_t ficon_cmi_set_host_data(uint32_t requester, mts_handle_t handle, const char* word_a,
                                 const char* word_b, uint32_t wait, uint32_t vsan, uint32_t offset,
                                 const uint8_t* data, uint32_t length) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  return locked(caller, vsan, [&] {
    return exchange(
        caller,
        [&](mts_msg_ref_t* request) {
          return ficon_cmi_send_set_host_data_nonblock(requester, handle, word_a, word_b, wait,
                                                       vsan, offset, data, length, request);
        },
        [](Status failure) { report_send_failure("ficon_cmi_set_host_data", 6429, failure); },
        [](mts_msg_ref_t* reply) {
          uint32_t reply_vsan = 0;
          return ficon_cmi_parse_set_host_data(reply, &reply_vsan);
        });
  });
}
