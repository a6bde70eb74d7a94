/** Port addresses bound to interfaces and to port numbers: fixed records, no TLV array. */
#include "exchange/exchange.h"
#include "exchange/send.h"
#include "wire/port_numbers.h"

using namespace ficon;

namespace {

/** fcd answers with the record, its status filled; no payload counts as success. */
template <class Record>
Status bind_port_address(const Caller& caller, wire::Opcode opcode, const Record& record,
                         const char* function, int line) {
  const auto send = [&](mts_msg_ref_t* request) {
    return sent_or_errno(caller.handle,
                         send_to_fcd(caller.handle, opcode, &record, sizeof record, request),
                         function, line);
  };
  return exchange(caller, send, report_nothing, [](mts_msg_ref_t* reply) {
    const auto* answer = static_cast<const Record*>(mts_payload_get(reply));
    return answer == nullptr ? status::kOk : answer->status.get();
  });
}

}  // namespace

uint32_t ficon_cmi_set_pa_if(uint32_t requester, mts_handle_t handle, const char* word_a,
                             const char* word_b, uint32_t wait, uint16_t port_address,
                             if_index_t if_index) {
  wire::AddressToInterface record{};
  record.port_address.set(port_address);
  record.if_index.set(if_index);  // not through the platform's conversion: intended
  return bind_port_address({requester, handle, word_a, word_b, wait},
                           wire::Opcode::kBindAddressToInterface, record, "ficon_cmi_set_pa_if",
                           __LINE__);
}

uint32_t ficon_cmi_set_pa_pn(uint32_t requester, mts_handle_t handle, const char* word_a,
                             const char* word_b, uint32_t wait, uint16_t port_address,
                             uint16_t port_number) {
  wire::AddressToNumber record{};
  record.port_address.set(port_address);
  record.port_number.set(port_number);
  return bind_port_address({requester, handle, word_a, word_b, wait},
                           wire::Opcode::kBindAddressToNumber, record, "ficon_cmi_set_pa_pn",
                           __LINE__);
}
