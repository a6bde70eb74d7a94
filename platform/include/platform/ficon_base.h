/** FICON base library. */
#ifndef FICON_PLATFORM_FICON_BASE_H
#define FICON_PLATFORM_FICON_BASE_H

#include <ficon_cmi.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef int32_t (*ficon_convert_fn_t)(const uint8_t* input, uint32_t input_length,
                                      uint32_t from_code_set, uint8_t** out_cursor,
                                      uint32_t* out_count, uint32_t* out_space,
                                      uint32_t to_code_set);
extern int32_t MAX_FICON_PORTS;
/**
 * Fills bytes 0 to 111 of a header; those behind are the library's own.
 *
 * @param word_a  who asks, as the daemon's history shows it: at most 31 characters count, null is
 *                no text
 * @param word_b  likewise
 */
void ficon_init_cmi_hdr(void* header, uint32_t msgtype, const char* word_a, const char* word_b,
                        uint32_t subtype);
/**
 * Asks for the VSANs on which FICON is enabled.
 *
 * @param msg  [out] the request, to be dropped by the caller; untouched on failure
 * @return 0, or the transport's error number itself: 32 when the daemon is not there
 */
uint32_t ficon_send_get_enabled_vsans(mts_handle_t handle, mts_msg_ref_t* msg);
/**
 * @param list  [out] status, count, then so many VSAN numbers, all in host order; released by the
 *              caller with `free`; untouched on failure
 * @return 0; 3 for a reply without payload; 74 for one whose length does not fit its count; 12
 *         without memory
 */
uint32_t ficon_parse_get_enabled_vsans(mts_msg_ref_t* reply, uint32_t** list);
uint32_t ficon_send_get_portmap_nonblock(mts_handle_t handle, const char* word_a,
                                         const char* word_b, uint32_t type, uint8_t selector,
                                         if_index_t if_index, uint16_t key1, uint16_t key2,
                                         mts_msg_ref_t* msg);
uint32_t ficon_parse_get_portmap(mts_msg_ref_t* reply, if_index_t* if_index, uint16_t* key1,
                                 uint16_t* key2);
uint32_t ficon_cmi_get_max_portnumber(void);
uint32_t ficon_pmap_get_pn_to_phyif(uint32_t port_number, if_index_t* if_index, uint32_t rows,
                                    const uint32_t* map);
uint32_t ficon_pmap_get_next_if(if_index_t if_index, if_index_t* next);
uint32_t ficon_pmap_get_last_if(if_index_t* last);
uint32_t ficon_pmap_get_if_to_index_with2pmaps(if_index_t if_index, uint32_t* entry,
                                               const uint32_t* pn_if_map,
                                               const ficon_port_pn_entry_t* port_table,
                                               uint32_t physical);
uint32_t ficon_get_default_pn(uint32_t slot, uint32_t logical, uint16_t* defaults);
uint32_t ficon_port_to_pn_init(uint32_t entries, ficon_port_pn_entry_t* table, uint32_t ports,
                               const uint16_t* pa_pn_map);
int32_t ficon_get_max_ficon_ports(void);
ficon_convert_fn_t ficon_get_convert_fn_ptr(void);
uint32_t convert_codepage(uint32_t from_code_set, uint32_t to_code_set, uint8_t* text,
                          uint32_t length);
uint32_t ficonm_platform_lc_to_slot_b0(uint8_t lc, uint8_t* slot);
uint32_t ficonm_platform_slot_to_lc_b0(uint8_t slot, uint8_t* lc);

#ifdef __cplusplus
}
#endif

#endif
