/** Persistent storage. */
#ifndef FICON_PLATFORM_PSS_H
#define FICON_PLATFORM_PSS_H

#include <ficon_cmi.h>

#ifdef __cplusplus
extern "C" {
#endif

pss_store_t pss_open(const char* uri);
uint32_t pss_move2location(pss_store_t store, uint32_t where, pss_location_t* location);
uint32_t pss_getvalue(pss_store_t store, pss_location_t location, const uint8_t** key,
                      uint32_t* key_length, const void** value, uint32_t* value_length);
uint32_t pss_fetch(pss_store_t store, const uint8_t* key, uint32_t key_length, void* value,
                   uint32_t* value_length);
uint32_t pss2_fetch(pss_store_t store, const uint8_t* key, uint32_t key_length, void* value,
                    uint32_t* value_length);

#ifdef __cplusplus
}
#endif

#endif
