#include "ports/port_map_reply.h"

#include "exchange/header.h"
#include "wire/port_map.h"

namespace ficon {

wire::PortInfoRequest port_map_request(const Caller& caller, wire::PortSelector selector) {
  auto request = request_header<wire::PortInfoRequest>(caller, wire::MessageType::kGet,
                                                       wire::Subtype::kPortInfo);
  request.selector.set(static_cast<std::uint32_t>(selector));
  request.query_flags.set(wire::kPortMapQuery);
  return request;
}

Status judge_port_map(TlvReader& reader, wire::TlvType table1, wire::TlvType table2) {
  if (reader.empty()) {
    trace("CMI_ERROR: invalid cmi payload: no tlvs present\n");
    return status::kInvalidPayload;
  }
  bool seen = false;
  const Status failure = for_each_tlv(reader, [&](const Tlv& tlv) {
    if (tlv.is(table1) || tlv.is(table2)) seen = true;
    if (!tlv.is(wire::TlvType::kPortInfoRequest)) return status::kOk;
    const Status refusal = tlv.read<wire::PortInfoRequest>().status.get();
    if (refusal != 0) trace("CMI_ERROR: status was %d\n", static_cast<int>(refusal));
    return refusal;
  });
  if (reader.status() != 0) trace("CMI_ERROR: tlv_next_tlv gave error\n");
  if (failure != 0 || seen) return failure;
  trace("CMI_ERROR: Unrecognised response for the request\n");
  return status::kInvalidPayload;
}

Status take_table(const Tlv& tlv, void* table, std::size_t size) {
  if (tlv.length != size) return status::kInvalidPayload;
  __builtin_memcpy(table, tlv.value, size);
  return status::kOk;
}

}  // namespace ficon
