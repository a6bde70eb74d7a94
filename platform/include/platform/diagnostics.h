/** Event history, debug output and error texts. All may be called from any thread. */
#ifndef FICON_PLATFORM_DIAGNOSTICS_H
#define FICON_PLATFORM_DIAGNOSTICS_H

#include <ficon_cmi.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The name under which debug output appears. */
extern const char* sdwrap_dbg_modname;
/** 0 when the history takes events of this kind. */
int32_t sdwrap_hist_event_subtype_check(uint32_t id, uint32_t subtype);
/** Records `length` bytes of text, up to the first NUL. Never fails visibly. */
void sdwrap_hist_event(uint32_t id, uint32_t length, const void* data);
/** Nonzero when debug output of this kind is on. */
int32_t sdwrap_chk_int(uint32_t arg1, uint32_t arg2, uint32_t arg3, uint32_t arg4);
/** Debug output after `printf`; nothing when it is off. */
void buginf(uint32_t level, const char* module, uint32_t arg3, const char* format, ...);
/**
 * A sentence for a status or a Linux error number; a number that nobody knows is written out.
 * Never null; the text is the platform's, and good until the thread's next call.
 */
const char* syserr2str(uint32_t code);

#ifdef __cplusplus
}
#endif

#endif
