/**
 * Memory tracker entry points, found by name at run time; never referenced at link time. A process
 * gets them by linking or preloading a tracker (libficon_mtrack.so). All are thread-safe.
 *
 * A tracker must let plain `free` release its blocks, and release in `mtrack_int_free` what
 * `malloc` returned: users mix the pairs on purpose. A block released with plain `free` counts as
 * in use until its address is handed out again.
 */
#ifndef FICON_PLATFORM_MEMORY_TRACKER_H
#define FICON_PLATFORM_MEMORY_TRACKER_H

#include <ficon_cmi.h>

#ifdef __cplusplus
extern "C" {
#endif

void mtrack_int_init(uintptr_t a, uintptr_t b, uintptr_t c, uintptr_t d);
void mtrack_int_uninit(uintptr_t a);
/** A block counted under module and type; null when there is no memory. */
void* mtrack_int_alloc(uint32_t module, uint32_t type, size_t size, uintptr_t zero);
/** Keeps the kind. A block that is not the tracker's is resized and stays so. */
void* mtrack_int_realloc(void* pointer, size_t size, uintptr_t zero);
void mtrack_int_free(void* pointer, uintptr_t zero);
int mtrack_int_ignore_alloc_abort(uintptr_t a);
/* The statistics go to standard output, a line for each kind with blocks in use: what is left at
   the end is what leaked. In detail: all kinds that ever were, then every block. The result is the
   number of kinds. */
int mtrack_int_print_stats(uintptr_t a, uintptr_t b);
int mtrack_int_print_stats_uuid(uintptr_t a, uintptr_t b, uintptr_t c);
int mtrack_int_cli_dump_memstats(uintptr_t a, uintptr_t b, uintptr_t c, uintptr_t zero);
int mtrack_int_cli_detail_dump_memstats(uintptr_t a, uintptr_t b);
int mtrack_int_cli_trcbk_dump_memstats(uintptr_t a, uintptr_t b);
int mtrack_int_cli_en_trcbk(uintptr_t a, uintptr_t b);
int mtrack_int_cli_show_trcbk_count(uintptr_t a, uintptr_t b);
/** Module, type, and a pointer to the name, which is copied. */
int mtrack_int_add_memtypename(uintptr_t a, uintptr_t b, uintptr_t c);

#ifdef __cplusplus
}
#endif

#endif
