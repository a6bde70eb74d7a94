/** Ports blocked, named and prohibited in a file, in one blocking call each. */
#include <platform/mts.h>

#include "exchange/console.h"
#include "files/file_edit.h"

using namespace ficon;

uint32_t ficon_cmi_file_set_port_blocked_portaddr(uint32_t requester, mts_handle_t handle,
                                                  const char* word_a, const char* word_b,
                                                  uint32_t wait, uint32_t vsan, char* file_name,
                                                  uint32_t* file_key,
                                                  const ficon_cmi_port_blocked_entry_t* entries,
                                                  uint32_t count, uint32_t* status) {
  const auto send = [&](mts_msg_ref_t* request, std::uint32_t codepage) {
    return ficon_cmi_file_set_port_blocked_portaddr_nonblock(
        requester, handle, word_a, word_b, wait, vsan, file_name, file_key, entries, count,
        kConvert, codepage, request);
  };
  const auto report = [](Status failure) {
    // the sender under a name that it does not have: intended
    console("%s(%d): ficon_cmi_file_set_blocked_portaddr_nonblock failed:%d\n",
            "ficon_cmi_file_set_port_blocked_portaddr", __LINE__, static_cast<int>(failure));
  };
  // Unlike the other two, this one leaves its edit open when the reply is lost: intended.
  return change_file({requester, handle, word_a, word_b, wait}, {vsan, file_name, file_key, status},
                     send, report, LostReply::kLeavesEditOpen);
}

uint32_t ficon_cmi_file_set_port_name_portaddr(uint32_t requester, mts_handle_t handle,
                                               const char* word_a, const char* word_b,
                                               uint32_t wait, uint32_t vsan, char* file_name,
                                               uint32_t* file_key,
                                               const ficon_cmi_port_name_entry_t* entries,
                                               uint32_t count, uint32_t* status) {
  const auto send = [&](mts_msg_ref_t* request, std::uint32_t codepage) {
    return ficon_cmi_file_set_port_name_portaddr_nonblock(requester, handle, word_a, word_b, wait,
                                                          vsan, file_name, file_key, entries, count,
                                                          kConvert, codepage, request);
  };
  // Alone of the three it prints nothing: intended.
  return change_file({requester, handle, word_a, word_b, wait}, {vsan, file_name, file_key, status},
                     send, report_nothing, LostReply::kDiscardsEdit);
}

uint32_t ficon_cmi_file_set_prohibit_bitset(uint32_t requester, mts_handle_t handle,
                                            const char* word_a, const char* word_b, uint32_t wait,
                                            uint32_t vsan, char* file_name, uint32_t* file_key,
                                            const ficon_cmi_prohibit_entry_t* entries,
                                            uint32_t count, uint32_t* status) {
  const auto send = [&](mts_msg_ref_t* request, std::uint32_t codepage) {
    return ficon_cmi_file_set_prohibit_bitset_nonblock(requester, handle, word_a, word_b, wait,
                                                       vsan, file_name, file_key, entries, count,
                                                       kConvert, codepage, request);
  };
  const auto report = [](Status failure) {
    console("%s(%d): ficon_cmi_file_set_prohibit_bitset_nonblock failed:%d\n",
            "ficon_cmi_file_set_prohibit_bitset", __LINE__, static_cast<int>(failure));
  };
  return change_file({requester, handle, word_a, word_b, wait}, {vsan, file_name, file_key, status},
                     send, report, LostReply::kDiscardsEdit);
}
