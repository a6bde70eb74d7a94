/** TLV arrays: the container of most requests and replies. */
#ifndef FICON_PLATFORM_TLV_ARRAY_H
#define FICON_PLATFORM_TLV_ARRAY_H

#include <ficon_cmi.h>

#ifdef __cplusplus
extern "C" {
#endif

uint32_t tlv_aligned_array_add_tlv(void* array, uint32_t capacity, uint16_t type, uint16_t length,
                                   const void* value, uint32_t align);
uint32_t tlv_aligned_array_size_get(const void* array, uint32_t align);
int32_t tlv_aligned_array_get_num_tlvs(const void* array, uint32_t align);
uint32_t tlv_aligned_array_get_next_tlv(const void* array, uint16_t* type, uint16_t* length,
                                        void** value, uint32_t align, uint32_t* cursor);

#ifdef __cplusplus
}
#endif

#endif
