/** The input of the handlers' target: a script of requests, one after another. */
#pragma once

#include "handlers/routes.h"
#include "input.h"

namespace ficon::fuzz {

/** One request: number of its route (one more than there are: of none), flags, and payload. */
struct Step {
  static constexpr std::uint8_t kConnections = 0x03;
  static constexpr std::uint8_t kSameTurn = 0x04;  // as the next one, and fails or holds with it
  static constexpr std::uint8_t kHangsUp = 0x08;   // its connection ends behind it
  static constexpr std::uint8_t kRestarts = 0x10;  // the daemon is started again behind it
  static constexpr std::uint8_t kWholeTlvArray = 0x20;  // the payload's first word is its length

  std::uint8_t route = 0;
  std::uint8_t flags = 0;
  Bytes payload;
};

inline std::vector<Step> read_script(ByteView bytes) {
  std::vector<Step> script;
  for (Input input(bytes); !input.empty();) {
    Step step{input.u8(), input.u8(), {}};
    const ByteView payload = input.block();
    step.payload.assign(payload.begin(), payload.end());
    script.push_back(std::move(step));
  }
  return script;
}

inline Bytes write_script(const std::vector<Step>& script) {
  Bytes bytes;
  for (const Step& step : script) {
    const std::size_t length = step.payload.size();
    bytes.insert(bytes.end(), {step.route, step.flags, static_cast<std::uint8_t>(length),
                               static_cast<std::uint8_t>(length >> 8)});
    bytes.insert(bytes.end(), step.payload.begin(), step.payload.end());
  }
  return bytes;
}

}  // namespace ficon::fuzz
