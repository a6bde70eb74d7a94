/** One number of the box status, by its label. */
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "session.h"

namespace ficon::ctl {

/** Null where the director tells no such number. */
std::optional<std::uint32_t> box_count(Session& session, const std::string& label);

}  // namespace ficon::ctl
