/** The library's blocking functions, each with its arguments out of one record. */
#pragma once

#include <ficon_cmi.h>

#include <span>
#include <string_view>

#include "input.h"

namespace ficon::fuzz {

struct Arguments {
  std::uint16_t vsan = 0;
  std::uint8_t requester = 0;
  std::uint32_t a = 0;
  std::uint32_t b = 0;
  std::uint32_t c = 0;
  char name[9] = {};  // up to 8 characters of a file's name

  static Arguments from(Input& input);
  Bytes to_bytes() const;
};

struct Call {
  std::string_view name;
  void (*run)(mts_handle_t, Arguments&);
};

std::span<const Call> calls();

}  // namespace ficon::fuzz
