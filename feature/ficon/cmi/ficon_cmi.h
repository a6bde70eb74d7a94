/**
 * ficon-cmi: the client library of a switch's FICON function.
 *
 * Conventions of every function below, unless its own remark says otherwise:
 *
 * - The result is a status: 0 for success, a 0x4085.... code from the library
 * itself, any other value from fcd, the transport or another platform service, unchanged. A result
 * of -1 reads 0xffffffff in a status.
 * - The leading parameters are the requester code (who asks: 1 the operator's command line, 2 a
 * management agent, 3 the host), the transport handle, `word_a` and `word_b` (texts for the request
 * header: passed on, never read) and the wait argument (passed to the transport unchanged).
 * - A sender (`..._nonblock`, `ficon_cmi_send_...`) sends and returns; the caller drops the message
 * in `msg` after a success, receives the reply, gives it to the matching `..._parse_...` and drops
 * it. A blocking form does all of that on `handle` and keeps nothing.
 * - Out parameters are required unless they are said to accept null. They are written only as
 * stated.
 * - Numbers in records are in host order unless marked BE (big-endian). All records are packed;
 * take a local copy where a pointer to a member is needed.
 * - A buffer handed out is released with `mtrack_free` by the caller.
 * - The library keeps no state between calls but the memory tracker's hooks: any number of threads
 * may call it, each on a handle of its own.
 */
#ifndef FICON_CMI_H
#define FICON_CMI_H

#include <stddef.h>
#include <stdint.h>

#define FICON_PACKED __attribute__((packed))

#pragma GCC visibility push(default)

#ifdef __cplusplus
extern "C" {
#define FICON_SIZE_IS(type, size) static_assert(sizeof(type) == (size), #type)
#else
#define FICON_SIZE_IS(type, size) _Static_assert(sizeof(type) == (size), #type)
#endif

typedef struct mts_handle* mts_handle_t; /* opaque; null is "handle 0" */
typedef struct mts_msg_ref {
  void* impl;
} mts_msg_ref_t; /* on the caller's stack, by pointer */
typedef struct {
  uint32_t word[19];
} mts_send_opts_t; /* 76 bytes */
typedef struct {
  uint32_t word[10];
} mts_recv_opts_t; /* 40 bytes */
typedef uint32_t if_index_t;

typedef struct acfg_hdl* acfg_hdl_t;         /* configuration-text handle */
typedef struct acfg_req* acfg_req_t;         /* the service's request */
typedef struct acfg_ctx* acfg_ctx_t;         /* the service's context */
typedef struct pss_store* pss_store_t;       /* an open store, or null */
typedef struct pss_location* pss_location_t; /* a place in a store, or null */

typedef enum {
  TEVRAK_MEM_file_info = 0,
  TEVRAK_MEM_dirhistbufent = 1,
  TEVRAK_MEM_savedfilebuff = 2,
  TEVRAK_MEM_ifindex_rng = 3,
  TEVRAK_MEM_portinfo = 4,
  TEVRAK_MEM_ifswapops = 5,
  TEVRAK_MEM_setportname = 6,
  TEVRAK_MEM_setportblock = 7,
  TEVRAK_MEM_setprohibit_tlv = 8,
  TEVRAK_MEM_setprohibit = 9,
  TEVRAK_MEM_sethostdata = 10,
  TEVRAK_MEM_pib = 11,
  TEVRAK_MEM_vsanlist = 12,
  TEVRAK_MEM_boxstatus = 13,
  TEVRAK_MEM_TYPES_MAX = 14
} __tevrak_mem_type_t;

/** An fcd lock reply. */
typedef struct FICON_PACKED {
  uint32_t vsan;
  uint8_t op;         /* 0 free, 1 get, 2 reset, 3 status */
  uint32_t status;    /* 0, 0x40890029 busy, 0x40890036 already held */
  uint32_t requester; /* code of the asker or holder */
  uint8_t reserved0[5];
} ficon_fcd_lock_rec_t;
/** The settings of a VSAN. */
typedef struct FICON_PACKED {
  uint32_t vsan;  /* BE */
  uint32_t state; /* 2: enabled and up */
  uint8_t switch_offline;
  uint8_t host_control_switch_offline;
  uint8_t prohibit_host_control;
  uint8_t clock_alert_mode;
  uint8_t user_alert_mode;
  uint8_t prohibit_snmp;
  uint8_t auto_save;
  uint8_t reserved0;
  uint32_t key_counter; /* BE */
  uint32_t codepage;    /* BE when set, host order when read */
  uint8_t reserved1[1296];
  uint32_t tstmp_clock1; /* host order, both words */
  uint32_t tstmp_clock2;
  uint8_t fcid_last_byte;
  uint8_t host_clock_set_allowed;
  uint8_t reserved2[17];
} ficon_cmi_vsan_cfg_t;
/** Head of a box status; `group_count` x 5 `ficon_cmi_box_entry_t` follow. */
typedef struct FICON_PACKED {
  uint32_t status;
  uint8_t reserved0;
  uint8_t group_count;
  uint8_t reserved1[2];
} ficon_cmi_box_status_t;
/** One entry of a box status, as fcd sends it. */
typedef struct FICON_PACKED {
  uint8_t data[28];
} ficon_cmi_box_entry_t;
/** One record of the product identification block, as fcd sends it. */
typedef struct FICON_PACKED {
  uint8_t data[50];
} ficon_cmi_pib_rec_t;
/** One entry of the director history. */
typedef struct FICON_PACKED {
  uint32_t value;
  uint8_t byte_value;
  uint8_t field[32];
  uint8_t reserved0[3];
} ficon_cmi_hist_entry_t;
/** The MIH time-out as fcd reports it. */
typedef struct FICON_PACKED {
  uint32_t timeout; /* BE */
  uint32_t mih_arg; /* BE */
  uint8_t mih_op;
  uint8_t reserved0[3];
  uint8_t reserved1;
} ficon_cmi_mihpto_rec_t;
/** One port of a module's port map. */
typedef struct FICON_PACKED {
  uint8_t state;
  uint8_t port_address; /* 0xff: none */
  if_index_t if_index;  /* BE, unlike in the full entry */
  uint8_t port_number;  /* 0xff: none */
} ficon_cmi_portmap_entry_t;
/** One port number of the full port map. */
typedef struct FICON_PACKED {
  uint8_t state;
  uint8_t port_address;
  if_index_t if_index; /* host order */
} ficon_cmi_portmap_full_entry_t;
/** Interfaces from first to last, both included. */
typedef struct FICON_PACKED {
  if_index_t first_if;
  if_index_t last_if;
} ficon_cmi_ifindex_rng_t;
/** The port manager's record of a port; the fields that are read here have names. */
typedef struct FICON_PACKED {
  if_index_t if_index;
  uint8_t reserved0[139];
  uint32_t port_vsan;
  uint32_t port_mode;
  uint8_t reserved1[6];
  uint8_t trunk_mode;
  uint8_t reserved2[53];
  uint8_t flags;
  uint8_t reserved3[286];
} pm_cmi_port_config_t;
/** Head of a swap's result; `count` `ficon_cmi_swap_op_t` follow. */
typedef struct FICON_PACKED {
  uint8_t header[112];
  uint32_t status;
  uint8_t reserved0[8];
  uint32_t count;
} ficon_cmi_swap_reply_t;
/** One swap operation, as fcd sends it. */
typedef struct FICON_PACKED {
  uint8_t data[8];
} ficon_cmi_swap_op_t;
/** The file request record. */
typedef struct FICON_PACKED {
  uint8_t header[112];
  uint32_t requester;   /* BE */
  uint32_t op;          /* BE; host order in the file information request */
  uint32_t vsan;        /* BE */
  uint8_t file_name[8]; /* EBCDIC, padded with 0x40 */
  uint8_t reserved0;
  uint32_t file_key;
  uint32_t data_offset; /* BE */
  uint32_t status;
  uint8_t reply_flag;
  uint8_t reserved1[3];
  uint8_t file_name2[8]; /* EBCDIC */
  uint8_t reserved2;
} ficon_cmi_file_req_t;
/** The header of a configuration file. */
typedef struct FICON_PACKED {
  uint8_t reserved0[32];
  char description[24]; /* padded with blanks */
  uint8_t reserved1[72];
} ficon_cmi_file_hdr_t;
/** Whether a port is blocked. */
typedef struct FICON_PACKED {
  uint16_t port_address;
  uint8_t blocked;
} ficon_cmi_port_blocked_entry_t;
/** The name of a port. */
typedef struct FICON_PACKED {
  uint32_t port_address;
  char port_name[25]; /* 24 characters and a terminator; EBCDIC unless it is to be converted */
} ficon_cmi_port_name_entry_t;
/** The port addresses that a port may not talk to. */
typedef struct FICON_PACKED {
  uint32_t port_address;
  uint32_t common_value;
  uint8_t bitset[32]; /* one bit per port address */
} ficon_cmi_prohibit_entry_t;
/** What a file holds for a port. */
typedef struct FICON_PACKED {
  uint8_t reserved0[4];
  int32_t port;
  if_index_t if_index; /* 0: no interface */
  uint8_t reserved1[6];
  char port_name[24]; /* ASCII after conversion */
  uint8_t port_name_end;
  uint8_t reserved2[64];
} ficon_cmi_port_info_t;
/** What is known of a configuration file. */
typedef struct FICON_PACKED {
  uint8_t reserved0[33];
  char file_name[9];
  uint8_t reserved1[49];
  char description[24];
  uint8_t reserved2[81];
} ficon_cmi_file_info_t;
/** One position of the port table. */
typedef struct FICON_PACKED {
  uint16_t port_number;  /* 512: none */
  uint16_t port_address; /* 512: none */
  uint8_t reserved0[16];
} ficon_port_pn_entry_t;
/** The port manager's brief record of a port. */
typedef struct FICON_PACKED {
  if_index_t if_index;
  uint8_t reserved0[47];
} pm_port_info_brief_t;
/** The beginning of the port manager's transceiver record. */
typedef struct FICON_PACKED {
  uint8_t reserved0[4];
  uint32_t status;
} pm_fcot_info_t;

FICON_SIZE_IS(mts_send_opts_t, 76);
FICON_SIZE_IS(mts_recv_opts_t, 40);
FICON_SIZE_IS(mts_msg_ref_t, sizeof(void*));
FICON_SIZE_IS(__tevrak_mem_type_t, 4);
FICON_SIZE_IS(ficon_fcd_lock_rec_t, 18);
FICON_SIZE_IS(ficon_cmi_vsan_cfg_t, 1347);
FICON_SIZE_IS(ficon_cmi_box_status_t, 8);
FICON_SIZE_IS(ficon_cmi_box_entry_t, 28);
FICON_SIZE_IS(ficon_cmi_pib_rec_t, 50);
FICON_SIZE_IS(ficon_cmi_hist_entry_t, 40);
FICON_SIZE_IS(ficon_cmi_mihpto_rec_t, 13);
FICON_SIZE_IS(ficon_cmi_portmap_entry_t, 7);
FICON_SIZE_IS(ficon_cmi_portmap_full_entry_t, 6);
FICON_SIZE_IS(ficon_cmi_ifindex_rng_t, 8);
FICON_SIZE_IS(pm_cmi_port_config_t, 498);
FICON_SIZE_IS(ficon_cmi_swap_reply_t, 128);
FICON_SIZE_IS(ficon_cmi_swap_op_t, 8);
FICON_SIZE_IS(ficon_cmi_file_req_t, 158);
FICON_SIZE_IS(ficon_cmi_file_hdr_t, 128);
FICON_SIZE_IS(ficon_cmi_port_blocked_entry_t, 3);
FICON_SIZE_IS(ficon_cmi_port_name_entry_t, 29);
FICON_SIZE_IS(ficon_cmi_prohibit_entry_t, 40);
FICON_SIZE_IS(ficon_cmi_port_info_t, 107);
FICON_SIZE_IS(ficon_cmi_file_info_t, 196);
FICON_SIZE_IS(ficon_port_pn_entry_t, 20);
FICON_SIZE_IS(pm_port_info_brief_t, 51);
FICON_SIZE_IS(pm_fcot_info_t, 8);

/* ---- CMI request envelope and transport ---- */

/**
 * Receive the reply that `opts` names. Blocks; an interrupted wait is taken up again, without
 * limit.
 *
 * @param reply  [out] the message, to be dropped by the caller; set on success only
 * @param opts   word 0 is 1, word 2 the wait argument, word 3 the token of the request
 * @return 0; 0x40850043 when the wait ran out; 0x40850000 for any other transport error
 */
uint32_t ficon_cmi_mts_recv(mts_handle_t handle, mts_msg_ref_t* reply, const mts_recv_opts_t* opts);

/* ---- Memory tracking and memory types ---- */

/**
 * Look for a memory tracker in the hosting process (functions named `mtrack_int_...`, found by
 * name) and use it from now on if it is complete. Called once at start, before other threads use
 * the library. The tracker's own init is called as soon as it is found, with the four arguments.
 */
void mtrack_init(uintptr_t a, uintptr_t b, uintptr_t c, uintptr_t d);

/** Tell the tracker to stop; nothing without one. The library goes on using it. */
void mtrack_uninit(uintptr_t a);

/**
 * Allocate from the tracker, or with `malloc` where there is none. The request is padded: size + 8
 * rounded down to a multiple of 4.
 *
 * @param module  the caller's number in the tracker; the library's own is 205
 * @param type    a `__tevrak_mem_type_t` value for the tracker's statistics
 * @return memory, not zeroed, for `mtrack_free`; null when there is none, or `size` cannot be
 * padded
 */
void* mtrack_alloc(uint32_t module, uint32_t type, size_t size);

/** As `realloc`, with the padding of `mtrack_alloc`. On failure null, and `pointer` stays valid. */
void* mtrack_realloc(void* pointer, size_t size);

/** Release what the library or `mtrack_alloc` handed out. Accepts null. */
void mtrack_free(void* pointer);

/** Passed on to the tracker; 0 without one. */
int mtrack_ignore_alloc_abort(uintptr_t a);

/**
 * Passed on to the tracker; 0 without one. The library registers no names itself: a process may,
 * with
 * `__tevrak_mem_type_t_find`.
 */
int mtrack_add_memtypename(uintptr_t a, uintptr_t b, uintptr_t c);

/** The tracker prints its statistics; 0 without one. */
int mtrack_print_stats(uintptr_t a, uintptr_t b);

/** The tracker prints its statistics of one process; 0 without one. */
int mtrack_print_stats_uuid(uintptr_t a, uintptr_t b, uintptr_t c);

/** The tracker prints its statistics for a command line; 0 without one. */
int mtrack_cli_print_stats_uuid(uintptr_t a, uintptr_t b, uintptr_t c);

/**
 * As `mtrack_cli_print_stats_uuid` with 0 as the tracker's second argument and `c` as its third.
 * Without a tracker a nonzero value that means nothing.
 */
int mtrack_cli_print_stats(uintptr_t a, uintptr_t c);

/**
 * The tracker prints details. To be called only after an `mtrack_init` that found a tracker: this
 * and the next two call it without a test.
 */
int mtrack_cli_detail_print_stats(uintptr_t a, uintptr_t b);

/** The tracker prints its traces. Only with a tracker, as above. */
int mtrack_cli_trcbk_print_stats(uintptr_t a, uintptr_t b);

/** The tracker prints its trace counts. Only with a tracker, as above. */
int mtrack_cli_show_trcbk_count(uintptr_t a, uintptr_t b);

/** The name of a memory type, 14 (the end marker) included; null for any other number. */
const char* __tevrak_mem_type_t_find(uint32_t value);

/** The memory type of a name, upper or lower case. An unknown name gives `TEVRAK_MEM_file_info`
 * (0). */
__tevrak_mem_type_t __tevrak_mem_type_t_str2enum(const char* name);

/* ---- FICON-enabled check and fcd lock ---- */

/**
 * Take fcd's lock on a VSAN. Blocks on `handle`. A busy lock is asked for again for requesters 1
 * and 2: three times, 300 ms apart.
 *
 * @return 0 granted, or held by this requester already; -1 refused or failed; -2 fcd is not there
 */
int32_t ficon_get_fcd_lock(mts_handle_t handle, uint32_t vsan, uint32_t requester, uint32_t wait);

/**
 * Free fcd's lock on a VSAN. Blocks on `handle`.
 *
 * @return 0 freed, also when fcd is not there: a lock goes with it; -1 failed. What fcd answers is
 * not examined
 */
int32_t ficon_free_fcd_lock(mts_handle_t handle, uint32_t vsan, uint32_t requester, uint32_t wait);

/**
 * Free the lock whoever holds it. Blocks on `handle`.
 *
 * @return 0 reset, also when fcd went away since it was asked whether FICON is enabled; 0x40850004
 *         FICON is not enabled on the VSAN, or that could not be learnt (fcd not there, for one):
 *         the lock is not asked for; 0x40850013 refused; the receive code; -1 the send failed
 */
int32_t ficon_reset_fcd_lock(mts_handle_t handle, uint32_t vsan, uint32_t requester, uint32_t wait);

/**
 * Read who holds the lock. Blocks on `handle`.
 *
 * @param unused  any value
 * @param record  [out] fcd's answer, 18 bytes as they stand, host order
 * @return 0; 0x40850004 FICON is not enabled on the VSAN, or that could not be learnt: the lock is
 *         not asked for; -1 failed
 */
int32_t ficon_get_fcd_lock_status(mts_handle_t handle, uint32_t vsan, uint32_t unused,
                                  uint32_t wait, ficon_fcd_lock_rec_t* record);

/**
 * Copy a lock reply's 18 bytes into `record`; the reply is the caller's to drop.
 *
 * @return 0; 3 without a payload, `record` untouched
 */
uint32_t ficon_parse_allegiance_msg(mts_msg_ref_t* reply, ficon_fcd_lock_rec_t* record);

/* ---- VSAN configuration setters ---- */

/**
 * The setters of a VSAN. Each sends one setting; the value bytes are 0 or 1 and fcd judges them.
 *
 * A `..._nonblock` form sends and returns 0, the TLV array's error or the transport's send result.
 * The blocking form (for automatic saving `ficon_cmi_auto_save_config`) takes the fcd lock where
 * FICON is enabled on the VSAN and returns fcd's status, 0x40850012 when the lock cannot be had
 * (nothing sent), 0x40850043 or 0x40850000 when no reply came, 3 or 0x40850003 for a malformed one.
 * Without FICON on the VSAN the request goes unlocked and fcd refuses it.
 *
 * All modes at once:
 * @param modes  6 bytes: host control of switch offline, prohibit host control, clock alert, user
 *               alert, prohibit SNMP, automatic saving
 */
uint32_t ficon_cmi_set_mode_nonblock(uint32_t requester, mts_handle_t handle, const char* word_a,
                                     const char* word_b, uint32_t wait, uint32_t vsan,
                                     const uint8_t* modes, mts_msg_ref_t* msg);
uint32_t ficon_cmi_set_mode(uint32_t requester, mts_handle_t handle, const char* word_a,
                            const char* word_b, uint32_t wait, uint32_t vsan, const uint8_t* modes);

/** Whether the host may only read: 1 prohibits its changes. */
uint32_t ficon_cmi_set_prohibit_host_control_nonblock(uint32_t requester, mts_handle_t handle,
                                                      const char* word_a, const char* word_b,
                                                      uint32_t wait, uint32_t vsan, uint8_t value,
                                                      mts_msg_ref_t* msg);
uint32_t ficon_cmi_set_prohibit_host_control(uint32_t requester, mts_handle_t handle,
                                             const char* word_a, const char* word_b, uint32_t wait,
                                             uint32_t vsan, uint8_t value);

/** Whether the host may take the switch offline. */
uint32_t ficon_cmi_set_host_control_switch_offline_nonblock(uint32_t requester, mts_handle_t handle,
                                                            const char* word_a, const char* word_b,
                                                            uint32_t wait, uint32_t vsan,
                                                            uint8_t value, mts_msg_ref_t* msg);
uint32_t ficon_cmi_set_host_control_switch_offline(uint32_t requester, mts_handle_t handle,
                                                   const char* word_a, const char* word_b,
                                                   uint32_t wait, uint32_t vsan, uint8_t value);

/** Whether tools warn before an operator sets the clock. */
uint32_t ficon_cmi_clock_alert_mode_nonblock(uint32_t requester, mts_handle_t handle,
                                             const char* word_a, const char* word_b, uint32_t wait,
                                             uint32_t vsan, uint8_t value, mts_msg_ref_t* msg);
uint32_t ficon_cmi_clock_alert_mode(uint32_t requester, mts_handle_t handle, const char* word_a,
                                    const char* word_b, uint32_t wait, uint32_t vsan,
                                    uint8_t value);

/** Whether tools ask before an action that may disrupt traffic. */
uint32_t ficon_cmi_user_alert_mode_nonblock(uint32_t requester, mts_handle_t handle,
                                            const char* word_a, const char* word_b, uint32_t wait,
                                            uint32_t vsan, uint8_t value, mts_msg_ref_t* msg);
uint32_t ficon_cmi_user_alert_mode(uint32_t requester, mts_handle_t handle, const char* word_a,
                                   const char* word_b, uint32_t wait, uint32_t vsan, uint8_t value);

/** Whether management agents may only read: 1 prohibits their changes. */
uint32_t ficon_cmi_prohibit_snmp_nonblock(uint32_t requester, mts_handle_t handle,
                                          const char* word_a, const char* word_b, uint32_t wait,
                                          uint32_t vsan, uint8_t value, mts_msg_ref_t* msg);
uint32_t ficon_cmi_prohibit_snmp(uint32_t requester, mts_handle_t handle, const char* word_a,
                                 const char* word_b, uint32_t wait, uint32_t vsan, uint8_t value);

/** Automatic saving: every change of the active configuration also goes to the file IPL. */
uint32_t ficon_cmi_auto_save_nonblock(uint32_t requester, mts_handle_t handle, const char* word_a,
                                      const char* word_b, uint32_t wait, uint32_t vsan,
                                      uint8_t value, mts_msg_ref_t* msg);
uint32_t ficon_cmi_auto_save_config(uint32_t requester, mts_handle_t handle, const char* word_a,
                                    const char* word_b, uint32_t wait, uint32_t vsan,
                                    uint8_t value);

/** Add one to the key counter. */
uint32_t ficon_cmi_inc_key_counter_nonblock(uint32_t requester, mts_handle_t handle,
                                            const char* word_a, const char* word_b, uint32_t wait,
                                            uint32_t vsan, mts_msg_ref_t* msg);
uint32_t ficon_cmi_inc_key_counter(uint32_t requester, mts_handle_t handle, const char* word_a,
                                   const char* word_b, uint32_t wait, uint32_t vsan);

/**
 * Add one to the key counter if it still is `key_counter`; fcd refuses otherwise. The counter comes
 * before the VSAN, unlike in every other function.
 */
uint32_t ficon_cmi_test_inc_key_counter_nonblock(uint32_t requester, mts_handle_t handle,
                                                 const char* word_a, const char* word_b,
                                                 uint32_t wait, uint32_t key_counter, uint32_t vsan,
                                                 mts_msg_ref_t* msg);
uint32_t ficon_cmi_test_inc_key_counter(uint32_t requester, mts_handle_t handle, const char* word_a,
                                        const char* word_b, uint32_t wait, uint32_t key_counter,
                                        uint32_t vsan);

/** The EBCDIC code page of the VSAN's names, for example 37. */
uint32_t ficon_cmi_set_codepage(uint32_t requester, mts_handle_t handle, const char* word_a,
                                const char* word_b, uint32_t wait, uint32_t vsan,
                                uint32_t codepage);

/** Present the switch offline to the host. */
uint32_t ficon_cmi_switch_offline_nonblock(uint32_t requester, mts_handle_t handle,
                                           const char* word_a, const char* word_b, uint32_t wait,
                                           uint32_t vsan, uint8_t value, mts_msg_ref_t* msg);
uint32_t ficon_cmi_switch_offline(uint32_t requester, mts_handle_t handle, const char* word_a,
                                  const char* word_b, uint32_t wait, uint32_t vsan, uint8_t value);

/** Set the time-stamp clock: two words that fcd keeps, sent in host order. */
uint32_t ficon_cmi_set_tstmp_clock_nonblock(uint32_t requester, mts_handle_t handle,
                                            const char* word_a, const char* word_b, uint32_t wait,
                                            uint32_t vsan, uint32_t first_word,
                                            uint32_t second_word, mts_msg_ref_t* msg);
uint32_t ficon_cmi_set_tstmp_clock(uint32_t requester, mts_handle_t handle, const char* word_a,
                                   const char* word_b, uint32_t wait, uint32_t vsan,
                                   uint32_t first_word, uint32_t second_word);

/** The last byte of the FCIDs of FICON ports. */
uint32_t ficon_cmi_set_fcid_last_byte(uint32_t requester, mts_handle_t handle, const char* word_a,
                                      const char* word_b, uint32_t wait, uint32_t vsan,
                                      uint8_t value);

/** Whether the host's setting of the clock is taken. */
uint32_t ficon_cmi_set_host_clock_set_allowed(uint32_t requester, mts_handle_t handle,
                                              const char* word_a, const char* word_b, uint32_t wait,
                                              uint32_t vsan, uint8_t value);

/** Set the time-stamp clock to zero. */
uint32_t ficon_cmi_clear_tstmp_clock(uint32_t requester, mts_handle_t handle, const char* word_a,
                                     const char* word_b, uint32_t wait, uint32_t vsan);

/**
 * Read the status out of a setter's reply; the reply is the caller's to drop.
 *
 * @return fcd's status; 0x40850003 without TLVs, after a printed line; 3 without a header TLV
 */
uint32_t ficon_cmi_parse_vsan_cfg(mts_msg_ref_t* reply);

/* ---- FICON state and box status ---- */

/**
 * Turn FICON on a VSAN on (`state` nonzero) or off (0). The feature must be on already; the
 * blocking form sees to that.
 *
 * @return 0 or the transport's send result
 */
uint32_t ficon_cmi_set_ficon_state_nonblock(uint32_t requester, mts_handle_t handle,
                                            const char* word_a, const char* word_b, uint32_t wait,
                                            uint32_t vsan, uint8_t state, mts_msg_ref_t* msg);

/** @return fcd's status out of the reply; 3 without a payload */
uint32_t ficon_cmi_parse_set_ficon_state(mts_msg_ref_t* reply);

/**
 * Turn FICON on a VSAN on or off. Blocks; takes the fcd lock where FICON is on. Turning on first
 * turns on the switch's feature "ficon"; a refusal of that is printed and returned. Turning off
 * while fcd is not there is done: 0.
 *
 * @return fcd's status; the feature manager's; 0x40850012 when the lock cannot be had; 0x40850043,
 *         0x40850000 or 3 when no usable reply came
 */
uint32_t ficon_cmi_set_ficon_state(uint32_t requester, mts_handle_t handle, const char* word_a,
                                   const char* word_b, uint32_t wait, uint32_t vsan, uint8_t state);

/**
 * Ask for the box status. A sender in spite of its name: the caller receives the reply and gives it
 * to `ficon_cmi_parse_box_status`. The requester is not sent.
 *
 * @return 0 or the transport's send result
 */
uint32_t ficon_cmi_get_box_status(uint32_t requester, mts_handle_t handle, const char* word_a,
                                  const char* word_b, uint32_t wait, mts_msg_ref_t* msg);

/**
 * Copy a box status reply whole.
 *
 * @param status  [out] the 8-byte head with `group_count` x 5 entries after it, for `mtrack_free`;
 * null on failure
 * @return 0; 3 without a payload or with a nonzero status in it; 0x40850010 without memory
 */
uint32_t ficon_cmi_parse_box_status(mts_msg_ref_t* reply, ficon_cmi_box_status_t** status);

/* ---- VSAN information and code pages ---- */

/**
 * Ask for the settings of a VSAN (`msgtype` 1) or of the next VSAN after it (2). The requester is
 * not sent.
 *
 * @return 0, the TLV array's error or the transport's send result
 */
uint32_t ficon_cmi_get_vsan_info_nonblock(uint32_t requester, mts_handle_t handle,
                                          const char* word_a, const char* word_b, uint32_t wait,
                                          uint32_t msgtype, uint32_t vsan, mts_msg_ref_t* msg);

/**
 * Copy the settings out of a reply.
 *
 * @param record  [out] as fcd sent it: `vsan` BE, everything else in host order; untouched on
 * failure
 * @return 0; fcd's status; 0x40850003 for a reply without TLVs, header or record
 */
uint32_t ficon_cmi_parse_vsan_info(mts_msg_ref_t* reply, ficon_cmi_vsan_cfg_t* record);

/**
 * Read the settings of a VSAN (`msgtype` 1) or of the next one (2). Blocks; takes no lock.
 *
 * @param record  [out] as of `ficon_cmi_parse_vsan_info`
 * @return the parser's status; 0x40850043 or 0x40850000 when no reply came; a send error
 */
uint32_t ficon_cmi_get_vsan_info(uint32_t requester, mts_handle_t handle, const char* word_a,
                                 const char* word_b, uint32_t wait, uint32_t msgtype, uint32_t vsan,
                                 ficon_cmi_vsan_cfg_t* record);

/** @return the VSAN's code page, or 0 when it could not be read: no status */
uint32_t ficon_cmi_get_codepage(uint32_t requester, mts_handle_t handle, const char* word_a,
                                const char* word_b, uint32_t wait, uint32_t vsan);

/**
 * The code page of the first FICON VSAN.
 *
 * @param vsan  [out] that VSAN; may be null; untouched on failure
 * @return the code page, or 0 after a printed line: no status
 */
uint32_t ficon_cmi_getnext_codepage(uint32_t requester, mts_handle_t handle, const char* word_a,
                                    const char* word_b, uint32_t wait, uint32_t* vsan);

/**
 * Whether any FICON VSAN that is up saves automatically. Asks for each in turn; one that cannot be
 * read is passed over.
 *
 * @param flag  [out] 1 or 0; 0 on failure
 * @return 0, or what kept the list of FICON VSANs from being read
 */
uint32_t ficon_is_active_saved_enabled(mts_handle_t handle, uint32_t wait, uint8_t* flag);

/* ---- Host data ---- */

/**
 * The host data of a VSAN: up to 16384 bytes that the host side keeps on the switch, and that the
 * switch does not interpret. The request carries neither requester nor words. Takes no lock.
 *
 * @param vsan  VSAN number
 * @param data  [out] room for 16384 bytes; untouched on failure, and beyond `length`
 * @param length  [out] bytes of data; 0 on failure of the reply
 * @return 3 for a reply without payload; 0x40850003 for one that claims more than 16384 bytes
 */
uint32_t ficon_cmi_send_get_host_data_nonblock(uint32_t requester, mts_handle_t handle,
                                               const char* word_a, const char* word_b,
                                               uint32_t wait, uint32_t vsan, mts_msg_ref_t* msg);

/** @param vsan  [out] the VSAN that the reply names; untouched on failure */
uint32_t ficon_cmi_parse_get_host_data(mts_msg_ref_t* reply, uint32_t* vsan, uint8_t* data,
                                       uint32_t* length);
uint32_t ficon_cmi_get_host_data(uint32_t requester, mts_handle_t handle, const char* word_a,
                                 const char* word_b, uint32_t wait, uint32_t vsan, uint8_t* data,
                                 uint32_t* length);

/**
 * Writes part of a VSAN's host data, under the fcd lock where FICON is enabled (without it where it
 * is not). The requester reaches the lock alone.
 *
 * @param offset  where in the block the bytes go; `offset` + `length` is at most 16384
 * @param data  `length` bytes; copied, not kept
 * @return 0x40850003 for a write beyond 16384 bytes, before anything is sent; 0x40850010 without
 *         memory for the request; 0x40850012 when the lock cannot be had; 3 for a reply without
 *         payload
 */
uint32_t ficon_cmi_send_set_host_data_nonblock(uint32_t requester, mts_handle_t handle,
                                               const char* word_a, const char* word_b,
                                               uint32_t wait, uint32_t vsan, uint32_t offset,
                                               const uint8_t* data, uint32_t length,
                                               mts_msg_ref_t* msg);

/** @param vsan  [out] the VSAN that the reply names; 4094 on failure */
uint32_t ficon_cmi_parse_set_host_data(mts_msg_ref_t* reply, uint32_t* vsan);
uint32_t ficon_cmi_set_host_data(uint32_t requester, mts_handle_t handle, const char* word_a,
                                 const char* word_b, uint32_t wait, uint32_t vsan, uint32_t offset,
                                 const uint8_t* data, uint32_t length);

/* ---- Product identification block and history summary ---- */

/**
 * A range of the product identification block: 50-byte records, whose meaning is fcd's. There is no
 * blocking form. Takes no lock; the requester is not sent.
 *
 * @param pib_key  which records are counted; fcd's meaning
 * @param first  index of the first record wanted
 * @param last  index of the last one, included
 */
uint32_t ficon_cmi_send_get_pib(uint32_t requester, mts_handle_t handle, const char* word_a,
                                const char* word_b, uint32_t wait, uint32_t pib_key, uint8_t first,
                                uint8_t last, mts_msg_ref_t* msg);

/**
 * @param ignored  has no meaning
 * @param first  [out] index of the first record in the reply, which need not be the one asked for;
 *               may be null
 * @param last  [out] index of the last one; may be null
 * @param records  [out] `last` - `first` + 1 records, the caller's to free with `mtrack_free`, also
 *                 when the reply turns out malformed only after they were allocated: set it to null
 *                 before the call, and free it after every outcome
 * @return 0x40850003 for a reply without TLVs, header or records, with a range that runs backwards,
 *         or whose records do not fill it; 0x40850010 without memory
 */
uint32_t ficon_cmi_parse_getpib(mts_msg_ref_t* reply, uint32_t ignored, uint8_t* first,
                                uint8_t* last, ficon_cmi_pib_rec_t** records);

/**
 * A batch of the director history from a position on. Takes no lock; the requester is not sent.
 * Calling again with the `hist_key` that came back walks on.
 *
 * @param msgtype  message type of the header
 * @param hist_key  position
 * @param hist_op  operation, 0 to 2; with its arguments fcd's meaning
 */
uint32_t ficon_cmi_get_history_summary_nonblock(uint32_t requester, mts_handle_t handle,
                                                const char* word_a, const char* word_b,
                                                uint32_t wait, uint32_t msgtype, uint32_t hist_key,
                                                uint32_t hist_op, uint32_t hist_arg1,
                                                uint32_t hist_arg2, mts_msg_ref_t* msg);

/**
 * Reads the first two TLVs of the reply, in either order, and no other.
 *
 * @param count  [out] entries; written once the reply is known to be well-formed
 * @param summary_word  [out] untouched when there are no entries
 * @param hist_key  [out] position to go on from; may be null
 * @param entries  [out] `count` entries in host order, the caller's to free with `mtrack_free`;
 * null when there are none. Bytes 37 to 39 of an entry are undefined
 * @return 0x40850003 for a reply without the two TLVs, with an operation above 2, or whose entries
 *         do not fit their TLV (nothing is written then); 0x40850010 without memory
 */
uint32_t ficon_cmi_parse_history_summary(mts_msg_ref_t* reply, uint32_t* count,
                                         uint32_t* summary_word, uint32_t* hist_key,
                                         ficon_cmi_hist_entry_t** entries);

/** @param hist_key  [in,out] position; as the parse function leaves it on failure */
uint32_t ficon_cmi_get_history_summary(uint32_t requester, mts_handle_t handle, const char* word_a,
                                       const char* word_b, uint32_t wait, uint32_t msgtype,
                                       uint32_t* hist_key, uint32_t hist_op, uint32_t hist_arg1,
                                       uint32_t hist_arg2, uint32_t* count, uint32_t* summary_word,
                                       ficon_cmi_hist_entry_t** entries);

/* ---- Port limits, get-next type, timeouts and software version ---- */

/**
 * How fcd orders its get-next answers. Switch-wide: no VSAN, no lock; the requester is not sent.
 *
 * @param type  [out] as fcd sent it, also beside a nonzero status; may be null
 * @return 3 for a reply without payload
 */
uint32_t ficon_cmi_get_getnext_type(uint32_t requester, mts_handle_t handle, const char* word_a,
                                    const char* word_b, uint32_t wait, uint32_t* type);

/** @return 3 for a reply without payload */
uint32_t ficon_cmi_set_getnext_type(uint32_t requester, mts_handle_t handle, const char* word_a,
                                    const char* word_b, uint32_t wait, uint32_t type);
uint32_t ficon_cmi_parse_getnext_type(mts_msg_ref_t* reply, uint32_t* type);

/** Sets how many ports FICON uses at most, switch-wide. @return 3 for a reply without payload */
uint32_t ficon_cmi_set_max_ports(uint32_t requester, mts_handle_t handle, const char* word_a,
                                 const char* word_b, uint32_t wait, uint32_t count);
uint32_t ficon_cmi_parse_max_port(mts_msg_ref_t* reply);

/**
 * The missing-interrupt-handler process time-out. Takes no lock; the requester is not sent.
 *
 * Operations 2 and 3 wait for a reply. All others return once the request is sent: 0 then does not
 * say that fcd took it.
 *
 * @param mih_op  0 and 1 set, 2 and 3 read; which time-out is fcd's meaning
 * @param mih_arg  argument, fcd's meaning
 * @param timeout  sent with operations 0 and 1, 0 with others
 * @param reply_record  [out] written by operations 2 and 3 alone; numbers in it are big-endian
 * @return the transport's error number for a failed send; 3 for a reply without payload
 */
uint32_t ficon_cmi_mihpto(uint32_t requester, mts_handle_t handle, const char* word_a,
                          const char* word_b, uint32_t wait, uint8_t mih_op, uint32_t mih_arg,
                          uint32_t timeout, ficon_cmi_mihpto_rec_t* reply_record);

/**
 * The switch's software version as numbers: the platform's text cut at every `.`, `(` and `)`, each
 * piece read as a decimal number and kept as a byte. "4.1(3a)" is 4, 1, 3, 0. Local: nothing is
 * sent.
 *
 * @param unused  has no meaning
 * @param numbers  [out] `count` bytes, zeros behind the last piece
 * @param count  positive: with 0 or less, nothing bounds what is written but the length of the
 *               version's text (101 numbers at most)
 * @return always 0
 */
uint32_t ficon_cmi_get_sw_version(uint32_t unused, uint8_t* numbers, int8_t count);

/* ---- Port-map queries ---- */

/**
 * The port map of a module, or of the logical ports, up to 36 ports from `start` on and never
 * beyond their block. Blocks; takes no lock. Asks fcd for numbers and addresses, the chassis and
 * the port manager for interfaces and states, and fcd again for the state of ports towards devices.
 *
 * State: 0 up towards another switch, 1 failed, 2 offline, 3 administratively down, 4 online, 5 no
 * interface or nothing known.
 *
 * @param module   from 1; of no matter for logical ports
 * @param start    first port of the module, or first logical port, from 0
 * @param logical  not 0: the logical ports
 * @param entries  [out] room for 36. `if_index` is BE. A port without interface keeps the bytes
 * that were in that field, but for the array's first four, which are cleared; clear the array
 * before to tell them. Host order, and partly filled, after a failure.
 * @param count    [out] ports of the span, set before anything is sent; 0 or a negative number's
 * bits for a start beyond the block, which gives 0 and no entries
 * @return 0; 0x40850003 for a malformed answer; 0x40850010 without memory; else what fcd, the
 *         transport, the port manager or the chassis said
 */
uint32_t ficon_cmi_get_portmap_entry(mts_handle_t handle, const char* word_a, const char* word_b,
                                     uint32_t wait, uint32_t module, uint32_t start,
                                     int32_t logical, ficon_cmi_portmap_entry_t* entries,
                                     uint32_t* count);

/**
 * The port map of the port numbers from `first` to `last`, both included. As above, but:
 *
 * @param entries  [out] room for last - first + 1. `if_index` is in host order: intended. A port
 *                 number without address or interface, or above the largest, keeps the bytes that
 *                 were there, its state 5.
 * @return as above; a first above last gives 0 and asks nothing. More than 383 ports towards
 * devices do not fit into one query: split the range.
 */
uint32_t ficon_cmi_get_portmap_full(mts_handle_t handle, const char* word_a, const char* word_b,
                                    uint32_t wait, uint32_t first, uint32_t last,
                                    ficon_cmi_portmap_full_entry_t* entries);

/**
 * The port manager's records of `n` ranges of one interface each, asked for 250 at a time. Blocks.
 *
 * @param kind         passed to the port manager; 1
 * @param out_count    [out] records answered
 * @param out_records  [out] for `mtrack_free`, on failure too; null without ranges or memory
 * @return 0; 1 without memory; 0x40850000 when fewer were answered than asked for; else the port
 *         manager's error, 0xffffffff for one of the transport
 */
uint32_t ficon_pm_cmi_get_port_config(mts_handle_t handle, uint32_t kind, uint32_t n,
                                      const ficon_cmi_ifindex_rng_t* ranges, uint32_t* out_count,
                                      pm_cmi_port_config_t** out_records, uint32_t wait);

/**
 * One port of fcd's port map: the one with these keys, or the next one after them. Blocks.
 *
 * @param type         1 exactly, 2 the next; with fcd's get-next type 2 the next that has an
 * interface
 * @param selector     passed to fcd
 * @param if_index_io  [in,out] may be null, as the keys: asks with 0
 * @param key1_io      [in,out] port number; null asks with 512, none
 * @param key2_io      [in,out] port address; the same
 * @return 0, or what fcd or the transport said. A reply that does not come gives 0 and leaves the
 * keys unchanged: intended.
 */
uint32_t ficon_send_get_portmap(mts_handle_t handle, const char* word_a, const char* word_b,
                                uint32_t wait, uint32_t type, uint8_t selector,
                                if_index_t* if_index_io, uint16_t* key1_io, uint16_t* key2_io);

/**
 * Ask for the port with an FCID; goes to the other node. The message is dropped by the caller.
 *
 * @param msgtype  1 exactly, 2 the next
 * @param key1     port number, 512 for none; `key2` the port address
 * @return 0; 0x40850003 without a handle; else the transport's result
 */
uint32_t ficon_send_get_portmap_fcid_nonblock(mts_handle_t handle, const char* word_a,
                                              const char* word_b, uint32_t msgtype,
                                              uint8_t selector, uint32_t fcid, if_index_t if_index,
                                              uint16_t key1, uint16_t key2, mts_msg_ref_t* msg);

/**
 * The answer to it. Every pointer may be null. The keys are written whatever the status is.
 *
 * @return fcd's status; 0x40850008 for a reply without payload, 0x40850003 for none or a malformed
 * one
 */
uint32_t ficon_parse_get_portmap_fcid(mts_msg_ref_t* reply, if_index_t* if_index, uint16_t* key1,
                                      uint16_t* key2, uint32_t* fcid, uint8_t* answer_byte);

/* ---- Port-number assignment and port-address bindings ---- */

/**
 * Bind or unbind a port number on a VSAN, or ask (3), which prints the interface that has it.
 * Blocks; takes no lock, as none of this family.
 *
 * @return a status in spite of its type: fcd's, 0x40850003 for a malformed answer, or the
 * transport's error number after a printed line
 */
int32_t ficon_cmi_vsan_portnum_intf(mts_handle_t handle, uint8_t op, uint32_t vsan,
                                    uint32_t port_number, if_index_t if_index, uint32_t wait);

/**
 * Give an interface a port number (1), or one of fcd's operations 2 and 3 on it. Blocks.
 *
 * @return fcd's status; 0x40850003 for another operation or a malformed answer; 0x40850050 for a
 * port channel that the system created; the transport's error number after a printed line
 */
uint32_t ficon_cmi_set_portnum(mts_handle_t handle, uint8_t op, if_index_t if_index,
                               uint32_t port_number, uint32_t wait);

/**
 * Reserve or release ranges of port numbers, for a module (1, 2) or the logical ports (4, 5), or
 * read them back (3, 6). Blocks. Operations 1 to 3 ask the port manager for the module's ports.
 *
 * @param module      from 1
 * @param result      [out] queries: a number from fcd
 * @param count       [in,out] ranges, at most 64; queries set it
 * @param firsts      [in,out] 64 of room, as `lasts`; written by queries alone
 * @param error_text  [out] 257 bytes of room: why fcd refused, else empty; not for queries
 * @return fcd's status; 0x40850003 for another operation, a count below 0 or above 64 that is no
 *         query's, or a malformed answer; the transport's error number after a printed line
 */
uint32_t ficon_cmi_reserve_portnum(uint32_t requester, mts_handle_t handle, const char* word_a,
                                   const char* word_b, uint32_t wait, uint8_t op, uint32_t module,
                                   uint32_t arg, uint32_t* result, int32_t* count, uint32_t* firsts,
                                   uint32_t* lasts, char* error_text);

/**
 * How many Fibre Channel ports a module has, from 1; 0 after a printed line for every failure.
 * Blocks.
 */
int32_t ficon_cmi_fc_port_in_mod(mts_handle_t handle, uint8_t module);

/**
 * Bind a port address to an interface. Blocks. The requester and the words are not sent.
 *
 * @return fcd's status, 0 for a reply without payload; the transport's error number after a printed
 *         line
 */
uint32_t ficon_cmi_set_pa_if(uint32_t requester, mts_handle_t handle, const char* word_a,
                             const char* word_b, uint32_t wait, uint16_t port_address,
                             if_index_t if_index);

/** Bind a port address to a port number. As above. */
uint32_t ficon_cmi_set_pa_pn(uint32_t requester, mts_handle_t handle, const char* word_a,
                             const char* word_b, uint32_t wait, uint16_t port_address,
                             uint16_t port_number);

/* ---- Port swap ---- */

/**
 * Ask fcd to exchange the identities of two ports, by port number. The requester is not sent.
 *
 * @return 0; 0x40850025 when they are the same, and nothing is sent; else the transport's result
 */
uint32_t ficon_cmi_swap_port_nonblock(uint32_t requester, mts_handle_t handle, const char* word_a,
                                      const char* word_b, uint32_t wait, uint32_t first,
                                      uint32_t second, mts_msg_ref_t* msg);

/** The same by interface index. */
uint32_t ficon_cmi_swap_intf_nonblock(uint32_t requester, mts_handle_t handle, const char* word_a,
                                      const char* word_b, uint32_t wait, if_index_t first,
                                      if_index_t second, mts_msg_ref_t* msg);

/**
 * The answer of both forms.
 *
 * @param record  [out] the head and `count` operations of `ficon_cmi_swap_op_t`, also when there
 * are none, for `mtrack_free`; null on failure
 * @return 0; 3 for a reply without payload; 0x40850010 without memory; 0x40850003 for more
 * operations than there are ports; else fcd's refusal
 */
uint32_t ficon_cmi_parse_swap_port(mts_msg_ref_t* reply, ficon_cmi_swap_reply_t** record);

/**
 * Send, wait and parse. Blocks; takes no lock. `record` is untouched when sending or receiving
 * fails.
 */
uint32_t ficon_cmi_swap_port(uint32_t requester, mts_handle_t handle, const char* word_a,
                             const char* word_b, uint32_t wait, uint32_t first, uint32_t second,
                             ficon_cmi_swap_reply_t** record);

/** The same by interface index. */
uint32_t ficon_cmi_swap_intf(uint32_t requester, mts_handle_t handle, const char* word_a,
                             const char* word_b, uint32_t wait, if_index_t first, if_index_t second,
                             ficon_cmi_swap_reply_t** record);

/* ---- Port prohibit access lists ---- */

/**
 * Set whether prohibit access lists are built other than by FCID, on the whole switch. Blocks;
 * takes no lock, as none of this family.
 *
 * @return fcd's status, 0 for a reply without payload; the transport's error number after a printed
 *         line
 */
uint32_t ficon_cmi_set_port_prohibit_acl_not_fcid(uint32_t requester, mts_handle_t handle,
                                                  const char* word_a, const char* word_b,
                                                  uint32_t wait, uint32_t value);

/** Read it. `value` is written also when fcd refuses, and not by a reply without payload. */
uint32_t ficon_cmi_get_port_prohibit_acl_not_fcid(uint32_t requester, mts_handle_t handle,
                                                  const char* word_a, const char* word_b,
                                                  uint32_t wait, uint32_t* value);

/** Downgrade the type of the access lists, once. */
uint32_t ficon_cmi_set_acl_type_downgrade(uint32_t requester, mts_handle_t handle,
                                          const char* word_a, const char* word_b, uint32_t wait);

/** Set the prohibit state that ports have unless a file says otherwise. */
uint32_t ficon_cmi_set_port_default_prohibit(uint32_t requester, mts_handle_t handle,
                                             const char* word_a, const char* word_b, uint32_t wait,
                                             uint32_t value);

/** Read it, as the other setting. */
uint32_t ficon_cmi_get_port_default_prohibit(uint32_t requester, mts_handle_t handle,
                                             const char* word_a, const char* word_b, uint32_t wait,
                                             uint32_t* value);

/* ---- EBCDIC code-page conversion ---- */

extern const char* program_name; /* "ascii_ebcdic_convert" */

/**
 * Check the rules for file names: EBCDIC capital letters, digits, hyphen, underscore, and blanks
 * after the first byte. The name of the function is as it is.
 *
 * @param length  bytes of `name`; the first is looked at even when it is 0 or less
 * @return 0; 0x4085001f for more than 8 bytes; 0x4085001d for a leading blank; 0x4085001e for any
 * other byte that is not allowed
 */
uint32_t validate_ebcidic_filename(const uint8_t* name, int32_t length);

/**
 * Check the rules for descriptions: every byte from 0x40 to 0xfe.
 *
 * @return 0, also for a length below 1; 0x4085002c for any other byte
 */
uint32_t validate_ebcidic_filedesc(const uint8_t* desc, int32_t length);

/**
 * Convert the 8 bytes of a file name. Blanks stay, and no terminator is added.
 *
 * @param ascii_out  [out] 8 bytes; zeros when the conversion failed
 * @return 0; 0x40850020 when it cannot be converted, after a printed line where no converter is
 * there
 */
uint32_t convert_ebcdic_filename_to_ascii(uint32_t codepage, const uint8_t* ebcdic_name,
                                          char* ascii_out);

/**
 * Convert a file name and pad it to 8 bytes with EBCDIC blanks.
 *
 * @param ascii_name  terminated, up to 8 characters; upper-cased in place
 * @param ebcdic_out  [out] 8 bytes; on a failed conversion as many zeros as the name has characters
 * @return 0; 0x4085001f for a longer name; 0x40850020 when it cannot be converted
 */
uint32_t convert_ascii_filename_to_ebcdic(uint32_t codepage, char* ascii_name, uint8_t* ebcdic_out);

/**
 * Convert the 24 bytes of a port name. Each byte that cannot be printed becomes a double quote; a
 * name with such bytes ends in "~", the first hexadecimal digit of its port address, and NUL.
 *
 * @param ascii_out  [out] 24 bytes, terminated only by that mark
 * @param port_address  0 to 255; looked at only where a mark is needed
 * @return 0; 0x40850018 for a larger one, with the quotes in place and no mark; 0x40850020 when it
 * cannot be converted
 */
uint32_t convert_ebcdic_portname_to_ascii(uint32_t codepage, const uint8_t* ebcdic_name,
                                          char* ascii_out, uint32_t port_address);

/**
 * Convert the first 24 characters of a port name, upper and lower case, and pad it to 24 bytes with
 * EBCDIC blanks.
 *
 * @return 0, or 0x40850020 when it cannot be converted
 */
uint32_t convert_ascii_portname_to_ebcdic(uint32_t codepage, const char* ascii_name,
                                          uint8_t* ebcdic_out);

/**
 * Convert up to 100 bytes between any two code sets. ASCII is code set 1, an EBCDIC page its
 * number.
 *
 * @param output  [out] as many bytes as the converter gives, at most 100; they are not counted
 * @return 0; 0x40850003 for more than 100 bytes; 0x40850020 when they cannot be converted
 */
uint32_t convert_codepage_and_copy(uint32_t from_code_set, uint32_t to_code_set,
                                   const uint8_t* input, uint8_t* output, uint32_t length);

/* ---- Configuration file operations ---- */

/**
 * Send an operation on a file: 1 opens it for a change, 4 closes it and keeps the change, 5 closes
 * it and drops the change, 2 deletes it; others pass through.
 *
 * For operation 2 the name is upper-cased and loses its trailing white space in the caller's own
 * buffer, and IPL is refused.
 *
 * @param file_name  may be null. ASCII of up to 8 characters, upper-cased in place, where `convert`
 * is 1; otherwise 8 EBCDIC bytes
 * @param file_key  sent in host order; may be null
 * @return 0; 0x40850017 for deleting IPL; what is wrong with the name; the TLV array's error or the
 * transport's send result
 */
uint32_t ficon_cmi_file_ops_nonblock(uint32_t requester, mts_handle_t handle, const char* word_a,
                                     const char* word_b, uint32_t wait, uint32_t vsan, uint32_t op,
                                     char* file_name, const uint32_t* file_key, uint32_t convert,
                                     uint32_t codepage, mts_msg_ref_t* msg);

/**
 * Read the reply to an operation on a file. Of several records the last one read counts; a reply
 * without any is success and leaves the outputs untouched.
 *
 * @param file_key  [out] in host order; this and the others may be null, and are also set beside a
 * nonzero status
 * @return 0; fcd's status; 0x40850003 for a reply without TLVs
 */
uint32_t ficon_cmi_parse_file_ops(mts_msg_ref_t* reply, uint32_t* file_key, uint8_t* reply_flag,
                                  uint32_t* status);

/**
 * An operation on a file. Blocks; takes the lock where FICON is enabled. The name is always ASCII.
 *
 * @param file_key  in and out, in host order; may be null, as may the two behind it
 * @return 0; fcd's status; 0x40850012 without the lock; 0x40850004 without a code page; as of the
 * sender and of `ficon_cmi_mts_recv`
 */
uint32_t ficon_cmi_file_ops(uint32_t requester, mts_handle_t handle, const char* word_a,
                            const char* word_b, uint32_t wait, uint32_t vsan, uint32_t op,
                            char* file_name, uint32_t* file_key, uint8_t* reply_flag,
                            uint32_t* status);

/**
 * Send the copy of a file. Asks for the code page first, and blocks for that.
 *
 * @param source_name  as `destination_name` ASCII, upper-cased in place, from requesters 1 and 2; 8
 * EBCDIC bytes from any other
 * @return 0; 0x40850003 for a null name; 0x40850004 without a code page; what is wrong with a name;
 * the TLV array's error or the transport's send result
 */
uint32_t ficon_cmi_file_copy_nonblock(uint32_t requester, mts_handle_t handle, const char* word_a,
                                      const char* word_b, uint32_t wait, uint32_t vsan,
                                      char* source_name, char* destination_name,
                                      mts_msg_ref_t* msg);

/**
 * Copy a file. Blocks; takes the lock where FICON is enabled.
 *
 * @return 0; fcd's status; 3 for a reply without the record; 0x40850012 without the lock; as of the
 * sender and of `ficon_cmi_mts_recv`
 */
uint32_t ficon_cmi_file_copy(uint32_t requester, mts_handle_t handle, const char* word_a,
                             const char* word_b, uint32_t wait, uint32_t vsan, char* source_name,
                             char* destination_name);

/**
 * Send the header of a file. Asks for the code page first, and blocks for that.
 *
 * @param file_name  may be null; as of `ficon_cmi_file_copy_nonblock`
 * @param header  from requesters 1 and 2 with the description in ASCII, which is turned to EBCDIC
 * in the caller's header
 * @return 0; 0x40850003 without a header; 0x40850004 without a code page; what is wrong with name
 * or description; the TLV array's error or the transport's send result
 */
uint32_t ficon_cmi_file_set_file_hdr_nonblock(uint32_t requester, mts_handle_t handle,
                                              const char* word_a, const char* word_b, uint32_t wait,
                                              uint32_t vsan, char* file_name,
                                              const uint32_t* file_key,
                                              ficon_cmi_file_hdr_t* header, mts_msg_ref_t* msg);

/**
 * Write the header of a file. Blocks; takes the lock where FICON is enabled.
 *
 * @return as of `ficon_cmi_file_copy`
 */
uint32_t ficon_cmi_file_set_file_hdr(uint32_t requester, mts_handle_t handle, const char* word_a,
                                     const char* word_b, uint32_t wait, uint32_t vsan,
                                     char* file_name, const uint32_t* file_key,
                                     ficon_cmi_file_hdr_t* header);

/**
 * Describe a file. The whole header is written: zeros outside the description. Blocks; takes the
 * lock where FICON is enabled.
 *
 * @param description  1 to 24 bytes, padded with blanks
 * @return 0x40850003 for another length, or without description or name; as of
 * `ficon_cmi_file_set_file_hdr`
 */
uint32_t ficon_cmi_file_set_file_desc(uint32_t requester, mts_handle_t handle, const char* word_a,
                                      const char* word_b, uint32_t wait, uint32_t vsan,
                                      char* file_name, const char* description,
                                      uint8_t description_length);

/* ---- Per-port settings in a configuration file ---- */

/**
 * Send whether ports of a file are blocked.
 *
 * @param file_name  may be null; ASCII, upper-cased in place, where `convert` is 1, otherwise 8
 * EBCDIC bytes
 * @param file_key  of an open edit, in host order; may be null
 * @param entries  `count` of them, port addresses in host order; 1132 find room
 * @return 0; what is wrong with the name; the TLV array's error or the transport's send result
 */
uint32_t ficon_cmi_file_set_port_blocked_portaddr_nonblock(
    uint32_t requester, mts_handle_t handle, const char* word_a, const char* word_b, uint32_t wait,
    uint32_t vsan, char* file_name, const uint32_t* file_key,
    const ficon_cmi_port_blocked_entry_t* entries, uint32_t count, uint32_t convert,
    uint32_t codepage, mts_msg_ref_t* msg);

/**
 * Send the names of ports. Where `convert` is 1 the names are ASCII, too, and stay as they are in
 * the entries. 305 entries find room; all else as of
 * `ficon_cmi_file_set_port_blocked_portaddr_nonblock`.
 */
uint32_t ficon_cmi_file_set_port_name_portaddr_nonblock(uint32_t requester, mts_handle_t handle,
                                                        const char* word_a, const char* word_b,
                                                        uint32_t wait, uint32_t vsan,
                                                        char* file_name, const uint32_t* file_key,
                                                        const ficon_cmi_port_name_entry_t* entries,
                                                        uint32_t count, uint32_t convert,
                                                        uint32_t codepage, mts_msg_ref_t* msg);

/**
 * Send which port addresses ports may not talk to. 254 entries find room: every usable port
 * address.
 *
 * @return 1 without memory; all else as of `ficon_cmi_file_set_port_blocked_portaddr_nonblock`
 */
uint32_t ficon_cmi_file_set_prohibit_bitset_nonblock(uint32_t requester, mts_handle_t handle,
                                                     const char* word_a, const char* word_b,
                                                     uint32_t wait, uint32_t vsan, char* file_name,
                                                     const uint32_t* file_key,
                                                     const ficon_cmi_prohibit_entry_t* entries,
                                                     uint32_t count, uint32_t convert,
                                                     uint32_t codepage, mts_msg_ref_t* msg);

/**
 * Block ports of a file, or free them. Blocks; takes the lock where FICON is enabled. File names
 * are ASCII.
 *
 * A requester 1 that gives a name and no key gets an edit of its own: opened before, kept after
 * success, dropped after a failure. When no reply comes, this function leaves its edit open.
 *
 * @param status  [out] what fcd said on opening and closing that edit; may be null
 * @return 0; fcd's status; 0x40850012 without the lock; 0x40850004 without a code page; 3 for a
 * reply without the record; as of the sender, of `ficon_cmi_file_ops` and of `ficon_cmi_mts_recv`
 */
uint32_t ficon_cmi_file_set_port_blocked_portaddr(uint32_t requester, mts_handle_t handle,
                                                  const char* word_a, const char* word_b,
                                                  uint32_t wait, uint32_t vsan, char* file_name,
                                                  uint32_t* file_key,
                                                  const ficon_cmi_port_blocked_entry_t* entries,
                                                  uint32_t count, uint32_t* status);

/**
 * Name ports of a file. As `ficon_cmi_file_set_port_blocked_portaddr`, but its edit is also dropped
 * when no reply comes, and a failed send is not printed.
 */
uint32_t ficon_cmi_file_set_port_name_portaddr(uint32_t requester, mts_handle_t handle,
                                               const char* word_a, const char* word_b,
                                               uint32_t wait, uint32_t vsan, char* file_name,
                                               uint32_t* file_key,
                                               const ficon_cmi_port_name_entry_t* entries,
                                               uint32_t count, uint32_t* status);

/**
 * Set which port addresses ports of a file may not talk to. As
 * `ficon_cmi_file_set_port_blocked_portaddr`, but its edit is also dropped when no reply comes.
 */
uint32_t ficon_cmi_file_set_prohibit_bitset(uint32_t requester, mts_handle_t handle,
                                            const char* word_a, const char* word_b, uint32_t wait,
                                            uint32_t vsan, char* file_name, uint32_t* file_key,
                                            const ficon_cmi_prohibit_entry_t* entries,
                                            uint32_t count, uint32_t* status);

/**
 * Send whether `count` consecutive port addresses from `first` are blocked. A sender, in spite of
 * its name.
 *
 * @param blocked  a byte for each
 * @return 0xffffffff without memory; as of `ficon_cmi_file_set_port_blocked_portaddr_nonblock`
 */
uint32_t ficon_cmi_set_port_blocked_portaddr_range(uint32_t requester, mts_handle_t handle,
                                                   const char* word_a, const char* word_b,
                                                   uint32_t wait, uint32_t vsan, char* file_name,
                                                   const uint32_t* file_key, uint16_t first,
                                                   const uint8_t* blocked, uint32_t count,
                                                   uint32_t convert, uint32_t codepage,
                                                   mts_msg_ref_t* msg);

/**
 * Send the names of `count` consecutive port addresses. A sender, but it asks for the code page and
 * blocks for that.
 *
 * @param names  25 bytes for each
 * @return 0xffffffff without memory; 0x40850004 without a code page; as of
 * `ficon_cmi_file_set_port_name_portaddr_nonblock`
 */
uint32_t ficon_cmi_set_port_name_portaddr_range(uint32_t requester, mts_handle_t handle,
                                                const char* word_a, const char* word_b,
                                                uint32_t wait, uint32_t vsan, char* file_name,
                                                const uint32_t* file_key, uint16_t first,
                                                const char* names, uint32_t count, uint32_t convert,
                                                mts_msg_ref_t* msg);

/**
 * Send which port addresses `count` consecutive ones may not talk to. A sender, in spite of its
 * name.
 *
 * @param common_value  goes with each entry, in host order
 * @param bitsets  32 bytes for each
 * @return 0xffffffff without memory; as of `ficon_cmi_file_set_prohibit_bitset_nonblock`
 */
uint32_t ficon_cmi_set_prohibit_bitset_range(uint32_t requester, mts_handle_t handle,
                                             const char* word_a, const char* word_b, uint32_t wait,
                                             uint32_t vsan, char* file_name,
                                             const uint32_t* file_key, uint16_t first,
                                             uint32_t common_value, const uint8_t* bitsets,
                                             uint32_t count, uint32_t convert, uint32_t codepage,
                                             mts_msg_ref_t* msg);

/**
 * Read the reply to a change of a file, its header or its ports.
 *
 * @return 0; fcd's status; 0x40850003 for a reply without TLVs, 3 for one without the record
 */
uint32_t ficon_cmi_file_parse_set_port_cfg(mts_msg_ref_t* reply);

/* ---- Per-port information of a configuration file ---- */

/**
 * Ask what a file holds for the interfaces from `start` to `end`.
 *
 * @param msgtype  1 get, 2 get next
 * @param query_flags  passed on in host order
 * @param file_name  may be null or empty; ASCII, upper-cased in place, where `convert` is 1,
 * otherwise 8 EBCDIC bytes
 * @param file_key  in host order; may be null
 * @return 0; what is wrong with the name; the TLV array's error or the transport's send result
 */
uint32_t ficon_cmi_file_get_port_info_intf_nonblock(
    uint32_t requester, mts_handle_t handle, const char* word_a, const char* word_b, uint32_t wait,
    uint32_t msgtype, uint32_t query_flags, uint32_t vsan, char* file_name,
    const uint32_t* file_key, if_index_t start, if_index_t end, uint32_t convert, uint32_t codepage,
    mts_msg_ref_t* msg);

/**
 * Read what a file holds for a range of interfaces. Blocks; takes no lock.
 *
 * A get next (`msgtype` 2) while the get-next type is 2 looks for the next installed port: the
 * first behind `start` (0: of all) that belongs to the VSAN and is usable, whatever `end`.
 *
 * @param vsan  in and out
 * @param file_name  in and out, ASCII, 9 bytes; may be null
 * @param list  [out] the ports, for `mtrack_free`; null for none and after a refused reply
 * @param count  [out] ports in the list; in the search for an installed port 0 or 1
 * @return 0; fcd's status; 0x40850004 without a VSAN or a code page; 0x4085000a behind the last
 * interface; 0x40850003 for a reply that is none; 1 without memory for the list, 0x40850010 for the
 * one port; what the port manager, a conversion or the transport could not do
 */
uint32_t ficon_cmi_file_get_port_info_intf(uint32_t requester, mts_handle_t handle,
                                           const char* word_a, const char* word_b, uint32_t wait,
                                           uint32_t msgtype, uint32_t query_flags, uint32_t* vsan,
                                           char* file_name, const uint32_t* file_key,
                                           if_index_t start, if_index_t end,
                                           ficon_cmi_port_info_t** list, uint32_t* count);

/**
 * Ask what a file holds for the port addresses from `start` to `end`. As
 * `ficon_cmi_file_get_port_info_intf_nonblock`.
 */
uint32_t ficon_cmi_file_get_port_info_portaddr_nonblock(
    uint32_t requester, mts_handle_t handle, const char* word_a, const char* word_b, uint32_t wait,
    uint32_t msgtype, uint32_t query_flags, uint32_t vsan, char* file_name,
    const uint32_t* file_key, uint32_t start, uint32_t end, uint32_t convert, uint32_t codepage,
    mts_msg_ref_t* msg);

/**
 * Read what a file holds for a range of port addresses. As `ficon_cmi_file_get_port_info_intf`, but
 * in the search for an installed port `start` 512 means all, 0x4085000a that none is behind 255,
 * and VSAN 0 becomes the first FICON VSAN.
 */
uint32_t ficon_cmi_file_get_port_info_portaddr(uint32_t requester, mts_handle_t handle,
                                               const char* word_a, const char* word_b,
                                               uint32_t wait, uint32_t msgtype,
                                               uint32_t query_flags, uint32_t* vsan,
                                               char* file_name, const uint32_t* file_key,
                                               uint32_t start, uint32_t end,
                                               ficon_cmi_port_info_t** list, uint32_t* count);

/**
 * Read a reply with per-port information. The requester is not used.
 *
 * @param list  [out] the ports, for `mtrack_free`; set on success with at least one port only
 * @param vsan  [out] may be null
 * @param name  [out] 9 bytes: the file's name, ASCII where `convert` is 1; may be null
 * @param convert  1 turns the file's and the ports' names into ASCII
 * @param count  [out] ports in the reply
 * @return 0; fcd's status; 0x40850003 for a reply without TLVs or record, with ports of another
 * size, or without a place for the count; 1 without memory; a failed conversion of a port's name
 */
uint32_t ficon_cmi_file_parse_port_info(uint32_t requester, mts_msg_ref_t* reply,
                                        ficon_cmi_port_info_t** list, uint32_t* vsan, char* name,
                                        uint32_t convert, uint32_t codepage, uint32_t* count);

/* ---- File information and saved files ---- */

/**
 * Ask for the files of a VSAN.
 *
 * @param op  passed on in host order
 * @param msgtype  1 get, 2 get next
 * @param ebcdic_name  up to 8 bytes, ended by a zero if shorter; null or empty for all files
 * @return 0, the TLV array's error or the transport's send result
 */
uint32_t ficon_cmi_file_info_nonblock(uint32_t requester, mts_handle_t handle, const char* word_a,
                                      const char* word_b, uint32_t wait, uint32_t op,
                                      uint32_t msgtype, uint32_t vsan, const uint8_t* ebcdic_name,
                                      mts_msg_ref_t* msg);

/**
 * Read a reply with files. The requester is not used.
 *
 * @param list  [out] the files, for `mtrack_free`; null for none; says nothing on failure; may be
 * null itself
 * @param convert  1 turns names and descriptions into ASCII; one that cannot be converted is no
 * failure
 * @param count  [out] files in the reply; may be null
 * @return 0; fcd's status; 0x40850003 for a reply without TLVs or record, or with files of another
 * size; 1 without memory
 */
uint32_t ficon_cmi_parse_file_info(uint32_t requester, mts_msg_ref_t* reply,
                                   ficon_cmi_file_info_t** list, uint32_t convert,
                                   uint32_t codepage, uint32_t* count);

/**
 * Read the files of a VSAN, or one of them. Blocks; takes no lock.
 *
 * @param file_name  ASCII, upper-cased in place; null or empty for all files
 * @return as of the parser; 0x40850004 without a code page; what is wrong with the name; as of the
 * sender, after a printed line, and of `ficon_cmi_mts_recv`
 */
uint32_t ficon_cmi_file_info(uint32_t requester, mts_handle_t handle, const char* word_a,
                             const char* word_b, uint32_t wait, uint32_t op, uint32_t msgtype,
                             uint32_t vsan, char* file_name, ficon_cmi_file_info_t** list,
                             uint32_t* count);

/**
 * Ask for the contents of a saved file. The requester is not sent.
 *
 * @param file_name  not null; ASCII, upper-cased in place, where `convert` is 1, otherwise 8 EBCDIC
 * bytes
 * @param file_key  in host order; may be null
 * @return 0; what is wrong with the name; the TLV array's error or the transport's send result
 */
uint32_t ficon_cmi_get_saved_file_nonblock(uint32_t requester, mts_handle_t handle,
                                           const char* word_a, const char* word_b, uint32_t wait,
                                           uint32_t vsan, char* file_name, const uint32_t* file_key,
                                           uint32_t convert, uint32_t codepage, mts_msg_ref_t* msg);

/**
 * Copy a slice out of a reply with contents.
 *
 * @param offset  bytes into the contents; exactly their length copies nothing
 * @param buffer  [out] `buffer_length` bytes; what is not copied stays
 * @param copied  [out] 0 on failure; may be null
 * @return 0; fcd's status; 0x40850003 for an offset beyond the contents, a negative number, or a
 * reply that is not contents and then the record
 */
uint32_t ficon_cmi_parse_get_saved_file(mts_msg_ref_t* reply, int32_t offset, uint8_t* buffer,
                                        int32_t buffer_length, uint32_t* copied);

/**
 * Read a slice of a saved file. Blocks; takes no lock.
 *
 * @return as of the parser; 0x40850004 without a code page; as of the sender, after a printed line,
 * and of `ficon_cmi_mts_recv`
 */
uint32_t ficon_cmi_get_saved_file(uint32_t requester, mts_handle_t handle, const char* word_a,
                                  const char* word_b, uint32_t wait, uint32_t vsan, char* file_name,
                                  const uint32_t* file_key, int32_t offset, uint8_t* buffer,
                                  int32_t buffer_length, uint32_t* copied);

/**
 * Send contents for a saved file. A refused offset or name leaves the message's memory allocated.
 *
 * @param file_name  as of `ficon_cmi_get_saved_file_nonblock`
 * @param data_offset  bytes into the contents, not negative
 * @param data_length  of `data`; the request carries its low 16 bits' worth: callers send at most
 * 65535 bytes at a time
 * @return 0; 0x40850010 without memory; 0x40850003 for a negative offset; what is wrong with the
 * name; the TLV array's error or the transport's send result
 */
uint32_t ficon_cmi_set_saved_file_nonblock(uint32_t requester, mts_handle_t handle,
                                           const char* word_a, const char* word_b, uint32_t wait,
                                           uint32_t vsan, char* file_name, const uint32_t* file_key,
                                           int32_t data_offset, const uint8_t* data,
                                           uint32_t data_length, uint32_t convert,
                                           uint32_t codepage, mts_msg_ref_t* msg);

/** @return as of `ficon_cmi_file_parse_set_port_cfg` */
uint32_t ficon_cmi_parse_set_saved_file(mts_msg_ref_t* reply);

/**
 * Write contents of a saved file. Blocks; takes the lock where FICON is enabled.
 *
 * @return 0; fcd's status; 0x40850012 without the lock; 0x40850004 without a code page, with the
 * lock still taken; 3 for a reply without the record; as of the sender, after a printed line, and
 * of `ficon_cmi_mts_recv`
 */
uint32_t ficon_cmi_set_saved_file(uint32_t requester, mts_handle_t handle, const char* word_a,
                                  const char* word_b, uint32_t wait, uint32_t vsan, char* file_name,
                                  const uint32_t* file_key, int32_t data_offset,
                                  const uint8_t* data, uint32_t data_length);

/* ---- Running and startup configuration text ---- */

/*
 * The feature's configuration as the command lines that make it again, out of fcd's saved
 * configuration and debug settings in persistent storage: no message is sent, no lock taken. A
 * store's keys are 8 bytes: the record's type, then zeros unless the record says more. Values are
 * in host order but for the interface map, which holds interface indexes as they travel.
 */

/**
 * Answer a request of the configuration-text service: opens both stores where the context says,
 * generates, and responds. The name of a store longer than 127 characters is cut.
 *
 * @return what `acfg_respond` returns
 */
uint32_t ficon_startup_acfg_gen(acfg_req_t request, acfg_ctx_t context);

/**
 * Hand the lines to the service: the feature (element 3), port numbers (2), VSANs and defaults (1),
 * interfaces (4), and the logging level as a group line. What cannot be read is taken for its
 * default, and a line that cannot be made is left out: failures are never reported. Lines longer
 * than 255 characters, 254 for an interface, are cut. Without `MAX_FICON_PORTS` nothing is handed
 * over, and with more than 16384 ports the logging level alone.
 *
 * @param handle        of `acfg_hdl_init`; still the caller's
 * @param context       says which VSANs and interfaces are asked for
 * @param config_store  the saved configuration; null: none of its lines
 * @param debug_store   the debug settings; null: no logging level
 * @return 0
 */
uint32_t libficon_ascii_gen(acfg_hdl_t handle, acfg_ctx_t context, pss_store_t config_store,
                            pss_store_t debug_store);

/**
 * Key of the map from port addresses to port numbers, a row of 16 bits an address, type 8.
 *
 * @param key  points to the caller's pointer to 8 bytes, which are all written; nothing is
 *             allocated
 * @return 0
 */
uint32_t ficon_pss_build_pa_pn_map_key(uint8_t** key);

/** Likewise of the map from port numbers to interfaces, a row of 32 bits a number, type 9. */
uint32_t ficon_pss_build_pn_if_map_key(uint8_t** key);

/**
 * Likewise of a block of the port table, 64 entries of `ficon_port_pn_entry_t`, type 13 + block.
 *
 * @param block  0 to 19; positions from 64 * block on. It is not checked
 */
uint32_t ficon_pss_build_port_pn_map_key(uint8_t** key, uint32_t block);

/**
 * Copy the first n bytes of bits out of a stored bitset.
 *
 * @param bitset  a header of 32 bits, which is passed over, then at least n bytes; any alignment
 * @param array   [out] n bytes
 */
void ficon_bitset_to_bitarray(const void* bitset, uint8_t* array, uint32_t n);

/** Copy n bytes of bits into a stored bitset; its header stays as it is. */
void ficon_bitset_from_bitarray(void* bitset, const uint8_t* array, uint32_t n);

/* ---- FICON field-replaceable units ---- */

/**
 * The identifier by which FICON reports a unit.
 *
 * @param slot       from 1; looked at for card type 0 alone
 * @param card_type  the platform's; 0 is a slot without a card
 * @return the identifier; -1 for a card type that is none of FICON's, and for card type 0 outside
 *         slots 1 to 6
 */
int32_t get_fru_id(uint32_t slot, uint16_t card_type);

/** FICON's state of a module, from the platform's: 0, 1, 2, 3 are 0, 3, 1, 5; any other is 6. */
uint32_t ficon_convert_pfm_oper_state(uint32_t state);

/**
 * The names of the units in code page 37, 32 rows of 8 bytes: the length, then 7 bytes of name
 * padded with blanks (0x40). Row 0 is all zeros; rows 1 to 30 are named for identifiers 1 to 29 and
 * 32, a longer name cut to 7 characters; row 31 is row 1 again, which is intended.
 *
 * @param buffer  [out] 256 bytes
 */
void ficon_get_list_of_ficon_fru(uint8_t* buffer);

#ifdef __cplusplus
}
#endif

#pragma GCC visibility pop

#endif
