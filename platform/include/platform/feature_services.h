/** Feature manager, software version and platform information. */
#ifndef FICON_PLATFORM_FEATURE_SERVICES_H
#define FICON_PLATFORM_FEATURE_SERVICES_H

#include <ficon_cmi.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct {
  uint32_t slot_count;
} platform_info_t;

/**
 * Enables a feature of the switch and waits until it is.
 *
 * @param feature  its name, at most 31 characters count
 * @param word_a   the caller, as in a CMI header; the reference platform does not pass it on
 * @param word_b   likewise
 * @param arg5     how long to wait, in seconds
 * @return 0; 0x40aa0005 when it was enabled already; a refusal; 3 for an empty reply; else the
 *         transport's error number
 */
uint32_t fm_cmi_set_feature_wait(mts_handle_t handle, const char* feature, const char* word_a,
                                 const char* word_b, uint32_t arg5);
const char* srg_sw_ver_get(uint32_t which);
uint32_t get_platform_info(platform_info_t* info);

#ifdef __cplusplus
}
#endif

#endif
