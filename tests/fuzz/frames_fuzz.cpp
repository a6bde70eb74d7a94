/**
 * The frames of a connection: whatever packets come, a message stays within the limit and is made
 * of the pieces that came.
 */
#include "input.h"
#include "protocol/frame.h"
#include "server/assembler.h"

using namespace ficon::fuzz;
using ficon::emulator::Assembler;
using ficon::platform::FrameHeader;
using ficon::platform::FrameKind;

namespace {

constexpr std::size_t kLimit = 3000;

/** A packet of the input: as it stands, or behind a header that begins well. */
Bytes next_packet(Input& input) {
  const bool with_header = (input.u8() & 1) != 0;
  if (!with_header) {
    const ByteView raw = input.block();
    return {raw.begin(), raw.end()};
  }
  FrameHeader header{};
  header.magic.set(ficon::platform::kFrameMagic);
  header.version.set(ficon::platform::kFrameVersion);
  header.kind.set(static_cast<std::uint16_t>(FrameKind::kRequest));
  header.token.set(input.u8());
  header.total.set(input.u16());
  header.offset.set(input.u16());
  Bytes packet = ficon::emulator::to_bytes(header);
  const ByteView piece = input.block();
  packet.insert(packet.end(), piece.begin(), piece.end());
  return packet;
}

void assemble(Input& input) {
  Assembler assembler(kLimit);
  std::size_t received = 0;
  while (!input.empty()) {
    const Bytes packet = next_packet(input);
    if (assembler.take(packet) != nullptr) return;
    received += packet.size() - sizeof(FrameHeader);
    const auto message = assembler.completed();
    if (!message) continue;
    require(message->payload.size() <= kLimit, "a message stays within the limit");
    require(message->payload.size() == received, "a message is made of what was received");
    received = 0;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input({data, size});
  assemble(input);
  return 0;
}
