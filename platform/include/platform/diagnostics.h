/** Event history, debug output and error texts. */
#ifndef FICON_PLATFORM_DIAGNOSTICS_H
#define FICON_PLATFORM_DIAGNOSTICS_H

#include <ficon_cmi.h>

#ifdef __cplusplus
extern "C" {
#endif

extern const char* sdwrap_dbg_modname;
int32_t sdwrap_hist_event_subtype_check(uint32_t id, uint32_t subtype);
void sdwrap_hist_event(uint32_t id, uint32_t length, const void* data);
int32_t sdwrap_chk_int(uint32_t arg1, uint32_t arg2, uint32_t arg3, uint32_t arg4);
void buginf(uint32_t level, const char* module, uint32_t arg3, const char* format, ...);
const char* syserr2str(uint32_t code);

#ifdef __cplusplus
}
#endif

#endif
