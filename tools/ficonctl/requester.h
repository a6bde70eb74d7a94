/** Who asks, by name and by the code that requests carry. */
#pragma once

#include <cstdint>
#include <string>

namespace ficon::ctl {

/** operator, agent, host, or one of their codes. */
std::uint32_t parse_requester(const std::string& text);

/** The name of a code; "requester N" for one that has none. */
std::string requester_name(std::uint32_t code);

}  // namespace ficon::ctl
