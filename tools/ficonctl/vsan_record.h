/** The settings of a VSAN as the tool reads them: for every command that has to know them. */
#pragma once

#include <ficon_cmi.h>

#include "session.h"

namespace ficon::ctl {

inline constexpr std::uint32_t kGet = 1;
inline constexpr std::uint32_t kGetNext = 2;

ficon_cmi_vsan_cfg_t read_vsan(Session& session, std::uint32_t vsan);

/** The VSAN number of a record: big-endian there. */
std::uint32_t vsan_number(const ficon_cmi_vsan_cfg_t& record);
std::uint32_t key_counter(const ficon_cmi_vsan_cfg_t& record);

}  // namespace ficon::ctl
