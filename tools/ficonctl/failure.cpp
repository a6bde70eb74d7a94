#include "failure.h"

#include <cstdio>
#include <cstring>

#include "wire/fcd_status.h"
#include "wire/status.h"
#include "wire/status_text.h"

namespace ficon::ctl {
namespace {

constexpr std::uint32_t kNoSuchDevice = 19;
constexpr std::uint32_t kIllegalCharacter = 84;
constexpr std::uint32_t kMessageTooLong = 90;
constexpr std::uint32_t kLargestErrorNumber = 4095;

}  // namespace

Failure failure_of(std::uint32_t status, const std::string& what, const std::string& endpoint) {
  if (status == kDaemonGone) {
    return {status, "daemon-absent", what + ": no daemon answers at " + endpoint,
            "start fcd-emulator there, or choose another endpoint with --endpoint"};
  }
  if (const FcdStatusText* text = find_fcd_status(status)) {
    return {status, text->name, what + ": " + text->sentence, text->hint};
  }
  if (const StatusText* text = find_status_text(status)) {
    return {status, text->name, what + ": " + text->sentence, text->hint};
  }
  if (status == status::kSendFailed) {
    return {status, "send-failed", what + ": the request could not be sent",
            "repeat the command with --verbose"};
  }
  if (status == kNoSuchDevice) {
    return {status, "no-such-device", what + ": the chassis has no such module or interface",
            "`ficonctl portmap show` lists what there is"};
  }
  if (status == kIllegalCharacter) {
    return {status, "EILSEQ", what + ": the VSAN's code page has not all of the characters",
            "use characters that the code page has"};
  }
  if (status == kMessageTooLong) {
    return {status, "message-too-long", what + ": the message is larger than the transport takes",
            "split it"};
  }
  const char* linux_text =
      status <= kLargestErrorNumber ? strerrordesc_np(static_cast<int>(status)) : nullptr;
  if (linux_text != nullptr) {
    return {status, strerrorname_np(static_cast<int>(status)), what + ": " + linux_text,
            "see whether the daemon is well, and try again"};
  }
  char code[16];
  std::snprintf(code, sizeof code, "0x%08x", status);
  return {status, "unknown", what + ": status " + code, "look at the daemon's log"};
}

}  // namespace ficon::ctl
