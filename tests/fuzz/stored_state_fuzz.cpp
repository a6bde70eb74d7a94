/**
 * What the daemon reads of its store: objects that make no sense are refused with a sentence, and
 * what was taken is written as it was read, however often.
 *
 *   objects: a block with the name and a block with the JSON text each
 */
#include <nlohmann/json.hpp>

#include "input.h"
#include "store/kinds.h"

using namespace ficon::fuzz;
using namespace ficon::emulator;

namespace {

std::shared_ptr<Hardware> hardware() {
  static const std::shared_ptr<Hardware> built_in = read_hardware({});
  return built_in;
}

/** @return whether the object was taken */
bool load(Switch& model, const StoredKind& kind, const PathParts& parts,
          const nlohmann::json& value) {
  try {
    kind.load(model, parts, value);
    return true;
  } catch (const std::exception& error) {
    require(*error.what() != '\0', "a refusal says why");
    return false;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Switch model({.hardware = hardware()});
  Switch again({.hardware = hardware()});
  for (Input input({data, size}); !input.empty();) {
    const std::string name = text_of(input.block());
    const auto value = nlohmann::json::parse(text_of(input.block()), nullptr, false);
    if (value.is_discarded()) continue;
    for (const StoredKind& kind : kStoredKinds) {
      const auto parts = match_path(kind.pattern, name);
      if (!parts) continue;
      if (!load(model, kind, *parts, value)) return 0;  // the daemon does not start
      const auto written = kind.save(model, *parts);
      if (!written) continue;
      require(load(again, kind, *parts, *written), "what was written can be read");
      const auto rewritten = kind.save(again, *parts);
      require(rewritten && rewritten->dump() == written->dump(), "and is written the same");
    }
  }
  return 0;
}
