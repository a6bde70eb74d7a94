#include "handlers/configuration.h"

#include "protocol/services.h"

namespace ficon::emulator {

Answer handle_store_path(const Request& request, Switch& model) {
  if (!request.payload.empty()) return Malformed{"store path: the request is not empty"};
  Bytes reply = to_bytes(platform::StorePathHead{});
  const std::string& path = model.options().store_path;
  reply.insert(reply.end(), path.begin(), path.end());
  return reply;
}

Answer handle_save_startup(const Request& request, Switch& model) {
  if (!request.payload.empty()) return Malformed{"saving: the request is not empty"};
  model.touched.startup();
  return FcdStatus::kDone;
}

Answer handle_set_logging_level(const Request& request, Switch& model) {
  const auto* asked = whole_record<platform::SetLoggingLevelRequest>(request.payload);
  if (asked == nullptr) return Malformed{"logging level is not 4 bytes"};
  return model.set_logging_level(asked->level.get());
}

Bytes configuration_status_reply(ByteView, FcdStatus status) {
  platform::ConfigurationReply reply{};
  reply.status.set(static_cast<Status>(status));
  return to_bytes(reply);
}

}  // namespace ficon::emulator
