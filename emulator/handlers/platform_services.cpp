#include "handlers/platform_services.h"

#include <cstring>
#include <string_view>

#include "protocol/services.h"

namespace ficon::emulator {
namespace {

Bytes enable_feature_reply(Status status) {
  platform::EnableFeatureReply reply{};
  reply.status.set(status);
  return to_bytes(reply);
}

}  // namespace

Answer handle_enabled_vsans(const Request& request, Switch& model) {
  if (!request.payload.empty()) return Malformed{"enabled VSANs: the request is not empty"};
  platform::EnabledVsansHead head{};
  head.count.set(static_cast<std::uint32_t>(model.vsans().size()));
  Bytes reply = to_bytes(head);
  for (const auto& [number, vsan] : model.vsans()) {
    wire::be32 word{};
    word.set(number);
    reply.insert(reply.end(), std::begin(word.raw), std::end(word.raw));
  }
  return reply;
}

Bytes enabled_vsans_status_reply(ByteView, FcdStatus status) {
  platform::EnabledVsansHead head{};
  head.status.set(static_cast<Status>(status));
  return to_bytes(head);
}

Answer handle_enable_feature(const Request& request, Switch& model) {
  const auto* asked = whole_record<platform::EnableFeatureRequest>(request.payload);
  if (asked == nullptr) return Malformed{"feature request is not 32 bytes"};
  const auto* text = reinterpret_cast<const char*>(asked->name.raw);
  const std::size_t length = strnlen(text, sizeof asked->name.raw);
  if (length == sizeof asked->name.raw) return Malformed{"feature name is not terminated"};
  if (std::string_view(text, length) != "ficon") return FcdStatus::kUnknownFeature;
  return enable_feature_reply(model.enable_feature() ? 0 : status::kFeatureAlreadyEnabled);
}

Bytes enable_feature_status_reply(ByteView, FcdStatus status) {
  return enable_feature_reply(static_cast<Status>(status));
}

}  // namespace ficon::emulator
