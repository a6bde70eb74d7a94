/** Bytes in JSON: lower-case hexadecimal text. */
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace ficon::emulator {

std::string to_hex(std::span<const std::uint8_t> bytes);
/** Fills `bytes`; throws when the text is of another length or no hexadecimal. */
void from_hex(const std::string& text, std::span<std::uint8_t> bytes);

}  // namespace ficon::emulator
