#include "handlers/prohibit_settings.h"

#include "model/port_operations.h"
#include "wire/prohibit_settings.h"

namespace ficon::emulator {
namespace {

Bytes reply_with(ByteView request, bool value, FcdStatus status) {
  wire::ProhibitReply reply{};
  reply.platform = leading_record<wire::ProhibitRequest>(request).platform;
  reply.value.set(value ? 1 : 0);
  reply.status.set(static_cast<Status>(status));
  return to_bytes(reply);
}

}  // namespace

Answer handle_prohibit_settings(const Request& request, Switch& model) {
  const auto* asked = whole_record<wire::ProhibitRequest>(request.payload);
  if (asked == nullptr) return Malformed{"prohibit settings: not the length of their record"};
  const Asker asker{request.connection, Requester::kUnstated};
  const ProhibitSettings& settings = model.prohibit_settings();
  PortOperations ports(model);
  switch (wire::ProhibitOperation{asked->operation.get()}) {
    case wire::ProhibitOperation::kSetDefault:
      return ports.set_default_prohibit(asker, asked->value.get());
    case wire::ProhibitOperation::kGetDefault:
      return reply_with(request.payload, settings.prohibited_by_default, FcdStatus::kDone);
    case wire::ProhibitOperation::kSetAclNotFcid:
      return ports.set_acl_not_fcid(asker, asked->value.get());
    case wire::ProhibitOperation::kGetAclNotFcid:
      return reply_with(request.payload, settings.acl_not_fcid, FcdStatus::kDone);
  }
  return FcdStatus::kUnknownOperation;
}

Bytes prohibit_settings_status_reply(ByteView request, FcdStatus status) {
  return reply_with(request, false, status);
}

Answer handle_acl_downgrade(const Request& request, Switch& model) {
  if (request.payload.size() != sizeof(wire::PlatformHeader)) {
    return Malformed{"downgrade of the access lists: more or less than a header"};
  }
  return PortOperations(model).downgrade_acl_type({request.connection, Requester::kUnstated});
}

Bytes acl_downgrade_status_reply(ByteView, FcdStatus status) {
  wire::AclDowngradeReply reply{};
  reply.status.set(static_cast<Status>(status));
  return to_bytes(reply);
}

}  // namespace ficon::emulator
