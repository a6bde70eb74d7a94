/**
 * What a test lets the platform answer, one function each; a call without one fails the test.
 * The transport, TLV arrays, lock and enabled VSANs are played by ScriptedPlatform itself.
 */
#pragma once

#include <platform/acfg.h>
#include <platform/feature_services.h>
#include <platform/ficon_base.h>
#include <platform/port_manager.h>
#include <platform/pss.h>

#include <functional>

namespace ficon::test {

#define FICON_HOOK(name) std::function<decltype(::name)> name

struct Hooks {
  // FICON base library
  FICON_HOOK(ficon_send_get_portmap_nonblock);
  FICON_HOOK(ficon_parse_get_portmap);
  FICON_HOOK(ficon_cmi_get_max_portnumber);
  FICON_HOOK(ficon_pmap_get_pn_to_phyif);
  FICON_HOOK(ficon_pmap_get_next_if);
  FICON_HOOK(ficon_pmap_get_last_if);
  FICON_HOOK(ficon_pmap_get_if_to_index_with2pmaps);
  FICON_HOOK(ficon_get_default_pn);
  FICON_HOOK(ficon_port_to_pn_init);
  FICON_HOOK(ficon_get_max_ficon_ports);
  FICON_HOOK(ficon_get_convert_fn_ptr);
  FICON_HOOK(convert_codepage);
  FICON_HOOK(ficonm_platform_lc_to_slot_b0);
  FICON_HOOK(ficonm_platform_slot_to_lc_b0);
  // port manager, interface indexes, port channels
  FICON_HOOK(pm_cmi_get_port_config);
  FICON_HOOK(pm_cmi_get_fcot_info);
  FICON_HOOK(pm_cmi_get_trunk_vsan_info);
  FICON_HOOK(pm_get_port_info_brief);
  FICON_HOOK(pm_parse_get_port_info_brief);
  FICON_HOOK(if_index_get_type);
  FICON_HOOK(if_index_phy_fc_port_init);
  FICON_HOOK(hton_if_index);
  FICON_HOOK(ntoh_if_index);
  FICON_HOOK(snprintf_if_index);
  FICON_HOOK(pcm_is_pc_auto_created);
  // feature manager, versions, platform information
  FICON_HOOK(fm_cmi_set_feature_wait);
  FICON_HOOK(srg_sw_ver_get);
  FICON_HOOK(get_platform_info);
  // persistent storage
  FICON_HOOK(pss_open);
  FICON_HOOK(pss_move2location);
  FICON_HOOK(pss_getvalue);
  FICON_HOOK(pss_fetch);
  FICON_HOOK(pss2_fetch);
  // configuration text
  FICON_HOOK(acfg_hdl_init);
  FICON_HOOK(acfg_startup_cfg_uri_prefix_get);
  FICON_HOOK(acfg_startup_debug_cfg_uri_prefix_get);
  FICON_HOOK(acfg_req_vsan_list_get);
  FICON_HOOK(acfg_req_ifindex_list_get);
  FICON_HOOK(acfg_elem_add);
  FICON_HOOK(acfg_elem_property_set);
  FICON_HOOK(acfg_elem_dependency_add);
  FICON_HOOK(acfg_elem_str_add_indent);
  FICON_HOOK(acfg_elem_ifindex_str_add_indent);
  FICON_HOOK(acfg_elem_group_config_str_add);
  FICON_HOOK(acfg_respond);
};

#undef FICON_HOOK

}  // namespace ficon::test
