/** The rows that every change under the lock has in common, around its own. */
#pragma once

#include <vector>

#include "double/fault_sweep.h"

namespace ficon::test {

/** What the common calls' failures lead to. By default the change goes on and gives 0. */
struct LockedOutcome {
  std::uint32_t lock_send = 0x40850012;
  std::uint32_t lock_recv = 0x40850012;
};

/** The check, the lock, the change's own calls, the free. */
inline std::vector<FaultCase> locked_rows(const std::vector<FaultCase>& own,
                                          LockedOutcome outcome = {}) {
  std::vector<FaultCase> rows = {
      {"ficon_send_get_enabled_vsans", 0},  // not known to be enabled: the change goes unlocked
      {"mts_recv", 0},
      {"ficon_parse_get_enabled_vsans", 0},
      {"mts_send", outcome.lock_send},
      {"mts_recv", outcome.lock_recv},
      {"mts_payload_get", 0x40850012},
  };
  rows.insert(rows.end(), own.begin(), own.end());
  rows.insert(rows.end(), {{"mts_send", 0},  // the free: its result does not matter
                           {"mts_recv", 0},
                           {"mts_payload_get", 0}});
  return rows;
}

}  // namespace ficon::test
