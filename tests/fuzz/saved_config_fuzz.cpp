/**
 * The generator of configuration text over a store that holds anything: keys of 8 bytes and
 * values of any length. The text that comes of it is given to the tool's reader.
 *
 *   requested VSAN, then records: key and block each
 */
#include <platform/pss.h>

#include <map>

#include "acfg/text_service.h"
#include "chassis/current_chassis.h"
#include "config_line.h"
#include "failure.h"
#include "input.h"
#include "wire/status.h"

using namespace ficon::fuzz;

/** A store in memory in the place of the platform's: same order, same bounds. */
struct pss_store {
  std::map<Bytes, Bytes> records;
  std::map<Bytes, Bytes>::const_iterator place;
};
struct pss_location {};

namespace {

constexpr std::uint32_t kFirst = 1;
constexpr std::uint32_t kNoRecord = 0x40480001;
constexpr std::uint32_t kNoRoom = 0x40480002;

pss_store store;
pss_location here;

}  // namespace

pss_store_t pss_open(const char*) {
  return &store;
}

uint32_t pss_move2location(pss_store_t from, uint32_t where, pss_location_t* location) {
  if (where == kFirst) {
    from->place = from->records.begin();
  } else {
    ++from->place;
  }
  const bool found = from->place != from->records.end();
  *location = found ? &here : nullptr;
  return found ? 0 : ficon::status::kEndOfStore;
}

uint32_t pss_getvalue(pss_store_t from, pss_location_t, const uint8_t** key, uint32_t* key_length,
                      const void** value, uint32_t* value_length) {
  *key = from->place->first.data();
  *key_length = static_cast<std::uint32_t>(from->place->first.size());
  *value = from->place->second.data();
  *value_length = static_cast<std::uint32_t>(from->place->second.size());
  return 0;
}

uint32_t pss_fetch(pss_store_t from, const uint8_t* key, uint32_t key_length, void* value,
                   uint32_t* value_length) {
  const auto found = from->records.find(Bytes(key, key + key_length));
  if (found == from->records.end()) return kNoRecord;
  if (found->second.size() > *value_length) return kNoRoom;
  std::ranges::copy(found->second, static_cast<std::uint8_t*>(value));
  *value_length = static_cast<std::uint32_t>(found->second.size());
  return 0;
}

uint32_t pss2_fetch(pss_store_t from, const uint8_t* key, uint32_t key_length, void* value,
                    uint32_t* value_length) {
  return pss_fetch(from, key, key_length, value, value_length);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input({data, size});
  ficon::platform::TextRequest request;
  if (const std::uint16_t vsan = input.u16(); vsan != 0) request.vsans = {vsan};
  request.interfaces = ficon::platform::current_chassis()->interfaces();
  store.records.clear();
  while (!input.empty()) {
    const ByteView key = input.take(8);
    const ByteView value = input.block();
    // A value repeated to the length of the tables: a fuzzer does not write thousands of bytes.
    Bytes whole(value.begin(), value.end());
    const std::size_t wanted = input.u16();
    for (std::size_t i = 0; !value.empty() && whole.size() < wanted; ++i) {
      whole.push_back(value[i % value.size()]);
    }
    store.records[Bytes(key.begin(), key.end())] = std::move(whole);
  }
  if (ficon_startup_acfg_gen(request.request(), request.context()) != 0) return 0;
  try {
    ficon::ctl::parse_config(request.text.value_or(""), 1279);
  } catch (const ficon::ctl::UsageError&) {  // a damaged store makes lines that nobody would
  }
  return 0;
}
