/**
 * Message transport: one request, one reply, matched by token.
 *
 * A handle is one conversation with the daemon's node, used by one thread at a time. A null handle
 * is no crash: every call on it fails, and `mts_errno_get` says 9. Error numbers are Linux's:
 * 4 a signal interrupted, 32 the daemon is not there or went away, 62 the wait ran out.
 *
 * A message is held by a reference until it is dropped; exactly one drop per message.
 */
#ifndef FICON_PLATFORM_MTS_H
#define FICON_PLATFORM_MTS_H

#include <ficon_cmi.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Sends a message and returns without waiting for a reply. Connects first where the daemon is not
 * reached yet; may block while the daemon takes no bytes, for a bounded time.
 *
 * @param payload  `length` bytes, copied; may be null when `length` is 0
 * @param msg      [out] the request, to be dropped by the caller; untouched on failure
 * @param flags    0
 * @param opts     words 0 and 1 are 1; null is allowed
 * @return 0; negative on failure, the reason in `mts_errno_get`: 32 nobody there, 90 more than the
 *         transport carries (1 MiB on the reference platform), 4, or another number of Linux
 */
int32_t mts_send(mts_handle_t handle, uint32_t node, uint32_t sap, uint32_t opcode,
                 const void* payload, uint32_t length, mts_msg_ref_t* msg, uint32_t flags,
                 const mts_send_opts_t* opts);
/**
 * Waits for the reply to the request whose token `opts` names. Replies to other requests that come
 * meanwhile are kept for their own receivers; late ones to calls that timed out are discarded.
 *
 * @param reply  [out] the reply, to be dropped by the caller; untouched on failure
 * @param opts   word 0 is 1; word 2 the wait in milliseconds, 0 for without end; word 3 the token
 * @return 0; -1 on failure, the reason in `mts_errno_get`. After 4 the call may be repeated; after
 *         any other error the reply is given up. 22: the token awaits no reply; 71: what came is
 *         no reply at all, and the connection was closed
 */
int32_t mts_recv(mts_handle_t handle, mts_msg_ref_t* reply, const mts_recv_opts_t* opts);
/**
 * Gives a message back: request or reply, on the handle that it came from. A dropped request still
 * gets its reply. Its payload pointer is invalid from here on.
 *
 * @return 0; -1 with error 22 for what is no message of the handle or was dropped already
 */
int32_t mts_drop(mts_handle_t handle, mts_msg_ref_t* msg);
/**
 * The payload of a reply, writable, valid until the drop; null when there is none. Zeroed room
 * stands behind it (64 KiB on the reference platform), since readers copy whole records from
 * replies that may be shorter.
 */
void* mts_payload_get(mts_msg_ref_t* msg);
/** The token that joins a request and its reply; never 0 for a message. To be read before the drop.
 */
uint32_t mts_rr_token_get(mts_msg_ref_t* msg);
/** Why the last call that failed on the handle did. */
int32_t mts_errno_get(mts_handle_t handle);

#ifdef __cplusplus
}
#endif

#endif
