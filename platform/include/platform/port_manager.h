/** Port manager, interface indexes and port channels. */
#ifndef FICON_PLATFORM_PORT_MANAGER_H
#define FICON_PLATFORM_PORT_MANAGER_H

#include <ficon_cmi.h>

#ifdef __cplusplus
extern "C" {
#endif

uint32_t pm_cmi_get_port_config(mts_handle_t handle, uint32_t kind, uint32_t n,
                                const ficon_cmi_ifindex_rng_t* ranges, uint32_t* count,
                                pm_cmi_port_config_t** records, uint32_t wait);
uint32_t pm_cmi_get_fcot_info(mts_handle_t handle, uint32_t kind, uint32_t n,
                              const ficon_cmi_ifindex_rng_t* ranges, uint32_t* count,
                              pm_fcot_info_t** records, uint32_t wait);
uint32_t pm_cmi_get_trunk_vsan_info(mts_handle_t handle, uint32_t kind, if_index_t if_index,
                                    uint8_t* bitmap1, uint8_t* bitmap2, uint8_t* bitmap3,
                                    uint8_t* bitmap4, uint32_t wait);
uint32_t pm_get_port_info_brief(mts_handle_t handle, uint32_t arg2, uint32_t module_mask,
                                uint32_t arg4, uint32_t arg5, uint32_t arg6, uint32_t arg7,
                                uint32_t arg8, mts_msg_ref_t* reply);
uint32_t pm_parse_get_port_info_brief(mts_msg_ref_t* reply, uint32_t* count,
                                      pm_port_info_brief_t** records);
uint32_t if_index_get_type(if_index_t if_index, uint32_t* type);
uint32_t if_index_phy_fc_port_init(if_index_t* if_index, uint8_t slot, uint8_t port, uint32_t arg4);
if_index_t hton_if_index(if_index_t if_index);
if_index_t ntoh_if_index(if_index_t if_index);
int32_t snprintf_if_index(char* text, uint32_t size, if_index_t if_index);
uint32_t pcm_is_pc_auto_created(mts_handle_t handle, if_index_t if_index, uint32_t* auto_created);

#ifdef __cplusplus
}
#endif

#endif
