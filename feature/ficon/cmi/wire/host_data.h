/** Host data: fixed records of big-endian words, then the bytes. */
#pragma once

#include "wire/byte_order.h"

namespace ficon::wire {

/** The block of a VSAN. */
inline constexpr std::uint32_t kHostDataSize = 16384;

struct GetHostDataRequest {
  be32 vsan;
};
static_assert(is_packed<GetHostDataRequest, 4>);

/** `length` bytes follow. */
struct GetHostDataReply {
  be32 status;
  be32 vsan;
  be32 length;
};
static_assert(is_packed<GetHostDataReply, 12>);

/** `length` bytes follow. */
struct SetHostDataRequest {
  be32 vsan;
  be32 offset;
  be32 length;
};
static_assert(is_packed<SetHostDataRequest, 12>);

struct SetHostDataReply {
  be32 status;
  be32 vsan;
};
static_assert(is_packed<SetHostDataReply, 8>);

}  // namespace ficon::wire
