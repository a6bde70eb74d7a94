/** Persistent storage. */
#ifndef FICON_PLATFORM_PSS_H
#define FICON_PLATFORM_PSS_H

#include <ficon_cmi.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Open a store for reading. There is no close: the store stays the platform's.
 *
 * @param uri  where it is, in the platform's words
 * @return null when it cannot be read; the platform says why where it can
 */
pss_store_t pss_open(const char* uri);

/**
 * Go to a record of a walk, in the order of the keys' bytes. A store has one walk at a time.
 *
 * @param where     1 the first record, 3 the next one
 * @param location  where the walk stands, ignored for the first; [out] where it stands then, the
 *                  store's own; null at the end and on failure
 * @return 0; 0x40480003 at the end; else the store cannot be read
 */
uint32_t pss_move2location(pss_store_t store, uint32_t where, pss_location_t* location);

/**
 * The record at a location.
 *
 * @param key    [out] the store's own, as is `value`: valid until the next call on the store
 * @return 0; an error for a location that is not where the walk stands, and then nothing is written
 */
uint32_t pss_getvalue(pss_store_t store, pss_location_t location, const uint8_t** key,
                      uint32_t* key_length, const void** value, uint32_t* value_length);

/**
 * Copy the value of one record. A walk under way is not disturbed.
 *
 * @param value         [out] untouched on failure
 * @param value_length  room in bytes; [out] the bytes copied
 * @return 0; an error where there is no such record, no room for all of it, or where the store
 *         cannot be read
 */
uint32_t pss_fetch(pss_store_t store, const uint8_t* key, uint32_t key_length, void* value,
                   uint32_t* value_length);

/** As `pss_fetch`: the debug settings are read with it. */
uint32_t pss2_fetch(pss_store_t store, const uint8_t* key, uint32_t key_length, void* value,
                    uint32_t* value_length);

#ifdef __cplusplus
}
#endif

#endif
