#include "config_text.h"

#include <platform/pss.h>
#include <unistd.h>

#include "acfg/text_service.h"
#include "chassis/current_chassis.h"
#include "configuration/configuration.h"

namespace ficon::ctl {
namespace {

std::string bytes(const void* data, std::uint32_t length) {
  return length == 0 ? "" : std::string(static_cast<const char*>(data), length);
}

}  // namespace

std::string running_store(Session& session) {
  std::string path;
  if (const auto status = platform::get_store_path(session.handle(), session.wait(), &path)) {
    throw session.failure(status, "cannot learn where the configuration is stored");
  }
  return path;
}

std::string startup_store(Session& session) {
  std::string store = platform::startup_store(running_store(session));
  if (access(store.c_str(), F_OK) != 0) {
    throw Failure(0, "no-startup", "no configuration was saved yet",
                  "ficonctl config save makes the running configuration the startup one");
  }
  return store;
}

Records read_records(const std::string& store, const std::string& table) {
  constexpr std::uint32_t kFirst = 1;
  constexpr std::uint32_t kNext = 3;
  const Failure unreadable(0, "store-unreadable", "the store " + store + " cannot be read",
                           "see that it is there, whole, and readable for you");
  const pss_store_t opened = pss_open((store + "/" + table).c_str());
  if (opened == nullptr) throw unreadable;
  Records records;
  pss_location_t place = nullptr;
  std::uint32_t status = pss_move2location(opened, kFirst, &place);
  for (; status == 0; status = pss_move2location(opened, kNext, &place)) {
    const std::uint8_t* key = nullptr;
    const void* value = nullptr;
    std::uint32_t key_length = 0;
    std::uint32_t value_length = 0;
    if (pss_getvalue(opened, place, &key, &key_length, &value, &value_length) != 0) break;
    records.emplace(bytes(key, key_length), bytes(value, value_length));
  }
  if (status != status::kEndOfStore) throw unreadable;
  return records;
}

std::string generate_text(Session& session, const std::string& store, const TextScope& scope) {
  read_records(store, "ficon_saved_config");
  read_records(store, "ficon_debug");
  platform::TextRequest request;
  request.config_prefix = store;
  request.debug_prefix = store;
  request.vsans = scope.vsans;
  request.interfaces =
      scope.interfaces.empty() ? platform::current_chassis()->interfaces() : scope.interfaces;
  if (const auto status = ficon_startup_acfg_gen(request.request(), request.context())) {
    throw session.failure(status, "cannot generate the configuration");
  }
  return request.text.value_or("");
}

}  // namespace ficon::ctl
