/** Port swap: bare blocks, no TLV array. Opcode 7867 names port numbers, 7891 interfaces. */
#pragma once

#include "wire/cmi_header.h"
#include "wire/port_plan.h"

namespace ficon::wire {

struct PortSwapRequest {
  PlatformHeader platform;
  bytes<4> spare0;
  be32 first;
  be32 second;
  bytes<4> spare1;
};
static_assert(is_packed<PortSwapRequest, 128>);
static_assert(offsetof(PortSwapRequest, first) == 116);
static_assert(offsetof(PortSwapRequest, second) == 120);

struct PortSwapOperation {
  bytes<8> data;
};
static_assert(is_packed<PortSwapOperation, 8>);

/** An operation as fcd writes it; the library hands it on unread. */
struct SwapInterfaces {
  be32 first;  // interface indexes that exchanged their port addresses
  be32 second;
};
static_assert(is_packed<SwapInterfaces, sizeof(PortSwapOperation)>);

/** Head of the reply; `count` operations follow. */
struct PortSwapReply {
  PlatformHeader platform;
  host32 status;
  bytes<8> spare;
  host32 count;
};
static_assert(is_packed<PortSwapReply, 128>);
static_assert(offsetof(PortSwapReply, status) == 112);
static_assert(offsetof(PortSwapReply, count) == 124);

/** A swap moves no port twice. */
inline constexpr std::uint32_t kMaxSwapOperations = kPortPositions;

}  // namespace ficon::wire
