/** Asking for the per-port information of a file, by interface or by port address. */
#include "wire/port_info_request.h"
#include "exchange/header.h"
#include "exchange/tlv_writer.h"
#include "files/file_name.h"
#include "files/file_request.h"
#include "wire/port_info.h"

using namespace ficon;

namespace {

/** What the two families differ in on the wire. */
struct PortFamily {
  wire::PortSelector selector;
  wire::TlvType range;
};

constexpr PortFamily kByInterface{wire::PortSelector::kInterfaces, wire::TlvType::kInterfaceRange};
constexpr PortFamily kByPortAddress{wire::PortSelector::kPortAddresses,
                                    wire::TlvType::kPortAddressRange};

struct PortQuery {
  std::uint32_t msgtype;
  std::uint32_t query_flags;
  std::uint32_t vsan;
  char* file_name;
  const std::uint32_t* file_key;
  std::uint32_t start;
  std::uint32_t end;
  bool is_ascii;
  std::uint32_t codepage;
};

Status send_query(const Caller& caller, const PortFamily& family, const PortQuery& query,
                  mts_msg_ref_t* message) {
  auto record =
      request_header<wire::PortInfoRequest>(caller, query.msgtype, wire::Subtype::kPortInfo);
  record.selector.set(static_cast<std::uint32_t>(family.selector));
  record.vsan.set(query.vsan);
  record.query_flags.set(query.query_flags);
  record.requester.set(caller.requester);  // unswapped, unlike in the file request record: intended
  put_key(record.file_key, query.file_key);
  if (query.file_name != nullptr && query.file_name[0] != '\0') {
    if (const Status refused =
            prepare_name(query.is_ascii, query.codepage, query.file_name, &record.file_name)) {
      return refused;
    }
  }
  wire::PortRange range{};
  range.first.set(query.start);
  range.last.set(query.end);
  return RequestTlvs()
      .add(wire::TlvType::kPortInfoRequest, record)
      .add(family.range, range)
      .send(caller, wire::Opcode::kPortInfo, message);
}

}  // namespace

uint32_t ficon_cmi_file_get_port_info_intf_nonblock(
    uint32_t requester, mts_handle_t handle, const char* word_a, const char* word_b, uint32_t wait,
    uint32_t msgtype, uint32_t query_flags, uint32_t vsan, char* file_name,
    const uint32_t* file_key, if_index_t start, if_index_t end, uint32_t convert, uint32_t codepage,
    mts_msg_ref_t* msg) {
  return send_query(
      {requester, handle, word_a, word_b, wait}, kByInterface,
      {msgtype, query_flags, vsan, file_name, file_key, start, end, convert == kConvert, codepage},
      msg);
}

uint32_t ficon_cmi_file_get_port_info_portaddr_nonblock(
    uint32_t requester, mts_handle_t handle, const char* word_a, const char* word_b, uint32_t wait,
    uint32_t msgtype, uint32_t query_flags, uint32_t vsan, char* file_name,
    const uint32_t* file_key, uint32_t start, uint32_t end, uint32_t convert, uint32_t codepage,
    mts_msg_ref_t* msg) {
  return send_query(
      {requester, handle, word_a, word_b, wait}, kByPortAddress,
      {msgtype, query_flags, vsan, file_name, file_key, start, end, convert == kConvert, codepage},
      msg);
}
