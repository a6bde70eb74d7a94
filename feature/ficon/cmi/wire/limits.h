/** Switch-wide limits: get-next type, maximum ports, MIH time-out. */
#pragma once

#include "wire/cmi_header.h"

namespace ficon::wire {

/** Get-next type and maximum ports: a bare block, the value in host order both ways. */
struct LimitBlock {
  PlatformHeader platform;
  host32 status;  // replies only
  host32 value;
};
static_assert(is_packed<LimitBlock, 120>);
static_assert(offsetof(LimitBlock, status) == 112);
static_assert(offsetof(LimitBlock, value) == 116);

/** The operations on the MIH time-out: setting awaits no reply. */
enum class MihOperation : std::uint8_t { kSet = 0, kSetDefault = 1, kGet = 2, kGetDefault = 3 };

struct MihTimeout {
  be32 timeout;
  be32 mih_arg;
  std::uint8_t operation;
  be32 status;  // fcd's, in replies; the library hands it on unread
};
static_assert(is_packed<MihTimeout, 13>);
static_assert(offsetof(MihTimeout, operation) == 8);

}  // namespace ficon::wire
