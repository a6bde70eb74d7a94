/** The missing-interrupt-handler time-out: its encoding, and the daemon's. */
#pragma once

#include <cstdint>
#include <optional>

#include "session.h"

namespace ficon::ctl {

inline constexpr std::uint32_t kLongestTimeout = 63'000;

/**
 * 6 bits of value, two that choose 1, 10, 100 or 1000. The greatest of several encodings, since the
 * configuration text leaves out the lowest ones. A UsageError where there is none.
 */
std::uint32_t encode_mih_timeout(std::uint32_t seconds);

/** Encoded. Without a VSAN, the switch's default. */
std::uint32_t read_mih_timeout(Session& session, std::optional<std::uint32_t> vsan);

/** "the MIH time-out of VSAN 20", "the default MIH time-out" */
std::string mih_timeout_name(std::optional<std::uint32_t> vsan);

/**
 * Setting is not answered: only reading it back tells whether it was taken.
 *
 * @param encoded  0: a VSAN takes the switch's default again
 * @return what it is now, encoded
 */
std::uint32_t set_mih_timeout(Session& session, std::optional<std::uint32_t> vsan,
                              std::uint32_t encoded);

}  // namespace ficon::ctl
