/** The feature's configuration as the command lines that make it again. */
#include <platform/acfg.h>
#include <platform/feature_services.h>
#include <platform/ficon_base.h>
#include <platform/port_manager.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "exchange/allocation.h"
#include "text/port_number_plan.h"
#include "text/saved_config.h"

using namespace ficon;

namespace {

// The configuration-text service's numbers for the feature and what its lines hang on.
constexpr std::uint32_t kFicon = 152;
constexpr std::uint32_t kVsanLines = 1;
constexpr std::uint32_t kPortNumberLines = 2;
constexpr std::uint32_t kFeatureLine = 3;
constexpr std::uint32_t kInterfaceLines = 4;

constexpr std::size_t kLineRoom = 256;
constexpr std::size_t kInterfaceLineRoom = 255;

/** More ports than any switch has: beyond, the maps would not fit a stack. */
constexpr std::uint32_t kMostPorts = 16384;

void register_elements(acfg_hdl_t handle) {
  acfg_elem_add(handle, kFicon, kFeatureLine, 2);
  acfg_elem_add(handle, kFicon, kPortNumberLines, 7);
  acfg_elem_add(handle, kFicon, kVsanLines, 11);
  acfg_elem_add(handle, kFicon, kInterfaceLines, 11);
  acfg_elem_property_set(handle, kVsanLines, 1);
  acfg_elem_dependency_add(handle, kVsanLines, 139, 4);
  acfg_elem_dependency_add(handle, kVsanLines, 41, 4);
  acfg_elem_dependency_add(handle, kVsanLines, 41, 2);
  acfg_elem_dependency_add(handle, kVsanLines, 22, 1);
  acfg_elem_dependency_add(handle, kInterfaceLines, 22, 2);
  acfg_elem_dependency_add(handle, kFeatureLine, 139, 6);
}

/** A line under an element; a longer one is cut. */
[[gnu::format(printf, 3, 4)]] void add_line(acfg_hdl_t handle, std::uint32_t element,
                                            const char* pattern, ...) {
  char line[kLineRoom];
  va_list arguments;
  va_start(arguments, pattern);
  std::vsnprintf(line, sizeof line, pattern, arguments);
  va_end(arguments);
  acfg_elem_str_add_indent(handle, element, line, 0);
}

void add_logical_removals(acfg_hdl_t handle, const ficon_port_pn_entry_t* table) {
  const PortNumberPlan plan = logical_plan(table);
  if (!differs_from_defaults(plan)) return;
  char numbers[kRangesText];
  format(removed_ranges(plan), numbers);
  add_line(handle, kPortNumberLines, "no ficon logical-port assign port-numbers %s\n", numbers);
}

void add_slot(acfg_hdl_t handle, const ficon_port_pn_entry_t* table, std::uint32_t slot) {
  std::uint8_t lc = 0;
  if (ficonm_platform_slot_to_lc_b0(static_cast<std::uint8_t>(slot - 1), &lc) != 0) return;
  if (lc >= wire::kPortTableBlocks) return;
  const PortNumberPlan plan = slot_plan(table, slot, lc);
  if (!differs_from_defaults(plan)) return;
  const NumberRanges ranges = current_ranges(plan);
  if (ranges.count == 0) {
    add_line(handle, kPortNumberLines, "no ficon slot %d assign port-numbers\n",
             static_cast<int>(slot));
    return;
  }
  char numbers[kRangesText];
  format(ranges, numbers);
  add_line(handle, kPortNumberLines, "ficon slot %d assign port-numbers %s force\n",
           static_cast<int>(slot), numbers);
}

void add_slots(acfg_hdl_t handle, const ficon_port_pn_entry_t* table) {
  platform_info_t info{};
  if (get_platform_info(&info) != 0) return;
  for (std::uint32_t slot = 1; slot <= info.slot_count; ++slot) add_slot(handle, table, slot);
}

void add_logical_assignments(acfg_hdl_t handle, const ficon_port_pn_entry_t* table) {
  const PortNumberPlan plan = logical_plan(table);
  if (!differs_from_defaults(plan)) return;
  const NumberRanges ranges = current_ranges(plan);
  if (ranges.count == 0) return;
  char numbers[kRangesText];
  format(ranges, numbers);
  add_line(handle, kPortNumberLines, "ficon logical-port assign port-numbers %s force\n", numbers);
}

void add_feature(acfg_hdl_t handle, const ficon_port_pn_entry_t* table) {
  add_line(handle, kFeatureLine, "feature ficon\n");
  add_logical_removals(handle, table);
  add_slots(handle, table);
  add_logical_assignments(handle, table);
}

void add_vsans(acfg_hdl_t handle, const SavedSettings& settings, const VsanSet& requested) {
  for (std::uint32_t vsan = 0; vsan < VsanSet::kVsans; ++vsan) {
    if (!settings.vsans.contains(vsan) || !requested.contains(vsan)) continue;
    add_line(handle, kVsanLines, "ficon vsan %d\n", static_cast<int>(vsan));
  }
}

void add_defaults(acfg_hdl_t handle, const SavedSettings& settings) {
  // On the encoding as it stands, so that small time-outs are never written: intended.
  constexpr std::uint32_t kLargestUnwritten = 67;
  if (settings.default_prohibit != 0) {
    add_line(handle, kVsanLines, "ficon port default-state prohibit-all\n");
  }
  if (settings.feature_enabled != 0 && settings.mih_timeout > kLargestUnwritten) {
    add_line(handle, kVsanLines, "ficon default mihpto %d\n",
             static_cast<int>(wire::decode_mih_timeout(settings.mih_timeout)));
  }
}

/** The port table's entry of an interface, or null. */
const ficon_port_pn_entry_t* entry_of(if_index_t if_index, const PortMaps& maps, bool physical) {
  std::uint32_t entry = 0;
  if (ficon_pmap_get_if_to_index_with2pmaps(if_index, &entry, maps.number_to_interface, maps.table,
                                            physical ? 1 : 0) != 0) {
    return nullptr;
  }
  return entry < wire::kPortPositions ? &maps.table[entry] : nullptr;
}

void add_interface(acfg_hdl_t handle, if_index_t if_index, const PortMaps& maps) {
  constexpr std::uint32_t kPhysical = 1;
  constexpr std::uint32_t kPortChannel = 4;
  constexpr std::uint32_t kTunnel = 10;
  std::uint32_t type = 0;
  if (if_index_get_type(if_index, &type) != 0) return;
  if (type != kPhysical && type != kPortChannel && type != kTunnel) return;
  const ficon_port_pn_entry_t* entry = entry_of(if_index, maps, type == kPhysical);
  if (entry == nullptr) return;
  char line[kInterfaceLineRoom];
  if (type != kPhysical) {
    std::snprintf(line, sizeof line, "ficon portnumber %#x\n", unsigned{entry->port_number});
  } else if (entry->port_address != entry->port_number) {
    std::snprintf(line, sizeof line, "ficon portaddress %#x\n", unsigned{entry->port_address});
  } else {
    return;
  }
  acfg_elem_ifindex_str_add_indent(handle, kInterfaceLines, if_index, line, 1);
}

void add_interfaces(acfg_hdl_t handle, acfg_ctx_t context, const PortMaps& maps) {
  std::uint32_t count = 0;
  if_index_t* list = nullptr;
  const std::uint32_t failed = acfg_req_ifindex_list_get(context, &count, &list);
  const Malloced<if_index_t> interfaces(list);
  if (failed != 0 || !interfaces) return;
  for (std::uint32_t i = 0; i < count; ++i) add_interface(handle, interfaces[i], maps);
}

/** The lines that come out of the saved configuration. */
void add_saved_config(acfg_hdl_t handle, acfg_ctx_t context, pss_store_t store, std::uint32_t rows,
                      std::uint16_t* address_map, std::uint32_t* interfaces) {
  VsanSet requested;
  acfg_req_vsan_list_get(context, requested.bits());
  const SavedSettings settings = read_settings(store);
  PortMaps maps;
  maps.address_to_number = address_map;
  maps.number_to_interface = interfaces;
  read_port_maps(store, rows, &maps);
  if (settings.feature_enabled != 0) add_feature(handle, maps.table);
  if (settings.any_vsan || settings.feature_enabled != 0) {
    add_vsans(handle, settings, requested);
    add_defaults(handle, settings);
  }
  add_interfaces(handle, context, maps);
}

void add_logging_level(acfg_hdl_t handle, pss_store_t store) {
  constexpr std::uint32_t kUnwrittenLevel = 2;
  constexpr std::uint32_t kHighestLevel = 7;
  std::uint8_t value[kLineRoom] = {};
  std::uint32_t length = sizeof value;
  if (pss2_fetch(store, wire::kDebugKey, sizeof wire::kDebugKey, value, &length) != 0) return;
  wire::DebugRecord record;
  if (length < sizeof record) return;
  std::memcpy(&record, value, sizeof record);
  const std::uint32_t level = record.logging_level.get();
  if (record.is_set.get() != 1 || level > kHighestLevel || level == kUnwrittenLevel) return;
  char line[kLineRoom];
  std::snprintf(line, sizeof line, "logging level %s %d\n", "ficon", static_cast<int>(level));
  acfg_elem_dependency_add(handle, kVsanLines, 118, 1);
  acfg_elem_group_config_str_add(handle, 115, 0, 3, line);
}

pss_store_t open_store(const char* prefix, const char* name) {
  char uri[128];
  std::snprintf(uri, sizeof uri, "%s/%s_%s", prefix, "ficon", name);
  return pss_open(uri);
}

}  // namespace

uint32_t ficon_startup_acfg_gen(acfg_req_t request, acfg_ctx_t context) {
  const acfg_hdl_t handle = acfg_hdl_init();
  const pss_store_t config_store =
      open_store(acfg_startup_cfg_uri_prefix_get(context), "saved_config");
  const pss_store_t debug_store =
      open_store(acfg_startup_debug_cfg_uri_prefix_get(context), "debug");
  if (MAX_FICON_PORTS < 1) ficon_get_max_ficon_ports();
  libficon_ascii_gen(handle, context, config_store, debug_store);
  return acfg_respond(handle, request, context);
}

uint32_t libficon_ascii_gen(acfg_hdl_t handle, acfg_ctx_t context, pss_store_t config_store,
                            pss_store_t debug_store) {
  if (MAX_FICON_PORTS < 1) return 0;
  register_elements(handle);
  const auto rows = static_cast<std::uint32_t>(MAX_FICON_PORTS);
  if (config_store != nullptr && rows <= kMostPorts) {
    // As large as the switch has ports, known at run time alone.
    void* address_map = __builtin_alloca(rows * sizeof(std::uint16_t));
    void* interface_map = __builtin_alloca(rows * sizeof(std::uint32_t));
    add_saved_config(handle, context, config_store, rows, static_cast<std::uint16_t*>(address_map),
                     static_cast<std::uint32_t*>(interface_map));
  }
  if (debug_store != nullptr) add_logging_level(handle, debug_store);
  return 0;
}
