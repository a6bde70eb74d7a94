#include "chassis/current_chassis.h"

#include <platform/mts.h>

#include <mutex>
#include <stdexcept>

#include "chassis/chassis_file.h"
#include "protocol/port_manager.h"
#include "transport/endpoint.h"
#include "transport/message.h"
#include "transport/service_call.h"

namespace ficon::platform {
namespace {

constexpr std::uint32_t kPatienceMs = 2000;

std::mutex guard;
std::string opened;                    // the endpoint, empty before any
std::shared_ptr<const Chassis> known;  // its chassis, null until asked for

std::shared_ptr<const Chassis> built_in() {
  static const std::shared_ptr<const Chassis> chassis = [] {
    std::string error;
    auto read = read_chassis(default_chassis_text(), "built-in chassis", &error);
    if (!read) throw std::logic_error(error);
    return std::make_shared<const Chassis>(*std::move(read));
  }();
  return chassis;
}

/** What a reply describes; the built-in chassis where an emulator describes none. */
std::shared_ptr<const Chassis> described(mts_msg_ref_t* reply, const std::string& endpoint) {
  const auto* text = static_cast<const char*>(mts_payload_get(reply));
  if (text == nullptr) return built_in();
  std::string error;
  auto read =
      read_chassis({text, static_cast<std::size_t>(received_length(text))}, endpoint, &error);
  return read ? std::make_shared<const Chassis>(*std::move(read)) : built_in();
}

/** Null when nobody answers. */
std::shared_ptr<const Chassis> fetch(const std::string& endpoint) {
  const mts_handle_t handle = ficon_mts_open(endpoint.c_str(), nullptr, 0);
  if (handle == nullptr) return nullptr;
  std::shared_ptr<const Chassis> chassis;
  mts_msg_ref_t reply{};
  if (call_service(handle, ServiceSap::kChassis, ChassisOpcode::kDescription, {}, kPatienceMs,
                   &reply) == 0) {
    chassis = described(&reply, endpoint);
    mts_drop(handle, &reply);
  }
  ficon_mts_close(handle);
  return chassis;
}

}  // namespace

std::shared_ptr<const Chassis> current_chassis() {
  std::string endpoint;
  {
    const std::lock_guard lock(guard);
    if (known) return known;
    endpoint = opened;
  }
  if (endpoint.empty()) return built_in();
  const auto chassis = fetch(endpoint);
  const std::lock_guard lock(guard);
  if (chassis && endpoint == opened) known = chassis;
  return chassis ? chassis : built_in();
}

void chassis_endpoint_opened(const std::string& endpoint) {
  const std::lock_guard lock(guard);
  if (endpoint == opened) return;
  opened = endpoint;
  known = nullptr;
}

}  // namespace ficon::platform
