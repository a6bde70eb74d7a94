#include "vsan_record.h"

#include <bit>

#include "wire/vsan_config.h"

namespace ficon::ctl {

ficon_cmi_vsan_cfg_t read_vsan(Session& session, std::uint32_t vsan) {
  ficon_cmi_vsan_cfg_t record{};
  session.require("cannot read VSAN " + std::to_string(vsan), ficon_cmi_get_vsan_info, kGet, vsan,
                  &record);
  return record;
}

std::uint32_t vsan_number(const ficon_cmi_vsan_cfg_t& record) {
  return std::bit_cast<wire::VsanConfig>(record).vsan.get();
}

std::uint32_t key_counter(const ficon_cmi_vsan_cfg_t& record) {
  return std::bit_cast<wire::VsanConfig>(record).key_counter.get();
}

}  // namespace ficon::ctl
