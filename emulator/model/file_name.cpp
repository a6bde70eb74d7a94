/** File names between EBCDIC and letters, without a converter: their few characters are alike in
 *  every code page on offer. */
#include "model/configuration_file.h"
#include "model/vsan.h"

namespace ficon::emulator {
namespace {

constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_ ";
constexpr std::uint8_t kEbcdic[] = {0xc1, 0xc2, 0xc3, 0xc4, 0xc5, 0xc6, 0xc7, 0xc8, 0xc9, 0xd1,
                                    0xd2, 0xd3, 0xd4, 0xd5, 0xd6, 0xd7, 0xd8, 0xd9, 0xe2, 0xe3,
                                    0xe4, 0xe5, 0xe6, 0xe7, 0xe8, 0xe9, 0xf0, 0xf1, 0xf2, 0xf3,
                                    0xf4, 0xf5, 0xf6, 0xf7, 0xf8, 0xf9, 0x60, 0x6d, 0x40};
static_assert(kLetters.size() == std::size(kEbcdic));

/** '\0' for a byte that no name may hold. */
char letter_of(std::uint8_t ebcdic) {
  for (std::size_t i = 0; i < kLetters.size(); ++i) {
    if (kEbcdic[i] == ebcdic) return kLetters[i];
  }
  return '\0';
}

}  // namespace

bool is_file_name(const FileName& name) {
  if (name[0] == kEbcdicBlank) return false;
  for (const std::uint8_t byte : name) {
    if (letter_of(byte) == '\0') return false;
  }
  return true;
}

std::string readable(const FileName& name) {
  if (name == kActiveConfiguration) return "the active configuration";
  std::string text;
  for (const std::uint8_t byte : name) {
    const char letter = letter_of(byte);
    text += letter == '\0' ? '?' : letter;
  }
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

std::optional<FileName> file_name_from(std::string_view letters) {
  FileName name;
  name.fill(kEbcdicBlank);
  if (letters.empty() || letters.size() > name.size()) return std::nullopt;
  for (std::size_t i = 0; i < letters.size(); ++i) {
    const std::size_t place = kLetters.find(letters[i]);
    if (place == std::string_view::npos) return std::nullopt;
    name[i] = kEbcdic[place];
  }
  return is_file_name(name) ? std::optional(name) : std::nullopt;
}

std::string file_object(std::uint16_t vsan, const FileName& name) {
  const std::string path = vsan_object(vsan);
  return name == kActiveConfiguration ? path + "/active" : path + "/file/" + readable(name);
}

}  // namespace ficon::emulator
