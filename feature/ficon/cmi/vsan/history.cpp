/** The director history. */
#include <platform/mts.h>

#include "exchange/allocation.h"
#include "exchange/console.h"
#include "exchange/exchange.h"
#include "exchange/header.h"
#include "exchange/tlv_reader.h"
#include "exchange/tlv_writer.h"
#include "wire/history.h"

using namespace ficon;

namespace {

/** Which of the first two TLVs is of a type: the first that is, or null. */
const Tlv* pick(const Tlv (&tlvs)[2], wire::TlvType type) {
  if (tlvs[0].is(type)) return &tlvs[0];
  return tlvs[1].is(type) ? &tlvs[1] : nullptr;
}

/** The entries in host order; bytes 37 to 39 stay as the allocator gives them. */
void convert(const std::uint8_t* from, ficon_cmi_hist_entry_t* to, std::int32_t count) {
  for (std::int32_t i = 0; i < count; ++i) {
    wire::HistoryEntry entry;
    __builtin_memcpy(&entry, from + static_cast<std::size_t>(i) * sizeof entry, sizeof entry);
    to[i].value = entry.value.get();
    to[i].byte_value = entry.byte_value;
    __builtin_memcpy(to[i].field, entry.field.raw, sizeof entry.field.raw);
  }
}

constexpr std::size_t kEntriesAt = sizeof(wire::HistoryEntriesHead);

bool holds_its_entries(const Tlv& summary) {
  const std::uint32_t count = summary.read<wire::HistoryEntriesHead>().count.get();
  if (count == 0) return true;
  return summary.length >= kEntriesAt &&
         count <= (summary.length - kEntriesAt) / sizeof(wire::HistoryEntry);
}

Status copy_entries(const Tlv& summary, std::uint32_t* count, std::uint32_t* summary_word,
                    ficon_cmi_hist_entry_t** entries) {
  const auto head = summary.read<wire::HistoryEntriesHead>();
  *count = head.count.get();
  if (*count == 0) return status::kOk;
  *summary_word = head.summary_word.get();
  auto* copy = static_cast<ficon_cmi_hist_entry_t*>(
      allocate(TEVRAK_MEM_dirhistbufent, *count * sizeof(ficon_cmi_hist_entry_t), 1992));
  if (copy == nullptr) return status::kAllocationFailed;
  convert(static_cast<const std::uint8_t*>(summary.value) + kEntriesAt, copy,
          static_cast<std::int32_t>(*count));
  *entries = copy;
  return status::kOk;
}

}  // namespace

uint32_t ficon_cmi_get_history_summary_nonblock(uint32_t requester, mts_handle_t handle,
                                                const char* word_a, const char* word_b,
                                                uint32_t wait, uint32_t msgtype, uint32_t hist_key,
                                                uint32_t hist_op, uint32_t hist_arg1,
                                                uint32_t hist_arg2, mts_msg_ref_t* msg) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  auto request = request_header<wire::HistoryRequest>(caller, msgtype, wire::Subtype::kHistory);
  request.hist_key.set(hist_key);
  request.hist_op.set(hist_op);
  request.hist_arg1.set(hist_arg1);
  request.hist_arg2.set(hist_arg2);
  return RequestTlvs()
      .add(wire::TlvType::kHistoryRequest, request)
      .send(caller, wire::Opcode::kHistory, msg);
}

uint32_t ficon_cmi_parse_history_summary(mts_msg_ref_t* reply, uint32_t* count,
                                         uint32_t* summary_word, uint32_t* hist_key,
                                         ficon_cmi_hist_entry_t** entries) {
  TlvReader reader(mts_payload_get(reply));
  if (reader.empty()) {
    console(kNoTlvs);
    return status::kInvalidPayload;
  }
  Tlv tlvs[2] = {};
  for (Tlv& tlv : tlvs) {
    if (const Status failure = reader.read_next(tlv)) return failure;
  }
  const Tlv* command = pick(tlvs, wire::TlvType::kHistoryRequest);
  if (command == nullptr) {
    console("invalid cmi payload: command data tlv not found\n");
    return status::kInvalidPayload;
  }
  const auto head = command->read<wire::HistoryRequest>();
  if (head.status.get() != 0) return head.status.get();
  const Tlv* summary = pick(tlvs, wire::TlvType::kHistoryEntries);
  if (summary == nullptr) {
    console("invalid cmi payload: summary data tlv not found\n");
    return status::kInvalidPayload;
  }
  const bool known_operation = head.hist_op.get() <= wire::kLastHistoryOperation;
  if (known_operation && !holds_its_entries(*summary)) return status::kInvalidPayload;
  if (hist_key != nullptr) *hist_key = head.hist_key.get();
  *entries = nullptr;
  if (!known_operation) {
    console("invalid cmi payload: hist ops tlv not found\n");  // of a value, not a TLV: intended
    return status::kInvalidPayload;
  }
  return copy_entries(*summary, count, summary_word, entries);
}

uint32_t ficon_cmi_get_history_summary(uint32_t requester, mts_handle_t handle, const char* word_a,
                                       const char* word_b, uint32_t wait, uint32_t msgtype,
                                       uint32_t* hist_key, uint32_t hist_op, uint32_t hist_arg1,
                                       uint32_t hist_arg2, uint32_t* count, uint32_t* summary_word,
                                       ficon_cmi_hist_entry_t** entries) {
  return exchange(
      {requester, handle, word_a, word_b, wait},
      [&](mts_msg_ref_t* request) {
        return ficon_cmi_get_history_summary_nonblock(requester, handle, word_a, word_b, wait,
                                                      msgtype, *hist_key, hist_op, hist_arg1,
                                                      hist_arg2, request);
      },
      [](Status failure) {
        // the sender's name without its "get": intended
        console("%s(%d):ficon_cmi_history_summary_nonblock failed:%d\n",
                "ficon_cmi_get_history_summary", 1834, static_cast<int>(failure));
      },
      [&](mts_msg_ref_t* reply) {
        return ficon_cmi_parse_history_summary(reply, count, summary_word, hist_key, entries);
      });
}
