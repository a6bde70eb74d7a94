/** What the switch, its modules and its ports say of themselves; it follows from the chassis. */
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "model/switch.h"
#include "wire/pib.h"

namespace ficon::emulator {

struct Identification {
  wire::PibKind kind;
  std::uint8_t module = 0;  // 0: the switch itself
  std::uint8_t port = 0;    // in the module, from 0
  std::uint16_t tag = kNoPort;
  if_index_t if_index = 0;
  std::string type;
  std::string model;
  std::string serial;
};

/** Key 0: the switch, then its modules; a module's number: its ports. Empty for another key. */
std::vector<Identification> identifications(const Switch& model, std::uint32_t key);

}  // namespace ficon::emulator
