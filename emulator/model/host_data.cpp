#include "model/host_data.h"

#include <algorithm>

#include "wire/host_data.h"

namespace ficon::emulator {

std::string host_data_object(VsanNumber vsan) {
  return vsan_object(vsan) + "/host-data";
}

FcdStatus write_host_data(Switch& model, std::uint32_t number, const Asker& asker,
                          std::uint32_t offset, std::span<const std::uint8_t> bytes) {
  const VsanAccess access = model.change_vsan(number, asker);
  if (access.status != FcdStatus::kDone) return access.status;
  if (offset > wire::kHostDataSize || bytes.size() > wire::kHostDataSize - offset) {
    return FcdStatus::kBeyondHostData;
  }
  if (bytes.empty()) return FcdStatus::kDone;
  std::vector<std::uint8_t>& data = access.vsan->host_data;
  const std::size_t end = offset + bytes.size();
  if (end <= data.size() && std::equal(bytes.begin(), bytes.end(), data.begin() + offset)) {
    return FcdStatus::kDone;
  }
  if (end > data.size()) data.resize(end);
  std::ranges::copy(bytes, data.begin() + offset);
  model.touched.object(host_data_object(access.vsan->number));
  model.record(access.vsan->number, asker, Change::kHostData,
               std::to_string(bytes.size()) + " at " + std::to_string(offset));
  return FcdStatus::kDone;
}

}  // namespace ficon::emulator
