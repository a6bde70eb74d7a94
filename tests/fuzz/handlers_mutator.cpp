/**
 * Mutates scripts step by step: bytes moved across the borders of steps would make most requests
 * malformed, and a fuzzer would seldom come further than the checks of their lengths.
 */
#include <random>

#include "script.h"

using namespace ficon::fuzz;

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t capacity);

namespace {

using Random = std::minstd_rand;

std::size_t pick(Random& random, std::size_t count) {
  return random() % count;
}

/** A field of one to four bytes gets a value that means something somewhere. */
void set_field(Bytes& payload, Random& random) {
  constexpr std::uint32_t kValues[] = {
      0,    1,    2,     3,     4,   5,   6,    10,   20,     0x3f,     0x40,      0xfd,
      0xfe, 0xff, 0x100, 0x200, 511, 513, 1024, 1279, 0x0ffd, 0x100002, 0x1000000, 0x1000004};
  if (payload.empty()) return;
  std::uint32_t value = kValues[pick(random, std::size(kValues))];
  if (pick(random, 8) == 0) value = ~value;
  const std::size_t width = std::size_t{1} << pick(random, 3);
  const std::size_t at = pick(random, payload.size());
  const bool big = pick(random, 2) == 0;
  for (std::size_t i = 0; i < width && at + i < payload.size(); ++i) {
    const std::size_t shift = 8 * (big ? width - 1 - i : i);
    payload[at + i] = static_cast<std::uint8_t>(value >> shift);
  }
}

/** As the fuzzer would, and in three of four cases without a change of the length. */
void mutate_payload(Bytes& payload, Random& random) {
  const std::size_t length = payload.size();
  const bool same_length = length != 0 && pick(random, 4) != 0;
  payload.resize(same_length ? length : length + 64);
  const std::size_t mutated = LLVMFuzzerMutate(payload.data(), length, payload.size());
  payload.resize(same_length ? length : mutated);
}

void mutate(std::vector<Step>& script, Random& random) {
  if (script.empty()) script.emplace_back();
  const std::size_t at = pick(random, script.size());
  const auto place = script.begin() + static_cast<std::ptrdiff_t>(at);
  switch (pick(random, 10)) {
    case 0:
      place->route = static_cast<std::uint8_t>(random());
      return;
    case 1:
      place->flags ^= static_cast<std::uint8_t>(1U << pick(random, 6));
      return;
    case 2: {
      const Step copy = script[pick(random, script.size())];
      script.insert(place, copy);
      return;
    }
    case 3:
      if (script.size() > 1) script.erase(place);
      return;
    case 4:
      std::swap(*place, script[pick(random, script.size())]);
      return;
    case 5:
    case 6:
      return mutate_payload(place->payload, random);
    default:
      return set_field(place->payload, random);
  }
}

std::size_t write_back(const std::vector<Step>& script, std::uint8_t* data, std::size_t capacity) {
  const Bytes bytes = write_script(script);
  const std::size_t length = std::min(bytes.size(), capacity);
  std::copy_n(bytes.begin(), length, data);
  return length;
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t capacity, unsigned seed) {
  Random random(seed);
  std::vector<Step> script = read_script({data, size});
  const std::size_t changes = 1 + pick(random, 4);
  for (std::size_t i = 0; i < changes; ++i) mutate(script, random);
  return write_back(script, data, capacity);
}

/** Some steps of the one behind some of the other. */
extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* one, std::size_t one_size,
                                                 const std::uint8_t* other, std::size_t other_size,
                                                 std::uint8_t* out, std::size_t capacity,
                                                 unsigned seed) {
  Random random(seed);
  std::vector<Step> script = read_script({one, one_size});
  const std::vector<Step> more = read_script({other, other_size});
  script.resize(pick(random, script.size() + 1));
  const std::size_t from = pick(random, more.size() + 1);
  script.insert(script.end(), more.begin() + static_cast<std::ptrdiff_t>(from), more.end());
  return write_back(script, out, capacity);
}
