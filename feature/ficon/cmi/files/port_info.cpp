/** The per-port information of a file in one blocking call, by interface or by port address. */
#include <platform/ficon_base.h>
#include <platform/port_manager.h>

#include "exchange/exchange.h"
#include "exchange/trace.h"
#include "files/file_name.h"
#include "files/installed_port.h"
#include "wire/cmi_header.h"
#include "wire/port_plan.h"

using namespace ficon;

namespace {

constexpr auto kGet = static_cast<std::uint32_t>(wire::MessageType::kGet);
constexpr auto kGetNext = static_cast<std::uint32_t>(wire::MessageType::kGetNext);

/** The get-next type in which only installed ports count. */
constexpr std::uint32_t kInstalledOnly = 2;

constexpr std::uint32_t kLastPortAddress = 255;

struct Range {
  std::uint32_t start;
  std::uint32_t end;
};

struct PortInfoCall {
  Caller caller;
  std::uint32_t msgtype;
  std::uint32_t query_flags;
  std::uint32_t* vsan;
  char* file_name;
  const std::uint32_t* file_key;
  Range range;
  ficon_cmi_port_info_t** list;
  std::uint32_t* count;
};

/** Everything behind the caller's interface, or from the first one where it names none. */
Status next_interfaces(Range* range) {
  if_index_t start = range->start;
  if (start == 0) {
    if (if_index_phy_fc_port_init(&start, 0, 0, 0) != 0) return status::kNoNextPort;
  } else if (ficon_pmap_get_next_if(range->start, &start) != 0) {
    return status::kNoNextPort;
  }
  if_index_t last = 0;
  if (ficon_pmap_get_last_if(&last) != 0) return status::kNoNextPort;
  *range = {start, last};
  return status::kOk;
}

/** Everything behind the caller's port address, or all where it names none. */
Status next_port_addresses(Range* range) {
  const std::uint32_t start = range->start == wire::kNoPort ? 0 : range->start + 1;
  if (start > kLastPortAddress) return status::kNoNextPort;
  *range = {start, kLastPortAddress};
  return status::kOk;
}

/** The code page, and the VSAN that it is of where the caller names none. */
std::uint32_t codepage_for(const PortInfoCall& call, std::uint32_t* found_vsan) {
  const bool unnamed = call.file_name == nullptr || call.file_name[0] == '\0';
  const Caller& c = call.caller;
  if (call.msgtype == kGetNext && *call.vsan == 0 && unnamed) {
    return ficon_cmi_getnext_codepage(c.requester, c.handle, c.word_a, c.word_b, c.wait,
                                      found_vsan);
  }
  return codepage_of(c, *call.vsan);
}

/**
 * What the families differ in: where a walk in installed mode begins and ends, whether it takes
 * over the VSAN that the code page was found with, and how it sends.
 */
struct PortFamily {
  Status (*next_range)(Range*);
  bool takes_found_vsan;
  decltype(&ficon_cmi_file_get_port_info_intf_nonblock) send;
  void (*report)(Status);
};

constexpr PortFamily kByInterface{
    next_interfaces, false, ficon_cmi_file_get_port_info_intf_nonblock, [](Status failure) {
      trace("CMI_ERROR: %s(%d):ficon_cmi_file_get_port_info_intf_nonblock failed:%d\n",
            "ficon_cmi_file_get_port_info_intf", __LINE__, static_cast<int>(failure));
    }};

constexpr PortFamily kByPortAddress{
    next_port_addresses, true, ficon_cmi_file_get_port_info_portaddr_nonblock, [](Status failure) {
      trace("CMI_ERROR: %s(%d):ficon_cmi_file_get_port_info_portaddr_nonblock failed:%d\n",
            "ficon_cmi_file_get_port_info_portaddr", __LINE__, static_cast<int>(failure));
    }};

Status get_port_info(const PortInfoCall& call, const PortFamily& family) {
  const Caller& caller = call.caller;
  if (call.vsan == nullptr) return status::kNotEnabled;
  std::uint32_t type = 0;
  if (const Status failure = ficon_cmi_get_getnext_type(
          caller.requester, caller.handle, caller.word_a, caller.word_b, caller.wait, &type)) {
    trace("CMI_ERROR: ficon_cmi_get_getnext_type failed 0x%08x\n", failure);
    return failure;
  }
  std::uint32_t found_vsan = 0;
  const std::uint32_t codepage = codepage_for(call, &found_vsan);
  if (codepage == 0) return status::kNotEnabled;

  const bool installed_mode = type == kInstalledOnly && call.msgtype == kGetNext;
  Range range = call.range;
  if (installed_mode) {
    trace("CMI_ERROR: Type is INSTALLED && GETNEXT\n");
    if (*call.vsan == 0 && family.takes_found_vsan) *call.vsan = found_vsan;
    if (const Status refused = family.next_range(&range)) return refused;
  }
  trace("CMI_ERROR: Start %d End %d\n", static_cast<int>(range.start), static_cast<int>(range.end));
  ficon_cmi_port_info_t* ports = nullptr;
  std::uint32_t port_count = 0;
  std::uint32_t* count = installed_mode ? &port_count : call.count;
  const auto parse = [&](mts_msg_ref_t* reply) {
    return ficon_cmi_file_parse_port_info(caller.requester, reply, &ports, call.vsan,
                                          call.file_name, kConvert, codepage, count);
  };
  bool replied = false;
  const Status result = exchange(
      caller,
      [&](mts_msg_ref_t* request) {
        return family.send(caller.requester, caller.handle, caller.word_a, caller.word_b,
                           caller.wait, installed_mode ? kGet : call.msgtype, call.query_flags,
                           *call.vsan, call.file_name, call.file_key, range.start, range.end,
                           kConvert, codepage, request);
      },
      family.report,
      [&](mts_msg_ref_t* reply) {
        replied = true;
        return parse(reply);
      });
  const Tracked<ficon_cmi_port_info_t> owned(installed_mode ? ports : nullptr);
  if (result != 0 || !installed_mode) {
    if (replied) {
      trace("CMI_ERROR: Returning SOON retval:%x msg_type:%d type:%d\n", result,
            static_cast<int>(call.msgtype), static_cast<int>(type));
      *call.list = ports;  // null after a failure
    }
    return result;
  }
  return pick_installed_port(caller, *call.vsan, range.start, ports, port_count, call.list,
                             call.count);
}

}  // namespace

uint32_t ficon_cmi_file_get_port_info_intf(uint32_t requester, mts_handle_t handle,
                                           const char* word_a, const char* word_b, uint32_t wait,
                                           uint32_t msgtype, uint32_t query_flags, uint32_t* vsan,
                                           char* file_name, const uint32_t* file_key,
                                           if_index_t start, if_index_t end,
                                           ficon_cmi_port_info_t** list, uint32_t* count) {
  return get_port_info({{requester, handle, word_a, word_b, wait},
                        msgtype,
                        query_flags,
                        vsan,
                        file_name,
                        file_key,
                        {start, end},
                        list,
                        count},
                       kByInterface);
}

uint32_t ficon_cmi_file_get_port_info_portaddr(uint32_t requester, mts_handle_t handle,
                                               const char* word_a, const char* word_b,
                                               uint32_t wait, uint32_t msgtype,
                                               uint32_t query_flags, uint32_t* vsan,
                                               char* file_name, const uint32_t* file_key,
                                               uint32_t start, uint32_t end,
                                               ficon_cmi_port_info_t** list, uint32_t* count) {
  return get_port_info({{requester, handle, word_a, word_b, wait},
                        msgtype,
                        query_flags,
                        vsan,
                        file_name,
                        file_key,
                        {start, end},
                        list,
                        count},
                       kByPortAddress);
}
