/** What a client can learn of a daemon's lasting state, question by question. */
#pragma once

#include "input.h"
#include "server/service.h"

namespace ficon::fuzz {

struct Learned {
  std::uint32_t sap;
  std::uint32_t opcode;
  Bytes question;
  Bytes reply;
  bool operator==(const Learned&) const = default;
};

std::vector<Learned> everything_readable(emulator::Service& service);

/** Prints the first difference, if there is one. */
bool same(const std::vector<Learned>& before, const std::vector<Learned>& after);

}  // namespace ficon::fuzz
