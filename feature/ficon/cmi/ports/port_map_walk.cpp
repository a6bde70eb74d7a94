/** The port map one port at a time: by interface, port number or port address, and by FCID. */
#include <platform/ficon_base.h>

#include "exchange/exchange.h"
#include "exchange/header.h"
#include "exchange/interface_field.h"
#include "exchange/tlv_reader.h"
#include "exchange/tlv_writer.h"
#include "exchange/trace.h"
#include "wire/port_map.h"
#include "wire/port_plan.h"

using namespace ficon;

namespace {

constexpr std::uint32_t kExact = 1;
constexpr std::uint32_t kGetNext = 2;
constexpr std::uint32_t kInstalledPorts = 2;  // the get-next type that passes over empty ports

struct PortKeys {
  if_index_t if_index;
  std::uint16_t key1;
  std::uint16_t key2;
};

/** One question and its answer, from `keys` into `keys`. */
struct Step {
  Status failure;
  bool received;
  Status drop_error;
};

Step ask(const Caller& caller, std::uint32_t type, std::uint8_t selector, PortKeys& keys) {
  mts_msg_ref_t request{};
  if (const Status failure = ficon_send_get_portmap_nonblock(
          caller.handle, caller.word_a, caller.word_b, type, selector, keys.if_index, keys.key1,
          keys.key2, &request)) {
    return {failure, false, 0};
  }
  mts_msg_ref_t reply{};
  // A failed receive ends the query as if it had gone well, the caller's keys unchanged: intended.
  if (await_reply(caller, &request, &reply) != 0) return {status::kOk, false, 0};
  const Status failure = ficon_parse_get_portmap(&reply, &keys.if_index, &keys.key1, &keys.key2);
  const bool dropped = mts_drop(caller.handle, &reply) == 0;
  return {failure, true, dropped ? 0 : static_cast<Status>(mts_errno_get(caller.handle))};
}

void write_back(const PortKeys& keys, if_index_t* if_index, std::uint16_t* key1,
                std::uint16_t* key2) {
  if (if_index != nullptr) *if_index = keys.if_index;
  if (key1 != nullptr) *key1 = keys.key1;
  if (key2 != nullptr) *key2 = keys.key2;
}

}  // namespace

uint32_t ficon_send_get_portmap(mts_handle_t handle, const char* word_a, const char* word_b,
                                uint32_t wait, uint32_t type, uint8_t selector,
                                if_index_t* if_index_io, uint16_t* key1_io, uint16_t* key2_io) {
  const Caller caller{2, handle, word_a, word_b, wait};
  std::uint32_t mode = 1;
  if (type == kGetNext) {
    if (const Status failure =
            ficon_cmi_get_getnext_type(caller.requester, handle, word_a, word_b, wait, &mode)) {
      trace("CMI_ERROR: ficon_cmi_get_getnext_type failed 0x%08x\n", failure);
      return failure;
    }
  }
  PortKeys keys{if_index_io == nullptr ? 0 : *if_index_io,
                key1_io == nullptr ? wire::kNoPort : *key1_io,
                key2_io == nullptr ? wire::kNoPort : *key2_io};
  for (;;) {
    const Step step = ask(caller, type, selector, keys);
    if (step.failure != 0 || !step.received) return step.failure;
    if (type == kExact || (type == kGetNext && mode != kInstalledPorts) || keys.if_index != 0) {
      break;
    }
    if (type != kGetNext) return step.drop_error;
  }
  write_back(keys, if_index_io, key1_io, key2_io);
  return status::kOk;
}

uint32_t ficon_send_get_portmap_fcid_nonblock(mts_handle_t handle, const char* word_a,
                                              const char* word_b, uint32_t msgtype,
                                              uint8_t selector, uint32_t fcid, if_index_t if_index,
                                              uint16_t key1, uint16_t key2, mts_msg_ref_t* msg) {
  if (handle == nullptr) return status::kInvalidPayload;
  const Caller caller{0, handle, word_a, word_b, 0};
  auto record = request_header<wire::PortmapFcid>(caller, msgtype, wire::Subtype::kPortmapFcid);
  set_interface(record.if_index, if_index);
  record.key1.set(key1);
  record.key2.set(key2);
  record.selector = selector;
  record.fcid.set(fcid);
  TlvArray<500> request;
  request.add(wire::TlvType::kPortmapFcid, record);
  if (request.status() != 0) return request.status();
  // The other node, and the only request without send options.
  return static_cast<Status>(mts_send(handle, wire::kFcidNode, wire::kRequestSap,
                                      static_cast<std::uint32_t>(wire::Opcode::kPortmapFcid),
                                      request.array(), request.size(), msg, 0, nullptr));
}

uint32_t ficon_parse_get_portmap_fcid(mts_msg_ref_t* reply, if_index_t* if_index, uint16_t* key1,
                                      uint16_t* key2, uint32_t* fcid, uint8_t* answer_byte) {
  if (reply == nullptr) return status::kInvalidPayload;
  const void* payload = mts_payload_get(reply);
  if (payload == nullptr) return status::kNoPayload;
  TlvReader reader(payload);
  if (reader.empty()) {
    trace("CMI_ERROR: invalid cmi payload: no tlvs present\n");
    return status::kInvalidPayload;
  }
  Tlv tlv{};
  if (!reader.find(wire::TlvType::kPortmapFcid, tlv)) {
    return reader.status() != 0 ? reader.status() : status::kInvalidPayload;
  }
  const auto record = tlv.read<wire::PortmapFcid>();
  if (if_index != nullptr) *if_index = ntoh_if_index(stored_interface(record.if_index));
  if (key1 != nullptr) *key1 = record.key1.get();
  if (key2 != nullptr) *key2 = record.key2.get();
  if (fcid != nullptr) *fcid = record.fcid.get();
  if (answer_byte != nullptr) *answer_byte = record.answer;
  return record.status.get();
}
