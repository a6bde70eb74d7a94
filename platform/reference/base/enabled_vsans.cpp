/** The list of FICON-enabled VSANs. */
#include <platform/ficon_base.h>
#include <platform/mts.h>

#include <cstdlib>

#include "protocol/services.h"
#include "transport/message.h"
#include "wire/address.h"
#include "wire/status.h"

using namespace ficon;

namespace {

constexpr std::uint32_t kNoMemory = 12;    // ENOMEM
constexpr std::uint32_t kBadMessage = 74;  // EBADMSG

}  // namespace

uint32_t ficon_send_get_enabled_vsans(mts_handle_t handle, mts_msg_ref_t* msg) {
  const mts_send_opts_t options{{1, 1}};
  const auto sap = static_cast<std::uint32_t>(platform::ServiceSap::kFiconBase);
  const auto opcode = static_cast<std::uint32_t>(platform::FiconBaseOpcode::kEnabledVsans);
  if (mts_send(handle, wire::kFcdNode, sap, opcode, nullptr, 0, msg, 0, &options) == 0) return 0;
  return static_cast<std::uint32_t>(mts_errno_get(handle));
}

uint32_t ficon_parse_get_enabled_vsans(mts_msg_ref_t* reply, uint32_t** list) {
  const void* payload = mts_payload_get(reply);
  if (payload == nullptr) return status::kNoReply;
  const auto length = static_cast<std::uint64_t>(platform::received_length(payload));
  const auto* head = static_cast<const platform::EnabledVsansHead*>(payload);
  const std::uint32_t count = head->count.get();
  if (length != sizeof *head + std::uint64_t{count} * sizeof(wire::be32)) return kBadMessage;
  auto* words = static_cast<std::uint32_t*>(std::malloc((count + 2) * sizeof(std::uint32_t)));
  if (words == nullptr) return kNoMemory;
  words[0] = head->status.get();
  words[1] = count;
  const auto* numbers = reinterpret_cast<const wire::be32*>(head + 1);
  for (std::uint32_t i = 0; i < count; ++i) words[2 + i] = numbers[i].get();
  *list = words;
  return 0;
}
