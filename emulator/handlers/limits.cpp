#include "handlers/limits.h"

#include "protocol/cmi_header.h"
#include "wire/limits.h"

namespace ficon::emulator {
namespace {

using wire::MihOperation;

/** Both limits are read and set alike. */
Answer handle_limit(const Request& request, Switch& model,
                    std::uint32_t (*value)(const SwitchLimits&),
                    FcdStatus (Switch::*set)(std::uint32_t)) {
  const auto* asked = whole_record<wire::LimitBlock>(request.payload);
  if (asked == nullptr) return Malformed{"limit block is not 120 bytes"};
  switch (platform::message_type(asked->platform)) {
    case wire::MessageType::kGet:
      break;
    case wire::MessageType::kSet:
      if (const FcdStatus status = (model.*set)(asked->value.get()); status != FcdStatus::kDone) {
        return status;
      }
      break;
    default:
      return FcdStatus::kUnknownOperation;
  }
  wire::LimitBlock reply = *asked;
  reply.status.set(0);
  reply.value.set(value(model.limits()));
  return to_bytes(reply);
}

Bytes mih_reply(wire::MihTimeout record, MihTimeout timeout) {
  record.timeout.set(timeout.encoded);
  record.status.set(0);
  return to_bytes(record);
}

}  // namespace

Answer handle_get_next_type(const Request& request, Switch& model) {
  return handle_limit(
      request, model,
      [](const SwitchLimits& limits) { return static_cast<std::uint32_t>(limits.get_next_type); },
      &Switch::set_get_next_type);
}

Answer handle_max_ports(const Request& request, Switch& model) {
  return handle_limit(
      request, model, [](const SwitchLimits& limits) { return limits.max_ports; },
      &Switch::set_max_ports);
}

Bytes limit_status_reply(ByteView request, FcdStatus status) {
  auto reply = leading_record<wire::LimitBlock>(request);
  reply.status.set(static_cast<Status>(status));
  return to_bytes(reply);
}

Answer handle_mih_timeout(const Request& request, Switch& model) {
  const auto* asked = whole_record<wire::MihTimeout>(request.payload);
  if (asked == nullptr) return Malformed{"MIH time-out record is not 13 bytes"};
  const std::uint32_t vsan = asked->mih_arg.get();
  const Asker asker{request.connection, Requester::kUnstated};
  switch (MihOperation{asked->operation}) {
    case MihOperation::kSet:
      return NoReply{model.set_mih_timeout(vsan, asker, asked->timeout.get())};
    case MihOperation::kSetDefault:
      return NoReply{model.set_default_mih_timeout(asked->timeout.get())};
    case MihOperation::kGet:
      if (const FcdStatus status = model.check_vsan(vsan); status != FcdStatus::kDone) {
        return status;
      }
      return mih_reply(*asked, model.mih_timeout(*model.find_vsan(vsan)));
    case MihOperation::kGetDefault:
      return mih_reply(*asked, model.limits().default_mih_timeout);
  }
  return NoReply{FcdStatus::kUnknownOperation};
}

Bytes mih_timeout_status_reply(ByteView request, FcdStatus status) {
  auto reply = leading_record<wire::MihTimeout>(request);
  reply.timeout.set(0);
  reply.status.set(static_cast<Status>(status));
  return to_bytes(reply);
}

}  // namespace ficon::emulator
