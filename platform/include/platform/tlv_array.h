/**
 * TLV arrays: the container of most requests and replies. `align` is the alignment of each TLV;
 * 1 means no padding. No function reads outside the array, whatever its bytes say: a received one
 * is bounded by what was received, any other by the size that it carries.
 */
#ifndef FICON_PLATFORM_TLV_ARRAY_H
#define FICON_PLATFORM_TLV_ARRAY_H

#include <ficon_cmi.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Appends a TLV. A zeroed buffer is an empty array.
 *
 * @param value  `length` bytes, copied; may be null when `length` is 0
 * @return 0; 28 when the TLV does not fit into `capacity`; 74 when the buffer holds no array;
 *         22 without a buffer or a value. The array is unchanged on failure
 */
uint32_t tlv_aligned_array_add_tlv(void* array, uint32_t capacity, uint16_t type, uint16_t length,
                                   const void* value, uint32_t align);
/** The bytes in use, head included: 4 for an empty array, 0 for null. */
uint32_t tlv_aligned_array_size_get(const void* array, uint32_t align);
/**
 * How many steps a walk has: the TLVs, and one more where a malformed rest follows them, so that a
 * walk by count ends in that error. 0 for null.
 */
int32_t tlv_aligned_array_get_num_tlvs(const void* array, uint32_t align);
/**
 * One step of a walk.
 *
 * @param cursor  [in,out] 0 before the first step, then what the last one left
 * @param value   [out] into the array, writable, `*length` bytes
 * @return 0; 61 at the end; 74 where the array is malformed or null. Outputs are untouched then
 */
uint32_t tlv_aligned_array_get_next_tlv(const void* array, uint16_t* type, uint16_t* length,
                                        void** value, uint32_t align, uint32_t* cursor);

#ifdef __cplusplus
}
#endif

#endif
