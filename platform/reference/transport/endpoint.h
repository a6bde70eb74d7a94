/**
 * Opening the reference transport. An endpoint is a text:
 *
 *   embedded:DIR   the emulator in this process, its state in DIR
 *   unix:PATH      an emulator listening on PATH
 *
 * A null endpoint takes the environment variable FICON_ENDPOINT, and without that
 * `embedded:` with $XDG_STATE_HOME/ficon (else ~/.local/state/ficon).
 */
#pragma once

#include <ficon_cmi.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Opens a handle; one conversation, to be used by one thread at a time. A `unix:` daemon that is
 * not there is no error yet: each send tries to reach it and fails with error 32 until it is there.
 *
 * @return the handle, or null with a sentence in `error` (always terminated; may be null)
 */
mts_handle_t ficon_mts_open(const char* endpoint, char* error, size_t error_size);

/** Closes the handle and frees what it holds; messages not dropped become invalid. */
void ficon_mts_close(mts_handle_t handle);

/**
 * How `embedded:` reaches the emulator: `start` makes sure that one runs in this process on
 * `directory` and returns a connected SOCK_SEQPACKET descriptor, or -1 with a sentence in `error`.
 * Programs that link the emulator register its starter first thing in `main`.
 */
typedef int (*ficon_embedded_start_t)(const char* directory, char* error, size_t error_size);
void ficon_embedded_register(ficon_embedded_start_t start);

/** What a trace of exchanges sees: one call per message sent or received. */
typedef struct {
  int reply; /* 0 request, 1 reply */
  uint32_t node, sap, opcode, token, length;
  int32_t error;       /* 0, or the transport's error number */
  uint64_t elapsed_us; /* replies: since the request was sent */
  const void* payload;
} ficon_mts_event_t;
typedef void (*ficon_mts_observer_t)(const ficon_mts_event_t* event, void* context);
void ficon_mts_observe(mts_handle_t handle, ficon_mts_observer_t observer, void* context);

#ifdef __cplusplus
}
#endif
