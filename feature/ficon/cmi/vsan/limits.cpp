/** Switch-wide limits: get-next type, maximum ports, MIH time-out. */
#include <platform/mts.h>

#include "exchange/console.h"
#include "exchange/exchange.h"
#include "exchange/header.h"
#include "exchange/send.h"
#include "wire/limits.h"

using namespace ficon;

namespace {

wire::LimitBlock limit_request(const Caller& caller, wire::MessageType type) {
  return request_header<wire::LimitBlock>(caller, type, wire::Subtype::kLimits);
}

wire::LimitBlock limit_request(const Caller& caller, wire::MessageType type, std::uint32_t value) {
  wire::LimitBlock request = limit_request(caller, type);
  request.value.set(value);
  return request;
}

/** Sends a block whose send failure only its own function can name. */
template <class Report, class Parse>
Status exchange_limit(const Caller& caller, wire::Opcode opcode, const wire::LimitBlock& request,
                      Report report, Parse parse) {
  return exchange(
      caller, [&](mts_msg_ref_t* message) { return send_record(caller, opcode, request, message); },
      report, parse);
}

const wire::LimitBlock* limit_reply(mts_msg_ref_t* reply) {
  return static_cast<const wire::LimitBlock*>(mts_payload_get(reply));
}

bool carries_timeout(uint8_t operation) {
  return operation == static_cast<uint8_t>(wire::MihOperation::kSet) ||
         operation == static_cast<uint8_t>(wire::MihOperation::kSetDefault);
}

bool is_answered(uint8_t operation) {
  return operation == static_cast<uint8_t>(wire::MihOperation::kGet) ||
         operation == static_cast<uint8_t>(wire::MihOperation::kGetDefault);
}

}  // namespace

uint32_t ficon_cmi_get_getnext_type(uint32_t requester, mts_handle_t handle, const char* word_a,
                                    const char* word_b, uint32_t wait, uint32_t* type) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  return exchange_limit(
      caller, wire::Opcode::kGetNextType, limit_request(caller, wire::MessageType::kGet),
      [](Status failure) {
        console("%s(%d): mts send failed:%d\n", "ficon_cmi_get_getnext_type", 4663,
                static_cast<int>(failure));
      },
      [&](mts_msg_ref_t* reply) { return ficon_cmi_parse_getnext_type(reply, type); });
}

uint32_t ficon_cmi_set_getnext_type(uint32_t requester, mts_handle_t handle, const char* word_a,
                                    const char* word_b, uint32_t wait, uint32_t type) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  return exchange_limit(
      caller, wire::Opcode::kGetNextType, limit_request(caller, wire::MessageType::kSet, type),
      [](Status failure) {
        console("%s(%d): mts send failed:%d\n", "ficon_cmi_set_getnext_type", 4616,
                static_cast<int>(failure));
      },
      [](mts_msg_ref_t* reply) { return ficon_cmi_parse_getnext_type(reply, nullptr); });
}

uint32_t ficon_cmi_parse_getnext_type(mts_msg_ref_t* reply, uint32_t* type) {
  const wire::LimitBlock* answer = limit_reply(reply);
  if (answer == nullptr) return status::kNoReply;
  if (type != nullptr) *type = answer->value.get();  // also beside a nonzero status: intended
  return answer->status.get();
}

uint32_t ficon_cmi_set_max_ports(uint32_t requester, mts_handle_t handle, const char* word_a,
                                 const char* word_b, uint32_t wait, uint32_t count) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  return exchange_limit(
      caller, wire::Opcode::kMaxPorts, limit_request(caller, wire::MessageType::kSet, count),
      [](Status failure) {
        console("%s(%d):ficon_cmi_set_max_ports failed:%d\n", "ficon_cmi_set_max_ports", 4540,
                static_cast<int>(failure));
      },
      ficon_cmi_parse_max_port);
}

uint32_t ficon_cmi_parse_max_port(mts_msg_ref_t* reply) {
  const wire::LimitBlock* answer = limit_reply(reply);
  return answer == nullptr ? status::kNoReply : answer->status.get();
}

uint32_t ficon_cmi_mihpto(uint32_t requester, mts_handle_t handle, const char* word_a,
                          const char* word_b, uint32_t wait, uint8_t mih_op, uint32_t mih_arg,
                          uint32_t timeout, ficon_cmi_mihpto_rec_t* reply_record) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  wire::MihTimeout record{};
  if (carries_timeout(mih_op)) record.timeout.set(timeout);
  record.mih_arg.set(mih_arg);
  record.operation = mih_op;
  const auto send = [&](mts_msg_ref_t* request) {
    return sent_or_errno(handle,
                         // one option word where other requests set two: intended
                         send_to_fcd(handle, wire::Opcode::kMihTimeout, &record, sizeof record,
                                     request, SendOptions::kOneWord),
                         "ficon_cmi_mihpto", 5313);
  };
  if (!is_answered(mih_op)) return send_only(caller, send);
  return exchange(caller, send, report_nothing, [&](mts_msg_ref_t* reply) {
    const void* payload = mts_payload_get(reply);
    if (payload == nullptr) return status::kNoReply;
    __builtin_memcpy(reply_record, payload, sizeof *reply_record);
    return status::kOk;
  });
}
