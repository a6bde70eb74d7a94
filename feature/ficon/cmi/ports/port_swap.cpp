/** Two ports exchange their FICON identities. */
#include "wire/port_swap.h"
#include "exchange/allocation.h"
#include "exchange/exchange.h"
#include "exchange/header.h"
#include "exchange/send.h"

using namespace ficon;

namespace {

constexpr int kAllocationLine = 4835;  // fixed in the interface

Status send_swap(const Caller& caller, wire::Opcode opcode, std::uint32_t first,
                 std::uint32_t second, mts_msg_ref_t* message) {
  if (first == second) return status::kSamePort;
  auto request =
      request_header<wire::PortSwapRequest>(caller, wire::MessageType::kSet, wire::Subtype::kVsan);
  request.first.set(first);
  request.second.set(second);
  return send_record(caller, opcode, request, message);
}

Status swap(const Caller& caller, wire::Opcode opcode, std::uint32_t first, std::uint32_t second,
            ficon_cmi_swap_reply_t** record) {
  return exchange(
      caller,
      [&](mts_msg_ref_t* request) { return send_swap(caller, opcode, first, second, request); },
      report_nothing,
      [&](mts_msg_ref_t* reply) { return ficon_cmi_parse_swap_port(reply, record); });
}

}  // namespace

uint32_t ficon_cmi_swap_port_nonblock(uint32_t requester, mts_handle_t handle, const char* word_a,
                                      const char* word_b, uint32_t wait, uint32_t first,
                                      uint32_t second, mts_msg_ref_t* msg) {
  return send_swap({requester, handle, word_a, word_b, wait}, wire::Opcode::kSwapPort, first,
                   second, msg);
}

uint32_t ficon_cmi_swap_intf_nonblock(uint32_t requester, mts_handle_t handle, const char* word_a,
                                      const char* word_b, uint32_t wait, if_index_t first,
                                      if_index_t second, mts_msg_ref_t* msg) {
  return send_swap({requester, handle, word_a, word_b, wait}, wire::Opcode::kSwapInterface, first,
                   second, msg);
}

uint32_t ficon_cmi_parse_swap_port(mts_msg_ref_t* reply, ficon_cmi_swap_reply_t** record) {
  *record = nullptr;
  const auto* head = static_cast<const wire::PortSwapReply*>(mts_payload_get(reply));
  if (head == nullptr) return status::kNoReply;
  if (const Status refusal = head->status.get()) return refusal;
  const std::uint32_t count = head->count.get();
  if (count > wire::kMaxSwapOperations) return status::kInvalidPayload;
  const std::size_t size = sizeof *head + count * sizeof(wire::PortSwapOperation);
  void* copy = allocate(TEVRAK_MEM_ifswapops, size, kAllocationLine);
  if (copy == nullptr) return status::kAllocationFailed;
  __builtin_memcpy(copy, head, size);
  *record = static_cast<ficon_cmi_swap_reply_t*>(copy);
  return status::kOk;
}

uint32_t ficon_cmi_swap_port(uint32_t requester, mts_handle_t handle, const char* word_a,
                             const char* word_b, uint32_t wait, uint32_t first, uint32_t second,
                             ficon_cmi_swap_reply_t** record) {
  return swap({requester, handle, word_a, word_b, wait}, wire::Opcode::kSwapPort, first, second,
              record);
}

uint32_t ficon_cmi_swap_intf(uint32_t requester, mts_handle_t handle, const char* word_a,
                             const char* word_b, uint32_t wait, if_index_t first, if_index_t second,
                             ficon_cmi_swap_reply_t** record) {
  return swap({requester, handle, word_a, word_b, wait}, wire::Opcode::kSwapInterface, first,
              second, record);
}
