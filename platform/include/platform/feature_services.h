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

uint32_t fm_cmi_set_feature_wait(mts_handle_t handle, const char* feature, const char* word_a,
                                 const char* word_b, uint32_t arg5);
const char* srg_sw_ver_get(uint32_t which);
uint32_t get_platform_info(platform_info_t* info);

#ifdef __cplusplus
}
#endif

#endif
