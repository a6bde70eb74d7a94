/**
 * The stored contents of a configuration file as bytes, for copies to and from elsewhere:
 *
 *   0    magic "FCFG"
 *   4    u16 version, 1
 *   6    u16 number of ports, 254
 *   8    u32 bytes in all
 *   12   u32 CRC-32 (the one of zlib) of everything behind this word
 *   16   the file's header, 128 bytes
 *   144  for each port address 00 to fd: u8 blocked, 24 bytes of name, 32 bytes of prohibit mask
 *   ...  notes: bytes that the director keeps with the file and does not look into
 *
 * Numbers are big-endian; the bit of port address a in a mask is 0x80 >> (a mod 8) of byte a / 8.
 */
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "model/configuration_file.h"

namespace ficon::emulator {

std::vector<std::uint8_t> to_contents(const ConfigurationFile& file);

/** Null for contents that are incomplete, damaged or of no sense. */
std::optional<ConfigurationFile> from_contents(std::span<const std::uint8_t> contents);

}  // namespace ficon::emulator
