#include "text/saved_config.h"

#include <platform/ficon_base.h>

#include <cstring>

namespace ficon {
namespace {

constexpr std::uint32_t kFirst = 1;
constexpr std::uint32_t kNext = 3;
constexpr std::uint32_t kKeyLength = sizeof(wire::SavedConfigKey);

void note(const wire::SavedConfigKey& key, const void* value, std::uint32_t length,
          SavedSettings* settings) {
  switch (wire::SavedRecord{key.type}) {
    case wire::SavedRecord::kVsan:
      settings->any_vsan = true;  // also one that nobody can ask for
      if (key.vsan.get() < VsanSet::kVsans) settings->vsans.add(key.vsan.get());
      break;
    case wire::SavedRecord::kFeatureEnabled:
      settings->feature_enabled = first_word(value, length);
      break;
    case wire::SavedRecord::kDefaultProhibit:
      settings->default_prohibit = first_word(value, length);
      break;
    case wire::SavedRecord::kDefaultMihTimeout:
      settings->mih_timeout = first_word(value, length);
      break;
    default:
      break;
  }
}

bool fetch(pss_store_t store, const std::uint8_t* key, void* value, std::uint32_t size) {
  std::uint32_t length = size;
  return pss_fetch(store, key, kKeyLength, value, &length) == 0 && length == size;
}

/** Without a record, row i holds i. */
void read_address_map(pss_store_t store, std::uint32_t rows, std::uint16_t* map) {
  std::uint8_t bytes[kKeyLength];
  std::uint8_t* key = bytes;
  ficon_pss_build_pa_pn_map_key(&key);
  if (fetch(store, key, map, rows * sizeof *map)) return;
  for (std::uint32_t i = 0; i < rows; ++i) map[i] = static_cast<std::uint16_t>(i);
}

/** Without a record, no number has an interface. */
void read_interface_map(pss_store_t store, std::uint32_t rows, std::uint32_t* map) {
  std::uint8_t bytes[kKeyLength];
  std::uint8_t* key = bytes;
  ficon_pss_build_pn_if_map_key(&key);
  if (!fetch(store, key, map, rows * sizeof *map)) std::memset(map, 0, rows * sizeof *map);
}

/** All blocks, or none of them: a part of the table says nothing. */
bool read_port_table(pss_store_t store, ficon_port_pn_entry_t* table) {
  std::uint32_t present = 0;
  for (std::uint32_t block = 0; block < wire::kPortTableBlocks; ++block) {
    std::uint8_t bytes[kKeyLength];
    std::uint8_t* key = bytes;
    ficon_pss_build_port_pn_map_key(&key, block);
    if (fetch(store, key, table + block * wire::kPortsPerBlock,
              wire::kPortsPerBlock * sizeof *table)) {
      ++present;
    }
  }
  return present == wire::kPortTableBlocks;
}

}  // namespace

std::uint32_t first_word(const void* value, std::uint32_t length) {
  std::uint32_t word = 0;
  if (length >= sizeof word) std::memcpy(&word, value, sizeof word);
  return word;
}

SavedSettings read_settings(pss_store_t store) {
  SavedSettings settings;
  pss_location_t location = nullptr;
  for (std::uint32_t where = kFirst;
       pss_move2location(store, where, &location) == 0 && location != nullptr; where = kNext) {
    const std::uint8_t* key = nullptr;
    const void* value = nullptr;
    std::uint32_t key_length = 0;
    std::uint32_t length = 0;
    if (pss_getvalue(store, location, &key, &key_length, &value, &length) != 0) break;
    if (key_length != kKeyLength) continue;
    wire::SavedConfigKey record;
    std::memcpy(&record, key, sizeof record);
    note(record, value, length, &settings);
  }
  return settings;
}

void read_port_maps(pss_store_t store, std::uint32_t rows, PortMaps* maps) {
  read_address_map(store, rows, maps->address_to_number);
  read_interface_map(store, rows, maps->number_to_interface);
  if (read_port_table(store, maps->table)) return;
  std::memset(maps->table, 0, sizeof maps->table);
  ficon_port_to_pn_init(wire::kPortPositions, maps->table, rows, maps->address_to_number);
}

}  // namespace ficon
