/** Configuration-text service. */
#ifndef FICON_PLATFORM_ACFG_H
#define FICON_PLATFORM_ACFG_H

#include <ficon_cmi.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * A feature hands its lines over under elements, says how elements depend on one another, and
 * responds; the service makes one text of it. Unless it says otherwise a call returns 0, or an
 * error and then has done nothing.
 */

/** Begin an answer. It ends with `acfg_respond`; there is no other way to release it. */
acfg_hdl_t acfg_hdl_init(void);

/** Where the saved configurations of the requested text are: a text of the service's own. */
const char* acfg_startup_cfg_uri_prefix_get(acfg_ctx_t context);
/** Likewise the debug settings. */
const char* acfg_startup_debug_cfg_uri_prefix_get(acfg_ctx_t context);

/**
 * The VSANs that were asked for.
 *
 * @param bitmap  512 bytes, zeroed by the caller: VSAN v is bit 0x80 >> (v mod 8) of byte v / 8
 */
uint32_t acfg_req_vsan_list_get(acfg_ctx_t context, uint8_t* bitmap);

/**
 * The interfaces that were asked for.
 *
 * @param list  [out] `*count` interface indexes in host order, for `free`; null when there are none
 */
uint32_t acfg_req_ifindex_list_get(acfg_ctx_t context, uint32_t* count, if_index_t** list);

/**
 * Add an element to hang lines on.
 *
 * @param feature  the service's number of the feature; FICON's is 152
 * @param element  the feature's own number of it, by which all other calls name it
 * @param value    among elements that do not depend on one another, the lower value comes first
 */
uint32_t acfg_elem_add(acfg_hdl_t handle, uint32_t feature, uint32_t element, uint32_t value);
/** Property 1 marks an element as one of lines for each VSAN. */
uint32_t acfg_elem_property_set(acfg_hdl_t handle, uint32_t element, uint32_t property);
/** The element comes after element `y` of feature `x`, where that is part of the text. */
uint32_t acfg_elem_dependency_add(acfg_hdl_t handle, uint32_t element, uint32_t x, uint32_t y);

/** A line, or several, with their line breaks; copied. `indent` counts steps of indentation. */
uint32_t acfg_elem_str_add_indent(acfg_hdl_t handle, uint32_t element, const char* text,
                                  uint32_t indent);
/** Likewise of one interface: its lines stand together below its heading. */
uint32_t acfg_elem_ifindex_str_add_indent(acfg_hdl_t handle, uint32_t element, if_index_t if_index,
                                          const char* text, uint32_t indent);
/** Likewise of a group that all features share; FICON's logging level comes with 115, 0, 3. */
uint32_t acfg_elem_group_config_str_add(acfg_hdl_t handle, uint32_t group, uint32_t arg3,
                                        uint32_t arg4, const char* text);

/**
 * Hand the answer over and end it, also on failure.
 *
 * @return 0; an error, for one when dependencies go round in a circle
 */
uint32_t acfg_respond(acfg_hdl_t handle, acfg_req_t request, acfg_ctx_t context);

#ifdef __cplusplus
}
#endif

#endif
