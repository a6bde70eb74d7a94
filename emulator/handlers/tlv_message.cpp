#include "handlers/tlv_message.h"

#include <platform/tlv_array.h>

namespace ficon::emulator {
namespace {

constexpr std::uint32_t kArrayHeader = 4;
constexpr std::uint32_t kTlvHeader = 4;
constexpr std::uint32_t kAlign = 1;
constexpr std::size_t kUsualReply = 2048;  // most fit, and grow in place

}  // namespace

std::optional<TlvMessage> TlvMessage::parse(ByteView payload) {
  // The array says itself how long it is; only what the payload really holds may be walked.
  if (payload.size() < kArrayHeader) return std::nullopt;
  if (tlv_aligned_array_size_get(payload.data(), kAlign) != payload.size()) return std::nullopt;
  TlvMessage message;
  std::uint32_t cursor = 0;
  const std::int32_t count = tlv_aligned_array_get_num_tlvs(payload.data(), kAlign);
  if (count <= 0) return std::nullopt;
  message.tlvs_.reserve(static_cast<std::size_t>(count));
  for (std::int32_t i = 0; i < count; ++i) {
    std::uint16_t type = 0;
    std::uint16_t length = 0;
    void* value = nullptr;
    if (tlv_aligned_array_get_next_tlv(payload.data(), &type, &length, &value, kAlign, &cursor)) {
      return std::nullopt;
    }
    message.tlvs_.push_back(
        {wire::TlvType{type}, {static_cast<const std::uint8_t*>(value), length}});
  }
  return message;
}

const TlvMessage::Tlv* TlvMessage::only(wire::TlvType type) const {
  const Tlv* found = nullptr;
  for (const Tlv& tlv : tlvs_) {
    if (tlv.type != type) continue;
    if (found != nullptr) return nullptr;
    found = &tlv;
  }
  return found;
}

TlvReply::TlvReply() {
  bytes_.reserve(kUsualReply);
  bytes_.resize(kArrayHeader);
}

TlvReply& TlvReply::add(wire::TlvType type, ByteView value) {
  bytes_.resize(bytes_.size() + kTlvHeader + value.size());
  tlv_aligned_array_add_tlv(bytes_.data(), static_cast<std::uint32_t>(bytes_.size()),
                            static_cast<std::uint16_t>(type),
                            static_cast<std::uint16_t>(value.size()), value.data(), kAlign);
  return *this;
}

wire::CmiHeader header_of(ByteView request) {
  const auto message = TlvMessage::parse(request);
  const auto* tlv = message ? message->only(wire::TlvType::kHeader) : nullptr;
  return leading_record<wire::CmiHeader>(tlv == nullptr ? ByteView{} : tlv->value);
}

Bytes header_status_reply(ByteView request, FcdStatus status) {
  wire::CmiHeader header = header_of(request);
  header.status.set(static_cast<Status>(status));
  return TlvReply().add(wire::TlvType::kHeader, header).take();
}

}  // namespace ficon::emulator
