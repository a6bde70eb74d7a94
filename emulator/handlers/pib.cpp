#include "handlers/pib.h"

#include <algorithm>

#include "handlers/tlv_message.h"
#include "model/identification.h"
#include "protocol/cmi_header.h"

namespace ficon::emulator {
namespace {

using wire::TlvType;

template <std::size_t N>
void put_text(wire::bytes<N>& field, const std::string& text) {
  std::copy_n(text.begin(), std::min(text.size(), N), field.raw);
}

wire::PibContents record_of(const Identification& it) {
  wire::PibContents record{};
  record.kind = it.kind;
  record.module = it.module;
  record.tag.set(it.tag);
  record.if_index.set(it.if_index);
  put_text(record.type, it.type);
  put_text(record.model, it.model);
  put_text(record.serial, it.serial);
  record.port = it.port;
  return record;
}

}  // namespace

Answer handle_pib(const Request& request, Switch& model) {
  const auto message = TlvMessage::parse(request.payload);
  const auto* asked = message ? message->record<wire::PibRequest>(TlvType::kPibRequest) : nullptr;
  if (asked == nullptr) return Malformed{"identification block without its request TLV"};
  const auto all = identifications(model, asked->pib_key.get());
  if (asked->first > asked->last || asked->first >= all.size()) {
    return FcdStatus::kNoIdentification;
  }
  wire::PibRequest head = *asked;
  head.status.set(0);
  head.last = static_cast<std::uint8_t>(std::min<std::size_t>(asked->last, all.size() - 1));
  Bytes records;
  for (std::size_t i = head.first; i <= head.last; ++i) {
    append(records, record_of(all[i]));
  }
  return TlvReply()
      .add(TlvType::kPibRequest, head)
      .add(TlvType::kPibRecords, ByteView(records))
      .take();
}

Bytes pib_status_reply(ByteView request, FcdStatus status) {
  const auto message = TlvMessage::parse(request);
  const auto* tlv = message ? message->only(TlvType::kPibRequest) : nullptr;
  auto head = leading_record<wire::PibRequest>(tlv == nullptr ? ByteView{} : tlv->value);
  head.status.set(static_cast<Status>(status));
  return TlvReply().add(TlvType::kPibRequest, head).take();
}

}  // namespace ficon::emulator
