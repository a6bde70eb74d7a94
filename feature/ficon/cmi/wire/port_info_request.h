/** The request record of opcode 7856: a file's per-port information, or the port map. */
#pragma once

#include "wire/cmi_header.h"

namespace ficon::wire {

/** What a request of opcode 7856 selects ports by. */
enum class PortSelector : std::uint32_t {
  kPortAddresses = 0,
  kInterfaces = 2,
  kEveryPortNumber = 3,  // the port map, whole
  kPortNumbers = 4,      // the port map of a range
};

struct PortInfoRequest {
  PlatformHeader platform;
  be32 selector;
  be32 vsan;
  host32 query_flags;
  host32 requester;
  bytes<8> file_name;  // EBCDIC
  std::uint8_t spare;
  host32 file_key;
  host32 status;  // replies only
};
static_assert(is_packed<PortInfoRequest, 145>);
static_assert(offsetof(PortInfoRequest, selector) == 112);
static_assert(offsetof(PortInfoRequest, vsan) == 116);
static_assert(offsetof(PortInfoRequest, query_flags) == 120);
static_assert(offsetof(PortInfoRequest, requester) == 124);
static_assert(offsetof(PortInfoRequest, file_name) == 128);
static_assert(offsetof(PortInfoRequest, file_key) == 137);
static_assert(offsetof(PortInfoRequest, status) == 141);

/**
 * What the request asks for, both ends included: of port positions in the port map, of port
 * addresses or interface indexes in a configuration file.
 */
struct PortRange {
  be32 first;
  be32 last;
};
static_assert(is_packed<PortRange, 8>);

}  // namespace ficon::wire
