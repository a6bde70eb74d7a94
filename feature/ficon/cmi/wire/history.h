/** The director history: a walk from a position, a batch of entries at a time. */
#pragma once

#include "wire/cmi_header.h"

namespace ficon::wire {

/** Larger operations in a reply are malformed. */
inline constexpr std::uint32_t kLastHistoryOperation = 2;

/** Request and head of the reply. */
struct HistoryRequest {
  PlatformHeader platform;
  host32 status;  // replies only
  be32 hist_key;  // the position: in, and the one to go on from out
  be32 hist_op;
  be32 hist_arg1;
  be32 hist_arg2;
};
static_assert(is_packed<HistoryRequest, 132>);
static_assert(offsetof(HistoryRequest, status) == 112);
static_assert(offsetof(HistoryRequest, hist_key) == 116);
static_assert(offsetof(HistoryRequest, hist_op) == 120);
static_assert(offsetof(HistoryRequest, hist_arg2) == 128);

/** The entries' TLV: this head, then `count` entries. */
struct HistoryEntriesHead {
  be32 count;
  bytes<4> spare;
  be32 summary_word;
};
static_assert(is_packed<HistoryEntriesHead, 12>);

/** What fcd records, in its own numbers; the library passes them on. */
enum class HistoryChange : std::uint8_t {
  kFeatureEnabled = 1,
  kFiconEnabled = 2,
  kFiconDisabled = 3,
  kModes = 4,
  kCodepage = 5,
  kClock = 6,
  kFcidLastByte = 7,
  kLockReset = 8,
  kFile = 9,
  kPortNumbers = 10,
  kPortAddress = 11,
  kPortSwap = 12,
  kProhibitSettings = 13,
  kHostData = 20,
  kLimits = 21,
  kMihTimeout = 22,
};

struct HistoryChangeName {
  HistoryChange change;
  const char* name;
};
inline constexpr HistoryChangeName kHistoryChangeNames[] = {
    {HistoryChange::kFeatureEnabled, "feature enabled"},
    {HistoryChange::kFiconEnabled, "FICON enabled"},
    {HistoryChange::kFiconDisabled, "FICON disabled"},
    {HistoryChange::kModes, "modes"},
    {HistoryChange::kCodepage, "code page"},
    {HistoryChange::kClock, "clock"},
    {HistoryChange::kFcidLastByte, "FCID last byte"},
    {HistoryChange::kLockReset, "lock reset"},
    {HistoryChange::kFile, "file"},
    {HistoryChange::kPortNumbers, "port numbers"},
    {HistoryChange::kPortAddress, "port address"},
    {HistoryChange::kPortSwap, "port swap"},
    {HistoryChange::kProhibitSettings, "prohibit settings"},
    {HistoryChange::kHostData, "host data"},
    {HistoryChange::kLimits, "limits"},
    {HistoryChange::kMihTimeout, "MIH time-out"},
};

/** What fcd is asked for; `hist_arg1` bounds the entries, 0: as many as there is room for. */
enum class HistoryOperation : std::uint32_t {
  kAfter = 0,   // the entries behind the position
  kLatest = 1,  // the last ones, whatever the position
  kExtent = 2,  // none: only the newest position
};

/** What fcd writes into an entry: `value` is the time, `byte_value` the change, `field` this. */
struct HistoryField {
  be32 position;
  be16 vsan;               // 0: the switch
  std::uint8_t requester;  // 1 to 3; 4 where the request had no place for it
  std::uint8_t spare;
  bytes<24> detail;  // ASCII, NUL-padded, cut
};
static_assert(is_packed<HistoryField, 32>);

struct HistoryEntry {
  be32 value;
  std::uint8_t byte_value;
  bytes<32> field;
  bytes<3> spare;
};
static_assert(is_packed<HistoryEntry, 40>);
static_assert(offsetof(HistoryEntry, field) == 5);

}  // namespace ficon::wire
