#include "double/fakes.h"

#include <algorithm>
#include <iterator>
#include <memory>

#include "double/format.h"

namespace ficon::test {
namespace {

constexpr std::uint32_t kWalkFirst = 1;
constexpr std::uint32_t kWalkEnd = 0x40480003;
constexpr std::uint32_t kNoRecord = 0x40480004;

using Stores = std::map<std::string, FakeStore>;
using Entry = FakeStore::value_type;

const FakeStore& store_of(pss_store_t handle) {
  return *reinterpret_cast<const FakeStore*>(handle);
}

/** A location is the address of an entry: map entries stay where they are. */
pss_location_t location_of(const Entry& entry) {
  return reinterpret_cast<pss_location_t>(const_cast<Entry*>(&entry));
}

std::uint32_t move(pss_store_t handle, std::uint32_t where, pss_location_t* location) {
  const FakeStore& store = store_of(handle);
  auto next = store.begin();
  if (where != kWalkFirst) {
    next = store.upper_bound(reinterpret_cast<const Entry*>(*location)->first);
  }
  *location = next == store.end() ? nullptr : location_of(*next);
  return next == store.end() ? kWalkEnd : 0;
}

std::uint32_t fetch(pss_store_t handle, const std::uint8_t* key, std::uint32_t key_length,
                    void* value, std::uint32_t* value_length) {
  const auto found = store_of(handle).find(Bytes(key, key + key_length));
  if (found == store_of(handle).end()) return kNoRecord;
  const std::size_t copied = std::min<std::size_t>(*value_length, found->second.size());
  std::copy_n(found->second.begin(), copied, static_cast<std::uint8_t*>(value));
  *value_length = static_cast<std::uint32_t>(copied);
  return 0;
}

/** The converter is a plain function, so what it does has to stand outside. */
Conversion the_conversion;

std::optional<Bytes> converted(const std::uint8_t* input, std::uint32_t length, std::uint32_t from,
                               std::uint32_t to) {
  ScriptedPlatform::require("convert").note(
      formatted("convert from=%u to=%u length=%u", from, to, length));
  return the_conversion(Bytes(input, input + length), from, to);
}

std::int32_t convert(const std::uint8_t* input, std::uint32_t length, std::uint32_t from,
                     std::uint8_t** out_cursor, std::uint32_t* out_count, std::uint32_t* out_space,
                     std::uint32_t to) {
  const auto output = converted(input, length, from, to);
  if (!output || output->size() > *out_space) return 0;
  *out_cursor = std::copy(output->begin(), output->end(), *out_cursor);
  *out_count += static_cast<std::uint32_t>(output->size());
  *out_space -= static_cast<std::uint32_t>(output->size());
  return 1;
}

/** First characters of the runs that both code sets hold in the same order. */
struct Run {
  std::uint8_t ascii;
  std::uint8_t ebcdic;
  std::uint8_t length;
};
constexpr Run kRuns[] = {{' ', 0x40, 1}, {'-', 0x60, 1}, {'_', 0x6d, 1}, {'A', 0xc1, 9},
                         {'J', 0xd1, 9}, {'S', 0xe2, 8}, {'a', 0x81, 9}, {'j', 0x91, 9},
                         {'s', 0xa2, 8}, {'0', 0xf0, 10}};

std::optional<std::uint8_t> character(std::uint8_t value, bool to_ascii) {
  for (const Run& run : kRuns) {
    const std::uint8_t first = to_ascii ? run.ebcdic : run.ascii;
    if (value < first || value >= first + run.length) continue;
    return static_cast<std::uint8_t>(value - first + (to_ascii ? run.ascii : run.ebcdic));
  }
  return std::nullopt;
}

}  // namespace

void play_stores(ScriptedPlatform& platform, std::map<std::string, FakeStore> stores) {
  auto kept = std::make_shared<Stores>(std::move(stores));
  platform.on.pss_open = [kept](const char* uri) -> pss_store_t {
    const auto found = kept->find(uri);
    return found == kept->end() ? nullptr : reinterpret_cast<pss_store_t>(&found->second);
  };
  platform.on.pss_move2location = move;
  platform.on.pss_getvalue = [](pss_store_t, pss_location_t location, const std::uint8_t** key,
                                std::uint32_t* key_length, const void** value,
                                std::uint32_t* value_length) -> std::uint32_t {
    const auto* entry = reinterpret_cast<const Entry*>(location);
    *key = entry->first.data();
    *key_length = static_cast<std::uint32_t>(entry->first.size());
    *value = entry->second.data();
    *value_length = static_cast<std::uint32_t>(entry->second.size());
    return 0;
  };
  platform.on.pss_fetch = fetch;
  platform.on.pss2_fetch = fetch;
}

void play_config_text(ScriptedPlatform& platform, const std::string& uri_prefix,
                      const std::string& debug_uri_prefix) {
  const auto succeeds = [](auto...) { return 0U; };
  Hooks& on = platform.on;
  on.acfg_hdl_init = [] { return reinterpret_cast<acfg_hdl_t>(&the_conversion); };
  on.acfg_startup_cfg_uri_prefix_get = [uri_prefix](auto) { return uri_prefix.c_str(); };
  on.acfg_startup_debug_cfg_uri_prefix_get = [debug_uri_prefix](auto) {
    return debug_uri_prefix.c_str();
  };
  on.acfg_elem_add = succeeds;
  on.acfg_elem_property_set = succeeds;
  on.acfg_elem_dependency_add = succeeds;
  on.acfg_elem_str_add_indent = succeeds;
  on.acfg_elem_ifindex_str_add_indent = succeeds;
  on.acfg_elem_group_config_str_add = succeeds;
  on.acfg_respond = succeeds;
}

void play_interfaces(ScriptedPlatform& platform, std::vector<if_index_t> interfaces) {
  platform.on.ficon_pmap_get_last_if = [interfaces](if_index_t* last) {
    if (interfaces.empty()) return kNoRecord;
    *last = interfaces.back();
    return 0U;
  };
  platform.on.ficon_pmap_get_next_if = [interfaces](if_index_t if_index, if_index_t* next) {
    const auto here = std::find(interfaces.begin(), interfaces.end(), if_index);
    if (here == interfaces.end() || std::next(here) == interfaces.end()) return kNoRecord;
    *next = *std::next(here);
    return 0U;
  };
}

void play_converter(ScriptedPlatform& platform, Conversion conversion) {
  the_conversion = std::move(conversion);
  platform.on.ficon_get_convert_fn_ptr = [] { return ficon_convert_fn_t{convert}; };
  platform.on.convert_codepage = [](std::uint32_t from, std::uint32_t to, std::uint8_t* text,
                                    std::uint32_t length) -> std::uint32_t {
    const auto output = converted(text, length, from, to);
    if (!output || output->size() != length) return kNoRecord;
    std::copy(output->begin(), output->end(), text);
    return 0;
  };
}

std::optional<Bytes> unchanged(const Bytes& input, std::uint32_t, std::uint32_t) {
  return input;
}

std::optional<Bytes> ebcdic(const Bytes& input, std::uint32_t, std::uint32_t to) {
  Bytes output;
  for (const std::uint8_t value : input) {
    const auto found = character(value, to == 1);
    if (!found) return std::nullopt;
    output.push_back(*found);
  }
  return output;
}

}  // namespace ficon::test
