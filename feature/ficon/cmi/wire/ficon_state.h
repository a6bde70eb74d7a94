/** Turning FICON on or off on a VSAN: a bare header whose words stand in an order of its own. */
#pragma once

#include "wire/cmi_header.h"

namespace ficon::wire {

/** VSAN first and requester last, unlike the TLV requests: intended. */
struct FiconStateRequest {
  PlatformHeader platform;
  be32 vsan;
  host32 state;   // 0 off, else on; not swapped, unlike its neighbours: intended
  host32 status;  // replies only
  be32 requester;
};
static_assert(is_packed<FiconStateRequest, 128>);
static_assert(offsetof(FiconStateRequest, vsan) == 112);
static_assert(offsetof(FiconStateRequest, state) == 116);
static_assert(offsetof(FiconStateRequest, status) == 120);
static_assert(offsetof(FiconStateRequest, requester) == 124);

}  // namespace ficon::wire
