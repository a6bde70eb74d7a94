/** Port manager, interface indexes and port channels. */
#ifndef FICON_PLATFORM_PORT_MANAGER_H
#define FICON_PLATFORM_PORT_MANAGER_H

#include <ficon_cmi.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Mode, VSAN and flags of the interfaces in `n` ranges. Blocks.
 *
 * @param kind     1
 * @param count    [out] records, one an interface that the switch has
 * @param records  [out] for `free`; on failure null or a block for `free`
 * @param wait     as of the transport
 * @return 0; 0xffffffff for a failure of the transport, whose reason `mts_errno_get` has; else an
 *         error
 */
uint32_t pm_cmi_get_port_config(mts_handle_t handle, uint32_t kind, uint32_t n,
                                const ficon_cmi_ifindex_rng_t* ranges, uint32_t* count,
                                pm_cmi_port_config_t** records, uint32_t wait);

/** Transceivers, in the same way; a record's `status` is 0 for one that can be used. */
uint32_t pm_cmi_get_fcot_info(mts_handle_t handle, uint32_t kind, uint32_t n,
                              const ficon_cmi_ifindex_rng_t* ranges, uint32_t* count,
                              pm_fcot_info_t** records, uint32_t wait);

/**
 * The VSANs of a trunking port. Each bitmap is 512 bytes: VSAN v is bit v mod 8, from the most
 * significant one, of byte v / 8. The first holds the VSANs that the port belongs to.
 */
uint32_t pm_cmi_get_trunk_vsan_info(mts_handle_t handle, uint32_t kind, if_index_t if_index,
                                    uint8_t* bitmap1, uint8_t* bitmap2, uint8_t* bitmap3,
                                    uint8_t* bitmap4, uint32_t wait);

/**
 * Ask for the ports of modules: bit m of `module_mask` is the module in slot m, from 0. Blocks. The
 * unnamed arguments are 1, 65535, 255, 255, 0, 0.
 *
 * @param reply  [out] on success, to be dropped by the caller
 */
uint32_t pm_get_port_info_brief(mts_handle_t handle, uint32_t arg2, uint32_t module_mask,
                                uint32_t arg4, uint32_t arg5, uint32_t arg6, uint32_t arg7,
                                uint32_t arg8, mts_msg_ref_t* reply);

/** @param records  [out] for `free`, on success */
uint32_t pm_parse_get_port_info_brief(mts_msg_ref_t* reply, uint32_t* count,
                                      pm_port_info_brief_t** records);

/** Type 1 is a Fibre Channel port, 4 a port channel, 10 a tunnel; nonzero for no interface. */
uint32_t if_index_get_type(if_index_t if_index, uint32_t* type);

/** The index of a Fibre Channel port; slot and port from 0, `arg4` 0. Nonzero for none. */
uint32_t if_index_phy_fc_port_init(if_index_t* if_index, uint8_t slot, uint8_t port, uint32_t arg4);

/** To the order in which indexes travel, and back. */
if_index_t hton_if_index(if_index_t if_index);
if_index_t ntoh_if_index(if_index_t if_index);

/** The name of an interface; arguments and result as of `snprintf`. */
int32_t snprintf_if_index(char* text, uint32_t size, if_index_t if_index);

/** Whether the system made a port channel by itself; `auto_created` is 0 or not. Blocks. */
uint32_t pcm_is_pc_auto_created(mts_handle_t handle, if_index_t if_index, uint32_t* auto_created);

#ifdef __cplusplus
}
#endif

#endif
