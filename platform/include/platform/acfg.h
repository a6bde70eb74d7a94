/** Configuration-text service. */
#ifndef FICON_PLATFORM_ACFG_H
#define FICON_PLATFORM_ACFG_H

#include <ficon_cmi.h>

#ifdef __cplusplus
extern "C" {
#endif

acfg_hdl_t acfg_hdl_init(void);
const char* acfg_startup_cfg_uri_prefix_get(acfg_ctx_t context);
const char* acfg_startup_debug_cfg_uri_prefix_get(acfg_ctx_t context);
uint32_t acfg_req_vsan_list_get(acfg_ctx_t context, uint8_t* bitmap);
uint32_t acfg_req_ifindex_list_get(acfg_ctx_t context, uint32_t* count, if_index_t** list);
uint32_t acfg_elem_add(acfg_hdl_t handle, uint32_t feature, uint32_t element, uint32_t value);
uint32_t acfg_elem_property_set(acfg_hdl_t handle, uint32_t element, uint32_t property);
uint32_t acfg_elem_dependency_add(acfg_hdl_t handle, uint32_t element, uint32_t x, uint32_t y);
uint32_t acfg_elem_str_add_indent(acfg_hdl_t handle, uint32_t element, const char* text,
                                  uint32_t indent);
uint32_t acfg_elem_ifindex_str_add_indent(acfg_hdl_t handle, uint32_t element, if_index_t if_index,
                                          const char* text, uint32_t indent);
uint32_t acfg_elem_group_config_str_add(acfg_hdl_t handle, uint32_t group, uint32_t arg3,
                                        uint32_t arg4, const char* text);
uint32_t acfg_respond(acfg_hdl_t handle, acfg_req_t request, acfg_ctx_t context);

#ifdef __cplusplus
}
#endif

#endif
