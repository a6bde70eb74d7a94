#include "store/hex.h"

#include <stdexcept>

namespace ficon::emulator {
namespace {

std::uint8_t from_digit(char digit) {
  if (digit >= '0' && digit <= '9') return static_cast<std::uint8_t>(digit - '0');
  if (digit >= 'a' && digit <= 'f') return static_cast<std::uint8_t>(digit - 'a' + 10);
  throw std::runtime_error("a hexadecimal digit is none");
}

}  // namespace

std::string to_hex(std::span<const std::uint8_t> bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xf];
  }
  return text;
}

void from_hex(const std::string& text, std::span<std::uint8_t> bytes) {
  if (text.size() != 2 * bytes.size()) throw std::runtime_error("a field has the wrong length");
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const int high = from_digit(text[2 * i]) << 4;
    bytes[i] = static_cast<std::uint8_t>(high | from_digit(text[2 * i + 1]));
  }
}

}  // namespace ficon::emulator
