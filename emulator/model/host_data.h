/**
 * The host data of a VSAN: bytes that the host side keeps on the switch. They reach as far as was
 * ever written; what was skipped reads as zero. They are no configuration, so the key counter does
 * not count them.
 */
#pragma once

#include <span>

#include "model/switch.h"

namespace ficon::emulator {

/** Writes them; what already stands there is done, and recorded nowhere. */
FcdStatus write_host_data(Switch& model, std::uint32_t vsan, const Asker& asker,
                          std::uint32_t offset, std::span<const std::uint8_t> bytes);

/** The name under which they are stored. */
std::string host_data_object(VsanNumber vsan);

}  // namespace ficon::emulator
