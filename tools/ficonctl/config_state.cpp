#include "config_state.h"

#include <platform/ficon_base.h>
#include <platform/port_manager.h>

#include <array>
#include <cstring>

#include "config_text.h"
#include "mapped_ports.h"
#include "mih_timeout.h"
#include "port_requests.h"
#include "wire/port_plan.h"
#include "wire/saved_config.h"

namespace ficon::ctl {
namespace {

using Key = std::array<std::uint8_t, sizeof(wire::SavedConfigKey)>;

/** The value of a record, where it has the length that it should. */
const std::string* find(const Records& records, const Key& key, std::size_t length) {
  const auto found = records.find({key.begin(), key.end()});
  return found == records.end() || found->second.size() != length ? nullptr : &found->second;
}

bool flag(const Records& records, wire::SavedRecord type) {
  std::uint32_t word = 0;
  const std::string* value = find(records, Key{static_cast<std::uint8_t>(type)}, sizeof word);
  if (value != nullptr) std::memcpy(&word, value->data(), sizeof word);
  return word != 0;
}

std::set<std::uint32_t> vsans_in(const Records& records) {
  std::set<std::uint32_t> vsans;
  for (const auto& [bytes, value] : records) {
    wire::SavedConfigKey key{};
    if (bytes.size() != sizeof key) continue;
    std::memcpy(&key, bytes.data(), sizeof key);
    if (wire::SavedRecord{key.type} == wire::SavedRecord::kVsan) vsans.insert(key.vsan.get());
  }
  return vsans;
}

/** By port address, as many as the switch has FICON ports. */
std::vector<std::uint16_t> address_map(const Records& records, std::uint32_t ports) {
  std::vector<std::uint16_t> map(ports);
  for (std::uint32_t i = 0; i < ports; ++i) map[i] = static_cast<std::uint16_t>(i);
  Key key;
  std::uint8_t* bytes = key.data();
  ficon_pss_build_pa_pn_map_key(&bytes);
  if (const std::string* value = find(records, key, ports * sizeof map[0])) {
    std::memcpy(map.data(), value->data(), value->size());
  }
  return map;
}

using Table = std::array<ficon_port_pn_entry_t, wire::kPortPositions>;

bool read_table(const Records& records, Table& table) {
  for (std::uint32_t block = 0; block < wire::kPortTableBlocks; ++block) {
    Key key;
    std::uint8_t* bytes = key.data();
    ficon_pss_build_port_pn_map_key(&bytes, block);
    constexpr std::size_t kLength = wire::kPortsPerBlock * sizeof table[0];
    const std::string* value = find(records, key, kLength);
    if (value == nullptr) return false;
    std::memcpy(&table[block * wire::kPortsPerBlock], value->data(), kLength);
  }
  return true;
}

void read_logical(const Records& records, std::uint32_t ports, PortPlan& plan) {
  Key key;
  std::uint8_t* bytes = key.data();
  ficon_pss_build_pn_if_map_key(&bytes);
  const std::string* value = find(records, key, ports * sizeof(if_index_t));
  if (value == nullptr) return;
  for (std::uint32_t number = 0; number < ports; ++number) {
    if_index_t stored = 0;
    std::memcpy(&stored, value->data() + number * sizeof stored, sizeof stored);
    const if_index_t if_index = ntoh_if_index(stored);
    if (if_index != 0 && !position_of(if_index)) plan.logical[number] = if_index;
  }
}

PortPlan read_plan(Session& session, const Records& records) {
  const auto ports = static_cast<std::uint32_t>(ficon_get_max_ficon_ports());
  const std::vector<std::uint16_t> addresses = address_map(records, ports);
  Table table{};
  if (!read_table(records, table)) {
    ficon_port_to_pn_init(wire::kPortPositions, table.data(), ports, addresses.data());
  }
  PortPlan plan{};
  for (std::size_t p = 0; p < table.size(); ++p) plan.number_at[p] = table[p].port_number;
  for (std::size_t a = 0; a < plan.number_of_address.size(); ++a) {
    plan.number_of_address[a] = a < ports ? addresses[a] : wire::kNoPort;
  }
  read_logical(records, ports, plan);
  for (NumberOwner owner = 0; owner <= kLastModule; ++owner) {
    auto numbers = reserved_numbers(session, owner);
    if (!numbers.empty()) plan.reserved[owner] = std::move(numbers);
  }
  return plan;
}

std::optional<std::uint32_t> logging_level_in(const Records& records) {
  wire::DebugRecord record;
  const auto found = records.find({std::begin(wire::kDebugKey), std::end(wire::kDebugKey)});
  if (found == records.end() || found->second.size() != sizeof record) return std::nullopt;
  std::memcpy(&record, found->second.data(), sizeof record);
  return record.logging_level.get();
}

}  // namespace

ConfigState read_state(Session& session) {
  const std::string store = running_store(session);
  const Records records = read_records(store, "ficon_saved_config");
  ConfigState state;
  state.feature = flag(records, wire::SavedRecord::kFeatureEnabled);
  state.default_prohibit = flag(records, wire::SavedRecord::kDefaultProhibit);
  state.vsans = vsans_in(records);
  state.mih_timeout = wire::decode_mih_timeout(read_mih_timeout(session, std::nullopt));
  state.logging_level = logging_level_in(read_records(store, "ficon_debug"));
  state.ports = read_plan(session, records);
  return state;
}

}  // namespace ficon::ctl
