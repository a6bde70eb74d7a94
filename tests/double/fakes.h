/** Ready answers for the platform's other services, put into a platform's hooks. */
#pragma once

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "double/scripted_platform.h"

namespace ficon::test {

/** The stores by the URI that opens them; a walk goes in key order and ends with 0x40480003. */
using FakeStore = std::map<Bytes, Bytes>;
void play_stores(ScriptedPlatform& platform, std::map<std::string, FakeStore> stores);

/** Every acfg element call succeeds; the lines stand in `platform.calls({"acfg_..."})`. */
void play_config_text(ScriptedPlatform& platform, const std::string& uri_prefix,
                      const std::string& debug_uri_prefix);

/** `ficon_pmap_get_next_if` and `ficon_pmap_get_last_if` over these, in this order. */
void play_interfaces(ScriptedPlatform& platform, std::vector<if_index_t> interfaces);

/** The converter: what it gives for bytes, from and to; nothing means that it fails. Each call is
 * recorded as "convert from= to= length=". `convert_codepage` goes the same way, in place. */
using Conversion =
    std::function<std::optional<Bytes>(const Bytes& input, std::uint32_t from, std::uint32_t to)>;
void play_converter(ScriptedPlatform& platform, Conversion conversion);
/** Gives back what it gets. */
std::optional<Bytes> unchanged(const Bytes& input, std::uint32_t from, std::uint32_t to);
/** Capital letters, digits and the blank between ASCII (code set 1) and EBCDIC (any other). */
std::optional<Bytes> ebcdic(const Bytes& input, std::uint32_t from, std::uint32_t to);

/** A copy from `malloc`, as the platform hands out lists that their receiver frees. */
template <class T>
T* handed_out(const std::vector<T>& values) {
  auto* block = static_cast<T*>(std::malloc(values.size() * sizeof(T) + 1));
  std::copy(values.begin(), values.end(), block);
  return block;
}

}  // namespace ficon::test
