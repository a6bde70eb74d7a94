/** What `ficon_init_cmi_hdr` puts into the platform's part of a header, and fcd reads there. */
#pragma once

#include <bit>

#include "wire/cmi_header.h"

namespace ficon::platform {

struct CmiHeaderPart {
  wire::be32 message_type;
  wire::be32 subtype;
  wire::bytes<32> word_a;  // NUL-padded, always terminated
  wire::bytes<32> word_b;
  wire::bytes<40> spare;
};
static_assert(wire::is_packed<CmiHeaderPart, sizeof(wire::PlatformHeader)>);

inline wire::MessageType message_type(const wire::PlatformHeader& header) {
  return wire::MessageType{std::bit_cast<CmiHeaderPart>(header).message_type.get()};
}
inline wire::Subtype subtype(const wire::PlatformHeader& header) {
  return wire::Subtype{std::bit_cast<CmiHeaderPart>(header).subtype.get()};
}

}  // namespace ficon::platform
