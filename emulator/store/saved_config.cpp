#include "store/saved_config.h"

namespace ficon::emulator {
namespace {

/** Words are those of the machine: the generator reads them as they stand. */
std::string word_of(std::uint32_t value) {
  wire::host32 word{};
  word.set(value);
  return {reinterpret_cast<const char*>(word.raw), sizeof word.raw};
}

}  // namespace

std::string saved_config_key(wire::SavedRecord type, std::uint32_t block) {
  std::string key(sizeof(wire::SavedConfigKey), '\0');
  key[0] = static_cast<char>(static_cast<std::uint32_t>(type) + block);
  return key;
}

std::pair<std::string, std::string> debug_record(std::uint32_t logging_level) {
  constexpr std::uint32_t kSet = 1;
  return {std::string(std::begin(wire::kDebugKey), std::end(wire::kDebugKey)),
          word_of(kSet) + word_of(logging_level)};
}

void write_feature_record(const Switch& model, const PathParts&, SavedRecords& records) {
  records[saved_config_key(wire::SavedRecord::kFeatureEnabled)] =
      word_of(model.feature_enabled() ? 1 : 0);
}

/** The default has no record: text that does not name it must bring it about. */
void write_limits_record(const Switch& model, const PathParts&, SavedRecords& records) {
  const MihTimeout timeout = model.limits().default_mih_timeout;
  const bool is_default = timeout.encoded == SwitchLimits{}.default_mih_timeout.encoded;
  records[saved_config_key(wire::SavedRecord::kDefaultMihTimeout)] =
      is_default ? std::nullopt : std::optional(word_of(timeout.encoded));
}

void write_vsan_record(const Switch& model, const PathParts& parts, SavedRecords& records) {
  const auto number = path_number(parts.at(0));
  if (!number) return;
  wire::be16 in_key{};
  in_key.set(static_cast<std::uint16_t>(*number));
  std::string key = saved_config_key(wire::SavedRecord::kVsan);
  key[2] = static_cast<char>(in_key.raw[0]);
  key[3] = static_cast<char>(in_key.raw[1]);
  records[key] = model.find_vsan(*number) == nullptr ? std::nullopt : std::optional(word_of(1));
}

}  // namespace ficon::emulator
