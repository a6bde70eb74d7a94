/** Memory tracker entry points, found by name at run time; never referenced at link time. */
#ifndef FICON_PLATFORM_MEMORY_TRACKER_H
#define FICON_PLATFORM_MEMORY_TRACKER_H

#include <ficon_cmi.h>

#ifdef __cplusplus
extern "C" {
#endif

void mtrack_int_init(uintptr_t a, uintptr_t b, uintptr_t c, uintptr_t d);
void mtrack_int_uninit(uintptr_t a);
void* mtrack_int_alloc(uint32_t module, uint32_t type, size_t size, uintptr_t zero);
void* mtrack_int_realloc(void* pointer, size_t size, uintptr_t zero);
void mtrack_int_free(void* pointer, uintptr_t zero);
int mtrack_int_ignore_alloc_abort(uintptr_t a);
int mtrack_int_print_stats(uintptr_t a, uintptr_t b);
int mtrack_int_print_stats_uuid(uintptr_t a, uintptr_t b, uintptr_t c);
int mtrack_int_cli_dump_memstats(uintptr_t a, uintptr_t b, uintptr_t c, uintptr_t zero);
int mtrack_int_cli_detail_dump_memstats(uintptr_t a, uintptr_t b);
int mtrack_int_cli_trcbk_dump_memstats(uintptr_t a, uintptr_t b);
int mtrack_int_cli_en_trcbk(uintptr_t a, uintptr_t b);
int mtrack_int_cli_show_trcbk_count(uintptr_t a, uintptr_t b);
int mtrack_int_add_memtypename(uintptr_t a, uintptr_t b, uintptr_t c);

#ifdef __cplusplus
}
#endif

#endif
