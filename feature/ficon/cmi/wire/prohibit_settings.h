/** Switch-wide settings of port prohibiting: bare blocks, no TLV array. */
#pragma once

#include "wire/cmi_header.h"

namespace ficon::wire {

enum class ProhibitOperation : std::uint32_t {
  kSetDefault = 0,
  kGetDefault = 1,
  kSetAclNotFcid = 2,
  kGetAclNotFcid = 3,
};

/** Opcode 7895. */
struct ProhibitRequest {
  PlatformHeader platform;
  host32 value;
  bytes<4> spare;
  host32 operation;
};
static_assert(is_packed<ProhibitRequest, 124>);
static_assert(offsetof(ProhibitRequest, value) == 112);
static_assert(offsetof(ProhibitRequest, operation) == 120);

struct ProhibitReply {
  PlatformHeader platform;
  host32 value;
  host32 status;
};
static_assert(is_packed<ProhibitReply, 120>);
static_assert(offsetof(ProhibitReply, value) == 112);
static_assert(offsetof(ProhibitReply, status) == 116);

/** Opcode 7896: the request is a platform header alone. */
struct AclDowngradeReply {
  bytes<8> spare;
  host32 status;
};
static_assert(is_packed<AclDowngradeReply, 12>);
static_assert(offsetof(AclDowngradeReply, status) == 8);

}  // namespace ficon::wire
