/** Every other platform function: recorded, made to fail if asked, else answered by its hook. */
#include <platform/diagnostics.h>

#include <array>
#include <cstring>
#include <list>
#include <type_traits>

#include "double/format.h"
#include "double/scripted_platform.h"

using namespace ficon::test;

const char* sdwrap_dbg_modname = "ficon";
int32_t MAX_FICON_PORTS = 0;

namespace {

template <class Result, class... Parameters>
Result answer(std::function<Result(Parameters...)> Hooks::*hook, const char* function,
              bool can_fail, Result failure, std::type_identity_t<Parameters>... arguments) {
  auto& platform = ScriptedPlatform::require(function);
  const std::string line = call_text(function, arguments...);
  platform.note(line);
  if (can_fail && platform.faulted(line)) return failure;
  if (platform.on.*hook) return (platform.on.*hook)(arguments...);
  platform.problem("not expected: " + line);
  return failure;
}

}  // namespace

/** A function whose result is a status. */
#define STATUS(function, ...) \
  return answer(&Hooks::function, #function, true, std::uint32_t{kInjected}, __VA_ARGS__)
/** A function that fails with another value. */
#define FAILS_WITH(failure, function, ...) \
  return answer(&Hooks::function, #function, true, failure __VA_OPT__(, ) __VA_ARGS__)
/** A function that cannot fail. */
#define PLAIN(value, function, ...) \
  return answer(&Hooks::function, #function, false, value __VA_OPT__(, ) __VA_ARGS__)

// FICON base library

void ficon_init_cmi_hdr(void* header, uint32_t msgtype, const char* word_a, const char* word_b,
                        uint32_t subtype) {
  auto& platform = ScriptedPlatform::require("ficon_init_cmi_hdr");
  platform.note(call_text("ficon_init_cmi_hdr", msgtype, word_a, word_b, subtype));
  const Bytes bytes = platform_header(msgtype, subtype, word_a == nullptr ? "" : word_a,
                                      word_b == nullptr ? "" : word_b);
  std::memcpy(header, bytes.data(), bytes.size());
}
uint32_t ficon_send_get_portmap_nonblock(mts_handle_t handle, const char* word_a,
                                         const char* word_b, uint32_t type, uint8_t selector,
                                         if_index_t if_index, uint16_t key1, uint16_t key2,
                                         mts_msg_ref_t* msg) {
  STATUS(ficon_send_get_portmap_nonblock, handle, word_a, word_b, type, selector, if_index, key1,
         key2, msg);
}
uint32_t ficon_parse_get_portmap(mts_msg_ref_t* reply, if_index_t* if_index, uint16_t* key1,
                                 uint16_t* key2) {
  STATUS(ficon_parse_get_portmap, reply, if_index, key1, key2);
}
uint32_t ficon_cmi_get_max_portnumber(void) {
  PLAIN(0U, ficon_cmi_get_max_portnumber);
}
uint32_t ficon_pmap_get_pn_to_phyif(uint32_t port_number, if_index_t* if_index, uint32_t rows,
                                    const uint32_t* map) {
  STATUS(ficon_pmap_get_pn_to_phyif, port_number, if_index, rows, map);
}
uint32_t ficon_pmap_get_next_if(if_index_t if_index, if_index_t* next) {
  STATUS(ficon_pmap_get_next_if, if_index, next);
}
uint32_t ficon_pmap_get_last_if(if_index_t* last) {
  STATUS(ficon_pmap_get_last_if, last);
}
uint32_t ficon_pmap_get_if_to_index_with2pmaps(if_index_t if_index, uint32_t* entry,
                                               const uint32_t* pn_if_map,
                                               const ficon_port_pn_entry_t* port_table,
                                               uint32_t physical) {
  STATUS(ficon_pmap_get_if_to_index_with2pmaps, if_index, entry, pn_if_map, port_table, physical);
}
uint32_t ficon_get_default_pn(uint32_t slot, uint32_t logical, uint16_t* defaults) {
  STATUS(ficon_get_default_pn, slot, logical, defaults);
}
uint32_t ficon_port_to_pn_init(uint32_t entries, ficon_port_pn_entry_t* table, uint32_t ports,
                               const uint16_t* pa_pn_map) {
  STATUS(ficon_port_to_pn_init, entries, table, ports, pa_pn_map);
}
int32_t ficon_get_max_ficon_ports(void) {
  PLAIN(0, ficon_get_max_ficon_ports);
}
ficon_convert_fn_t ficon_get_convert_fn_ptr(void) {
  FAILS_WITH(ficon_convert_fn_t{nullptr}, ficon_get_convert_fn_ptr);
}
uint32_t convert_codepage(uint32_t from_code_set, uint32_t to_code_set, uint8_t* text,
                          uint32_t length) {
  STATUS(convert_codepage, from_code_set, to_code_set, text, length);
}
uint32_t ficonm_platform_lc_to_slot_b0(uint8_t lc, uint8_t* slot) {
  STATUS(ficonm_platform_lc_to_slot_b0, lc, slot);
}
uint32_t ficonm_platform_slot_to_lc_b0(uint8_t slot, uint8_t* lc) {
  STATUS(ficonm_platform_slot_to_lc_b0, slot, lc);
}

// Port manager, interface indexes, port channels

uint32_t pm_cmi_get_port_config(mts_handle_t handle, uint32_t kind, uint32_t n,
                                const ficon_cmi_ifindex_rng_t* ranges, uint32_t* count,
                                pm_cmi_port_config_t** records, uint32_t wait) {
  STATUS(pm_cmi_get_port_config, handle, kind, n, ranges, count, records, wait);
}
uint32_t pm_cmi_get_fcot_info(mts_handle_t handle, uint32_t kind, uint32_t n,
                              const ficon_cmi_ifindex_rng_t* ranges, uint32_t* count,
                              pm_fcot_info_t** records, uint32_t wait) {
  STATUS(pm_cmi_get_fcot_info, handle, kind, n, ranges, count, records, wait);
}
uint32_t pm_cmi_get_trunk_vsan_info(mts_handle_t handle, uint32_t kind, if_index_t if_index,
                                    uint8_t* bitmap1, uint8_t* bitmap2, uint8_t* bitmap3,
                                    uint8_t* bitmap4, uint32_t wait) {
  STATUS(pm_cmi_get_trunk_vsan_info, handle, kind, if_index, bitmap1, bitmap2, bitmap3, bitmap4,
         wait);
}
uint32_t pm_get_port_info_brief(mts_handle_t handle, uint32_t arg2, uint32_t module_mask,
                                uint32_t arg4, uint32_t arg5, uint32_t arg6, uint32_t arg7,
                                uint32_t arg8, mts_msg_ref_t* reply) {
  STATUS(pm_get_port_info_brief, handle, arg2, module_mask, arg4, arg5, arg6, arg7, arg8, reply);
}
uint32_t pm_parse_get_port_info_brief(mts_msg_ref_t* reply, uint32_t* count,
                                      pm_port_info_brief_t** records) {
  STATUS(pm_parse_get_port_info_brief, reply, count, records);
}
uint32_t if_index_get_type(if_index_t if_index, uint32_t* type) {
  STATUS(if_index_get_type, if_index, type);
}
uint32_t if_index_phy_fc_port_init(if_index_t* if_index, uint8_t slot, uint8_t port,
                                   uint32_t arg4) {
  STATUS(if_index_phy_fc_port_init, if_index, slot, port, arg4);
}
if_index_t hton_if_index(if_index_t if_index) {
  PLAIN(if_index_t{0}, hton_if_index, if_index);
}
if_index_t ntoh_if_index(if_index_t if_index) {
  PLAIN(if_index_t{0}, ntoh_if_index, if_index);
}
int32_t snprintf_if_index(char* text, uint32_t size, if_index_t if_index) {
  PLAIN(-1, snprintf_if_index, text, size, if_index);
}
uint32_t pcm_is_pc_auto_created(mts_handle_t handle, if_index_t if_index, uint32_t* auto_created) {
  STATUS(pcm_is_pc_auto_created, handle, if_index, auto_created);
}

// Feature manager, software version, platform information

uint32_t fm_cmi_set_feature_wait(mts_handle_t handle, const char* feature, const char* word_a,
                                 const char* word_b, uint32_t arg5) {
  STATUS(fm_cmi_set_feature_wait, handle, feature, word_a, word_b, arg5);
}
const char* srg_sw_ver_get(uint32_t which) {
  FAILS_WITH(static_cast<const char*>(nullptr), srg_sw_ver_get, which);
}
uint32_t get_platform_info(platform_info_t* info) {
  STATUS(get_platform_info, info);
}

// Persistent storage

pss_store_t pss_open(const char* uri) {
  FAILS_WITH(pss_store_t{nullptr}, pss_open, uri);
}
uint32_t pss_move2location(pss_store_t store, uint32_t where, pss_location_t* location) {
  STATUS(pss_move2location, store, where, location);
}
uint32_t pss_getvalue(pss_store_t store, pss_location_t location, const uint8_t** key,
                      uint32_t* key_length, const void** value, uint32_t* value_length) {
  STATUS(pss_getvalue, store, location, key, key_length, value, value_length);
}
uint32_t pss_fetch(pss_store_t store, const uint8_t* key, uint32_t key_length, void* value,
                   uint32_t* value_length) {
  STATUS(pss_fetch, store, key, key_length, value, value_length);
}
uint32_t pss2_fetch(pss_store_t store, const uint8_t* key, uint32_t key_length, void* value,
                    uint32_t* value_length) {
  STATUS(pss2_fetch, store, key, key_length, value, value_length);
}

// Configuration text

acfg_hdl_t acfg_hdl_init(void) {
  FAILS_WITH(acfg_hdl_t{nullptr}, acfg_hdl_init);
}
const char* acfg_startup_cfg_uri_prefix_get(acfg_ctx_t context) {
  FAILS_WITH(static_cast<const char*>(nullptr), acfg_startup_cfg_uri_prefix_get, context);
}
const char* acfg_startup_debug_cfg_uri_prefix_get(acfg_ctx_t context) {
  FAILS_WITH(static_cast<const char*>(nullptr), acfg_startup_debug_cfg_uri_prefix_get, context);
}
uint32_t acfg_req_vsan_list_get(acfg_ctx_t context, uint8_t* bitmap) {
  STATUS(acfg_req_vsan_list_get, context, bitmap);
}
uint32_t acfg_req_ifindex_list_get(acfg_ctx_t context, uint32_t* count, if_index_t** list) {
  STATUS(acfg_req_ifindex_list_get, context, count, list);
}
uint32_t acfg_elem_add(acfg_hdl_t handle, uint32_t feature, uint32_t element, uint32_t value) {
  STATUS(acfg_elem_add, handle, feature, element, value);
}
uint32_t acfg_elem_property_set(acfg_hdl_t handle, uint32_t element, uint32_t property) {
  STATUS(acfg_elem_property_set, handle, element, property);
}
uint32_t acfg_elem_dependency_add(acfg_hdl_t handle, uint32_t element, uint32_t x, uint32_t y) {
  STATUS(acfg_elem_dependency_add, handle, element, x, y);
}
uint32_t acfg_elem_str_add_indent(acfg_hdl_t handle, uint32_t element, const char* text,
                                  uint32_t indent) {
  STATUS(acfg_elem_str_add_indent, handle, element, text, indent);
}
uint32_t acfg_elem_ifindex_str_add_indent(acfg_hdl_t handle, uint32_t element, if_index_t if_index,
                                          const char* text, uint32_t indent) {
  STATUS(acfg_elem_ifindex_str_add_indent, handle, element, if_index, text, indent);
}
uint32_t acfg_elem_group_config_str_add(acfg_hdl_t handle, uint32_t group, uint32_t arg3,
                                        uint32_t arg4, const char* text) {
  STATUS(acfg_elem_group_config_str_add, handle, group, arg3, arg4, text);
}
uint32_t acfg_respond(acfg_hdl_t handle, acfg_req_t request, acfg_ctx_t context) {
  STATUS(acfg_respond, handle, request, context);
}

// Diagnostics

int32_t sdwrap_hist_event_subtype_check(uint32_t id, uint32_t subtype) {
  auto& platform = ScriptedPlatform::require("sdwrap_hist_event_subtype_check");
  platform.note(call_text("sdwrap_hist_event_subtype_check", id, subtype));
  return platform.history_on ? 0 : 1;
}
void sdwrap_hist_event(uint32_t id, uint32_t length, const void* data) {
  auto& platform = ScriptedPlatform::require("sdwrap_hist_event");
  platform.note(call_text("sdwrap_hist_event", id, length));
  const auto* characters = static_cast<const char*>(data);
  if (length == 0 || characters[length - 1] != '\0') platform.problem("an event without its end");
  platform.traced_history(std::string(characters, length == 0 ? 0 : length - 1));
}
int32_t sdwrap_chk_int(uint32_t arg1, uint32_t arg2, uint32_t arg3, uint32_t arg4) {
  auto& platform = ScriptedPlatform::require("sdwrap_chk_int");
  platform.note(call_text("sdwrap_chk_int", arg1, arg2, arg3, arg4));
  return platform.debug_on ? 1 : 0;
}
void buginf(uint32_t level, const char* module, uint32_t arg3, const char* format, ...) {
  auto& platform = ScriptedPlatform::require("buginf");
  va_list arguments;
  va_start(arguments, format);
  const std::string text = formatted_list(format, arguments);
  va_end(arguments);
  platform.note(call_text("buginf", level, module, arg3, text.c_str()));
  platform.traced_debug(text);
}
const char* syserr2str(uint32_t code) {
  static std::list<std::string> texts;  // the platform's texts stay valid
  ScriptedPlatform::require("syserr2str").note(call_text("syserr2str", code));
  return texts.emplace_back(formatted("text of 0x%08x", code)).c_str();
}
