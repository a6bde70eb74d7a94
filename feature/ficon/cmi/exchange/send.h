/** Sending: the options record and the one call that every request to fcd goes through. */
#pragma once

#include <platform/mts.h>

#include "exchange/caller.h"
#include "wire/address.h"
#include "wire/opcode.h"
#include "wire/status.h"

namespace ficon {

/** The transport's error number when fcd is not there. */
inline constexpr Status kFcdGone = 32;

/** How many leading words of the send options a request sets to 1: most set two. */
enum class SendOptions : std::uint8_t { kOneWord = 1, kTwoWords = 2 };

inline mts_send_opts_t send_options(SendOptions words) {
  mts_send_opts_t options{};
  options.word[0] = 1;
  if (words == SendOptions::kTwoWords) options.word[1] = 1;
  return options;
}

/** Sends to the fcd node's request SAP; the transport's result as it stands. */
inline std::int32_t send_to_fcd(mts_handle_t handle, wire::Opcode opcode, const void* payload,
                                std::uint32_t length, mts_msg_ref_t* message,
                                SendOptions words = SendOptions::kTwoWords) {
  const mts_send_opts_t options = send_options(words);
  return mts_send(handle, wire::kFcdNode, wire::kRequestSap, static_cast<std::uint32_t>(opcode),
                  payload, length, message, 0, &options);
}

/** Sends a fixed record; any nonzero result is the status. */
template <class Record>
Status send_record(const Caller& caller, wire::Opcode opcode, const Record& record,
                   mts_msg_ref_t* message) {
  return static_cast<Status>(send_to_fcd(caller.handle, opcode, &record, sizeof record, message));
}

}  // namespace ficon
