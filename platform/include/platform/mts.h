/** Message transport: one request, one reply, matched by token. */
#ifndef FICON_PLATFORM_MTS_H
#define FICON_PLATFORM_MTS_H

#include <ficon_cmi.h>

#ifdef __cplusplus
extern "C" {
#endif

int32_t mts_send(mts_handle_t handle, uint32_t node, uint32_t sap, uint32_t opcode,
                 const void* payload, uint32_t length, mts_msg_ref_t* msg, uint32_t flags,
                 const mts_send_opts_t* opts);
int32_t mts_recv(mts_handle_t handle, mts_msg_ref_t* reply, const mts_recv_opts_t* opts);
int32_t mts_drop(mts_handle_t handle, mts_msg_ref_t* msg);
void* mts_payload_get(mts_msg_ref_t* msg);
uint32_t mts_rr_token_get(mts_msg_ref_t* msg);
int32_t mts_errno_get(mts_handle_t handle);

#ifdef __cplusplus
}
#endif

#endif
