#include "transport/endpoint.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "chassis/current_chassis.h"
#include "transport/connection.h"
#include "transport/embedded.h"
#include "transport/open.h"

namespace ficon::platform {
namespace {

constexpr std::string_view kEmbedded = "embedded:";
constexpr std::string_view kUnix = "unix:";

ficon_embedded_start_t embedded_start = nullptr;

void tell(char* error, std::size_t size, const std::string& sentence) {
  if (error != nullptr && size != 0) std::snprintf(error, size, "%s", sentence.c_str());
}

std::string text_of(const char* variable) {
  const char* value = std::getenv(variable);
  return value == nullptr ? "" : value;
}

std::string default_endpoint() {
  if (std::string chosen = text_of("FICON_ENDPOINT"); !chosen.empty()) return chosen;
  std::string state = text_of("XDG_STATE_HOME");
  if (state.empty()) state = text_of("HOME") + "/.local/state";
  return std::string(kEmbedded) + state + "/ficon";
}

}  // namespace

int connect_embedded(const std::string& endpoint, std::string* error) {
  char sentence[512] = "this program has no emulator of its own: use unix:PATH";
  const std::string directory = endpoint.substr(kEmbedded.size());
  const int fd =
      embedded_start == nullptr ? -1 : embedded_start(directory.c_str(), sentence, sizeof sentence);
  if (fd < 0 && error != nullptr) *error = sentence;
  return fd;
}

}  // namespace ficon::platform

using namespace ficon::platform;

mts_handle_t ficon_mts_open(const char* endpoint, char* error, size_t error_size) {
  tell(error, error_size, "");
  const std::string wanted = endpoint == nullptr ? default_endpoint() : endpoint;
  const bool embedded = wanted.starts_with(kEmbedded) && wanted.size() > kEmbedded.size();
  if (!embedded && !(wanted.starts_with(kUnix) && wanted.size() > kUnix.size())) {
    tell(error, error_size, "\"" + wanted + "\" is no endpoint: use embedded:DIR or unix:PATH");
    return nullptr;
  }
  if (!embedded && wanted.size() > kUnix.size() + kMaxSocketPath) {
    tell(error, error_size,
         "\"" + wanted + "\": the path of a socket has at most " + std::to_string(kMaxSocketPath) +
             " characters");
    return nullptr;
  }
  if (embedded) {
    // Tried at once, unlike a daemon that may come later: what is wrong here stays wrong.
    std::string sentence;
    const int fd = connect_embedded(wanted, &sentence);
    if (fd < 0) {
      tell(error, error_size, sentence);
      return nullptr;
    }
    chassis_endpoint_opened(wanted);
    return open_handle(wanted, fd);
  }
  chassis_endpoint_opened(wanted);
  return open_handle(wanted, -1);
}

void ficon_embedded_register(ficon_embedded_start_t start) {
  embedded_start = start;
}
