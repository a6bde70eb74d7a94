#include "model/vsan.h"

#include <algorithm>
#include <cstdio>

namespace ficon::emulator {

bool is_offered_codepage(std::uint32_t codepage) {
  return std::ranges::find(kCodepages, codepage) != std::end(kCodepages);
}

std::string vsan_object(VsanNumber number) {
  char name[16];  // four digits, so that the store's order is the order of the numbers
  std::snprintf(name, sizeof name, "vsan/%04u", unsigned{number});
  return name;
}

}  // namespace ficon::emulator
