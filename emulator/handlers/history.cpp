#include "handlers/history.h"

#include <algorithm>
#include <bit>

#include "handlers/tlv_message.h"
#include "protocol/cmi_header.h"
#include "wire/history.h"

namespace ficon::emulator {
namespace {

using wire::HistoryOperation;
using wire::TlvType;

/** As many entries as a TLV has room for. */
constexpr std::uint32_t kMostEntries =
    (0xffff - sizeof(wire::HistoryEntriesHead)) / sizeof(wire::HistoryEntry);

/** What a batch holds: `count` entries from position `first` on. */
struct Batch {
  std::uint32_t first;
  std::uint32_t count;
  std::uint32_t lost;  // entries between the position asked for and the first that is still there
};

Batch entries_after(const History& history, std::uint32_t position, std::uint32_t most) {
  const std::uint32_t oldest = history.first_position();
  const std::uint32_t lost = position + 1 < oldest ? oldest - position - 1 : 0;
  const std::uint32_t first = position + 1 + lost;
  return {first, std::min(history.last_position() + 1 - first, most), lost};
}

Batch latest_entries(const History& history, std::uint32_t most) {
  const auto held = static_cast<std::uint32_t>(history.entries().size());
  const std::uint32_t count = std::min(held, most);
  return {history.last_position() + 1 - count, count, 0};
}

wire::HistoryEntry wire_entry(const HistoryEntry& entry) {
  wire::HistoryField field{};
  field.position.set(entry.position);
  field.vsan.set(entry.vsan);
  field.requester = static_cast<std::uint8_t>(entry.requester);
  std::copy_n(entry.detail.begin(), std::min(entry.detail.size(), sizeof field.detail.raw),
              field.detail.raw);
  wire::HistoryEntry record{};
  record.value.set(static_cast<std::uint32_t>(entry.time));
  record.byte_value = static_cast<std::uint8_t>(entry.change);
  record.field = std::bit_cast<wire::bytes<sizeof field>>(field);
  return record;
}

Bytes reply_with(wire::HistoryRequest command, const History& history, const Batch& batch) {
  wire::HistoryEntriesHead head{};
  head.count.set(batch.count);
  head.summary_word.set(batch.lost);
  Bytes entries = to_bytes(head);
  entries.reserve(entries.size() + batch.count * sizeof(wire::HistoryEntry));
  for (std::uint32_t i = 0; i < batch.count; ++i) {
    append(entries, wire_entry(*history.at(batch.first + i)));
  }
  command.status.set(0);
  command.hist_key.set(batch.first + batch.count - 1);
  return TlvReply()
      .add(TlvType::kHistoryRequest, command)
      .add(TlvType::kHistoryEntries, ByteView(entries))
      .take();
}

}  // namespace

Answer handle_history(const Request& request, Switch& model) {
  const auto message = TlvMessage::parse(request.payload);
  const auto* command =
      message ? message->record<wire::HistoryRequest>(TlvType::kHistoryRequest) : nullptr;
  if (command == nullptr) return Malformed{"history without its request TLV"};
  if (platform::message_type(command->platform) != wire::MessageType::kGet) {
    return FcdStatus::kUnknownOperation;
  }
  const History& history = model.history;
  const std::uint32_t position = command->hist_key.get();
  const std::uint32_t wanted = command->hist_arg1.get();
  const std::uint32_t most = wanted == 0 ? kMostEntries : std::min(wanted, kMostEntries);
  switch (HistoryOperation{command->hist_op.get()}) {
    case HistoryOperation::kAfter:
      if (position > history.last_position()) return FcdStatus::kNoHistoryPosition;
      return reply_with(*command, history, entries_after(history, position, most));
    case HistoryOperation::kLatest:
      return reply_with(*command, history, latest_entries(history, most));
    case HistoryOperation::kExtent:
      return reply_with(*command, history, {history.last_position() + 1, 0, 0});
  }
  return FcdStatus::kUnknownOperation;
}

Bytes history_status_reply(ByteView request, FcdStatus status) {
  const auto message = TlvMessage::parse(request);
  const auto* tlv = message ? message->only(TlvType::kHistoryRequest) : nullptr;
  auto command = leading_record<wire::HistoryRequest>(tlv == nullptr ? ByteView{} : tlv->value);
  command.status.set(static_cast<Status>(status));
  // The second TLV is empty, but readers look at two.
  return TlvReply()
      .add(TlvType::kHistoryRequest, command)
      .add(TlvType::kHistoryEntries, wire::HistoryEntriesHead{})
      .take();
}

}  // namespace ficon::emulator
