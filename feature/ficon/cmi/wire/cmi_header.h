/** The CMI header with the request words of the TLV requests. */
#pragma once

#include "wire/byte_order.h"

namespace ficon::wire {

/** What a header asks for; the platform's part of the header carries it. */
enum class MessageType : std::uint32_t { kGet = 1, kGetNext = 2, kSet = 3 };

/** The family that a header belongs to. */
enum class Subtype : std::uint32_t {
  kPlain = 0,   // box status, access-list downgrade
  kLimits = 8,  // get-next type, maximum ports
  kPib = 10,
  kProhibit = 12,
  kVsan = 16,  // VSAN state, configuration and information; port swap
  kPortmapFcid = 18,
  kHistory = 20,
  kPortInfo = 33,  // per-port information of a file, port map
  kFile = 46,
};

/** The platform's part, filled by `ficon_init_cmi_hdr`; the library's own words follow it. */
using PlatformHeader = bytes<112>;

struct CmiHeader {
  PlatformHeader platform;
  be32 requester;
  be32 operation;
  be32 vsan;
  host32 status;  // zero in requests
};
static_assert(is_packed<CmiHeader, 128>);
static_assert(offsetof(CmiHeader, requester) == 112);
static_assert(offsetof(CmiHeader, operation) == 116);
static_assert(offsetof(CmiHeader, vsan) == 120);
static_assert(offsetof(CmiHeader, status) == 124);

}  // namespace ficon::wire
