/** Who asks: the leading parameters of every request function, as one value. */
#pragma once

#include <ficon_cmi.h>

#include <cstdint>

namespace ficon {

struct Caller {
  std::uint32_t requester;
  mts_handle_t handle;
  const char* word_a;
  const char* word_b;
  std::uint32_t wait;
};

}  // namespace ficon
