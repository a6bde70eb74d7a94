#include "server/assembler.h"

namespace ficon::emulator {

using platform::FrameHeader;
using platform::FrameKind;

const char* Assembler::take(ByteView packet) {
  if (packet.size() < sizeof(FrameHeader)) return "packet is shorter than a frame's header";
  const auto header = leading_record<FrameHeader>(packet);
  const ByteView piece = packet.subspan(sizeof(FrameHeader));
  if (header.magic.get() != platform::kFrameMagic) return "packet is no frame";
  if (header.version.get() != platform::kFrameVersion) return "frame of another version";
  if (header.kind.get() != static_cast<std::uint16_t>(FrameKind::kRequest)) {
    return "frame is no request";
  }
  const std::size_t total = header.total.get();
  if (total > limit_) return "message is longer than the limit";
  if (!assembling_) {
    message_ = {header.token.get(), header.node.get(), header.sap.get(), header.opcode.get(), {}};
    total_ = total;
  } else if (header.token.get() != message_.token || total != total_) {
    return "frame does not continue the message before it";
  }
  if (header.offset.get() != message_.payload.size()) return "frame leaves a gap in its message";
  if (piece.size() > total - message_.payload.size()) return "frame exceeds its message";
  if (piece.empty() && total != 0) return "frame without payload";
  // Grows with what really arrives, whatever total was announced.
  message_.payload.insert(message_.payload.end(), piece.begin(), piece.end());
  complete_ = message_.payload.size() == total;
  assembling_ = !complete_;
  return nullptr;
}

std::optional<Message> Assembler::completed() {
  if (!complete_) return std::nullopt;
  complete_ = false;
  return std::move(message_);
}

FrameHeader reply_head(const Message& reply, std::size_t offset) {
  FrameHeader head{};
  head.magic.set(platform::kFrameMagic);
  head.version.set(platform::kFrameVersion);
  head.kind.set(static_cast<std::uint16_t>(FrameKind::kReply));
  head.token.set(reply.token);
  head.node.set(reply.node);
  head.sap.set(reply.sap);
  head.opcode.set(reply.opcode);
  head.total.set(static_cast<std::uint32_t>(reply.payload.size()));
  head.offset.set(static_cast<std::uint32_t>(offset));
  return head;
}

}  // namespace ficon::emulator
