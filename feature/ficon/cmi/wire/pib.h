/** The product identification block: a range of records. */
#pragma once

#include "wire/cmi_header.h"

namespace ficon::wire {

/** Request and, with the range that fcd returns, head of the reply. */
struct PibRequest {
  PlatformHeader platform;
  be32 pib_key;
  host32 status;  // replies only
  std::uint8_t first;
  std::uint8_t last;  // included
};
static_assert(is_packed<PibRequest, 122>);
static_assert(offsetof(PibRequest, pib_key) == 112);
static_assert(offsetof(PibRequest, status) == 116);
static_assert(offsetof(PibRequest, first) == 120);

/** What a record says belongs to fcd; the library passes it on as it stands. */
struct PibRecord {
  bytes<50> data;
};
static_assert(is_packed<PibRecord, 50>);

enum class PibKind : std::uint8_t { kSwitch = 1, kModule = 2, kPort = 3 };

/** What fcd writes into a record. Texts are ASCII, NUL-padded, cut. */
struct PibContents {
  PibKind kind;
  std::uint8_t module;  // 0: the switch itself
  be16 tag;             // of ports: the FICON port number; 512 none
  be32 if_index;        // of ports
  bytes<12> type;
  bytes<12> model;
  bytes<12> serial;
  std::uint8_t port;  // in the module, from 0
  bytes<5> spare;
};
static_assert(is_packed<PibContents, sizeof(PibRecord)>);
static_assert(offsetof(PibContents, type) == 8);

}  // namespace ficon::wire
