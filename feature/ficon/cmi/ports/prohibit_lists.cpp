/** Switch-wide settings of port prohibiting. */
#include "exchange/exchange.h"
#include "exchange/header.h"
#include "exchange/send.h"
#include "wire/prohibit_settings.h"

using namespace ficon;

namespace {

/** Sends a record with one option word set; a failure is the transport's error number. */
template <class Record>
Sent send_setting(const Caller& caller, wire::Opcode opcode, const Record& record,
                  mts_msg_ref_t* request, const char* function, int line) {
  const std::int32_t result =
      send_to_fcd(caller.handle, opcode, &record, sizeof record, request, SendOptions::kOneWord);
  return sent_or_errno(caller.handle, result, function, line);
}

/**
 * One operation of the four. `value` takes the current setting, also of a refused request; a reply
 * without payload counts as success and leaves it alone.
 */
Status prohibit_setting(const Caller& caller, wire::ProhibitRequest record,
                        wire::ProhibitOperation operation, std::uint32_t* value,
                        const char* function, int line) {
  record.operation.set(static_cast<std::uint32_t>(operation));
  const auto send = [&](mts_msg_ref_t* request) {
    return send_setting(caller, wire::Opcode::kProhibitSettings, record, request, function, line);
  };
  return exchange(caller, send, report_nothing, [&](mts_msg_ref_t* reply) {
    const auto* answer = static_cast<const wire::ProhibitReply*>(mts_payload_get(reply));
    if (answer == nullptr) return status::kOk;
    if (value != nullptr) *value = answer->value.get();
    return answer->status.get();
  });
}

}  // namespace

uint32_t ficon_cmi_set_port_prohibit_acl_not_fcid(uint32_t requester, mts_handle_t handle,
                                                  const char* word_a, const char* word_b,
                                                  uint32_t wait, uint32_t value) {
  wire::ProhibitRequest record{};
  record.value.set(value);
  return prohibit_setting({requester, handle, word_a, word_b, wait}, record,
                          wire::ProhibitOperation::kSetAclNotFcid, nullptr,
                          "ficon_cmi_set_port_prohibit_acl_not_fcid", 7244);
}

uint32_t ficon_cmi_get_port_prohibit_acl_not_fcid(uint32_t requester, mts_handle_t handle,
                                                  const char* word_a, const char* word_b,
                                                  uint32_t wait, uint32_t* value) {
  return prohibit_setting({requester, handle, word_a, word_b, wait}, {},
                          wire::ProhibitOperation::kGetAclNotFcid, value,
                          "ficon_cmi_get_port_prohibit_acl_not_fcid", 7202);
}

uint32_t ficon_cmi_set_acl_type_downgrade(uint32_t requester, mts_handle_t handle,
                                          const char* word_a, const char* word_b, uint32_t wait) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  const auto header =
      request_header<wire::PlatformHeader>(caller, wire::MessageType::kSet, wire::Subtype::kPlain);
  const auto send = [&](mts_msg_ref_t* request) {
    return send_setting(caller, wire::Opcode::kAclDowngrade, header, request,
                        "ficon_cmi_set_acl_type_downgrade", 7163);
  };
  return exchange(caller, send, report_nothing, [](mts_msg_ref_t* reply) {
    const auto* answer = static_cast<const wire::AclDowngradeReply*>(mts_payload_get(reply));
    return answer == nullptr ? status::kOk : answer->status.get();
  });
}

uint32_t ficon_cmi_set_port_default_prohibit(uint32_t requester, mts_handle_t handle,
                                             const char* word_a, const char* word_b, uint32_t wait,
                                             uint32_t value) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  auto record = request_header<wire::ProhibitRequest>(  // the only one of the four with a header
      caller, wire::MessageType::kSet, wire::Subtype::kProhibit);
  record.value.set(value);
  return prohibit_setting(caller, record, wire::ProhibitOperation::kSetDefault, nullptr,
                          "ficon_cmi_set_port_default_prohibit", 7126);
}

uint32_t ficon_cmi_get_port_default_prohibit(uint32_t requester, mts_handle_t handle,
                                             const char* word_a, const char* word_b, uint32_t wait,
                                             uint32_t* value) {
  return prohibit_setting({requester, handle, word_a, word_b, wait}, {},
                          wire::ProhibitOperation::kGetDefault, value,
                          "ficon_cmi_get_port_default_prohibit", 7079);
}
