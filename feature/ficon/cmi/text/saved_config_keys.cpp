/** Keys of the saved configuration, and the bitsets in its records. */
#include <ficon_cmi.h>

#include <cstring>

#include "wire/saved_config.h"

using namespace ficon;

namespace {

std::uint32_t build_key(std::uint8_t** key, std::uint32_t type) {
  wire::SavedConfigKey record{};
  record.type = static_cast<std::uint8_t>(type);
  std::memcpy(*key, &record, sizeof record);
  return 0;
}

/** In front of every bitset's bits; neither function touches it. */
constexpr std::size_t kBitsetHeader = sizeof(std::uint32_t);

}  // namespace

uint32_t ficon_pss_build_pa_pn_map_key(uint8_t** key) {
  return build_key(key, static_cast<std::uint32_t>(wire::SavedRecord::kAddressToNumberMap));
}

uint32_t ficon_pss_build_pn_if_map_key(uint8_t** key) {
  return build_key(key, static_cast<std::uint32_t>(wire::SavedRecord::kNumberToInterfaceMap));
}

uint32_t ficon_pss_build_port_pn_map_key(uint8_t** key, uint32_t block) {
  return build_key(key, static_cast<std::uint32_t>(wire::SavedRecord::kPortTable) + block);
}

void ficon_bitset_to_bitarray(const void* bitset, uint8_t* array, uint32_t n) {
  std::memcpy(array, static_cast<const std::uint8_t*>(bitset) + kBitsetHeader, n);
}

void ficon_bitset_from_bitarray(void* bitset, const uint8_t* array, uint32_t n) {
  std::memcpy(static_cast<std::uint8_t*>(bitset) + kBitsetHeader, array, n);
}
