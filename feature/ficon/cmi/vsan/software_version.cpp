/** The software version as numbers. */
#include <ficon_cmi.h>
#include <platform/feature_services.h>

#include <cstdlib>
#include <cstring>

uint32_t ficon_cmi_get_sw_version(uint32_t /*unused*/, uint8_t* numbers, int8_t count) {
  if (count > 0) std::memset(numbers, 0, static_cast<std::size_t>(count));
  const char* version = srg_sw_ver_get(0);
  if (version == nullptr) return 0;
  constexpr std::size_t kLongest = 100;
  char text[kLongest + 1] = {};  // terminated also behind a text that fills it
  std::strncpy(text, version, kLongest);

  char* piece = text;
  for (int stored = 0;;) {
    const std::size_t length = std::strcspn(piece, ".()");
    const bool last = piece[length] == '\0';
    piece[length] = '\0';
    numbers[stored] = static_cast<uint8_t>(std::strtol(piece, nullptr, 10));
    ++stored;
    // After the store, so that a count of 0 bounds nothing: intended.
    if (stored == count || last) return 0;
    piece += length + 1;
  }
}
