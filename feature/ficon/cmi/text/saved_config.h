/** fcd's saved configuration as the generator of command lines needs it. */
#pragma once

#include <platform/pss.h>

#include "wire/saved_config.h"

namespace ficon {

/** VSANs by number: the bit of VSAN v is 0x80 >> (v mod 8) of byte v / 8. */
class VsanSet {
 public:
  static constexpr std::uint32_t kVsans = 4096;

  bool contains(std::uint32_t vsan) const { return (bits_[vsan / 8] & bit(vsan)) != 0; }
  void add(std::uint32_t vsan) { bits_[vsan / 8] |= bit(vsan); }
  std::uint8_t* bits() { return bits_; }

 private:
  static std::uint8_t bit(std::uint32_t vsan) {
    return static_cast<std::uint8_t>(0x80 >> (vsan % 8));
  }
  std::uint8_t bits_[kVsans / 8] = {};
};

/** What a walk of the store finds; a record that is not there reads as zero. */
struct SavedSettings {
  VsanSet vsans;
  bool any_vsan = false;
  std::uint32_t feature_enabled = 0;
  std::uint32_t default_prohibit = 0;
  std::uint32_t mih_timeout = 0;
};

SavedSettings read_settings(pss_store_t store);

/** The maps between port addresses, port numbers and interfaces, and the table of all ports. */
struct PortMaps {
  std::uint16_t* address_to_number;    // as many rows as the switch has FICON ports
  std::uint32_t* number_to_interface;  // the same
  ficon_port_pn_entry_t table[wire::kPortPositions];
};

/** What is missing in the store is made up as fcd would: see each field's default. */
void read_port_maps(pss_store_t store, std::uint32_t rows, PortMaps* maps);

/** The first word of a value, as the machine orders it. */
std::uint32_t first_word(const void* value, std::uint32_t length);

}  // namespace ficon
