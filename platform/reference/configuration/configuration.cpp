#include "configuration/configuration.h"

#include "transport/message.h"
#include "transport/service_call.h"
#include "wire/status.h"

namespace ficon::platform {
namespace {

/** The reply's status, and the text behind it where somebody wants it. */
std::uint32_t ask(mts_handle_t handle, std::uint32_t wait_ms, ConfigurationOpcode opcode,
                  std::span<const std::uint8_t> request, std::string* text = nullptr) {
  mts_msg_ref_t reply{};
  if (const std::uint32_t error =
          call_service(handle, ServiceSap::kConfiguration, opcode, request, wait_ms, &reply)) {
    return error;
  }
  const void* payload = mts_payload_get(&reply);
  const std::int64_t length = payload == nullptr ? 0 : received_length(payload);
  std::uint32_t status = status::kNoReply;
  if (length >= static_cast<std::int64_t>(sizeof(ConfigurationReply))) {
    const auto* head = static_cast<const ConfigurationReply*>(payload);
    status = head->status.get();
    if (text != nullptr) {
      text->assign(reinterpret_cast<const char*>(head + 1),
                   static_cast<std::size_t>(length) - sizeof *head);
    }
  }
  mts_drop(handle, &reply);
  return status;
}

}  // namespace

std::uint32_t get_store_path(mts_handle_t handle, std::uint32_t wait_ms, std::string* path) {
  return ask(handle, wait_ms, ConfigurationOpcode::kStorePath, {}, path);
}

std::uint32_t save_startup(mts_handle_t handle, std::uint32_t wait_ms) {
  return ask(handle, wait_ms, ConfigurationOpcode::kSaveStartup, {});
}

std::uint32_t set_logging_level(mts_handle_t handle, std::uint32_t wait_ms, std::uint32_t level) {
  SetLoggingLevelRequest request{};
  request.level.set(level);
  return ask(handle, wait_ms, ConfigurationOpcode::kSetLoggingLevel, request.level.raw);
}

std::string startup_store(const std::string& store_path) {
  return store_path + ".startup";
}

}  // namespace ficon::platform
