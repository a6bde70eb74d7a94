/** The reply with a file's per-port information: one record a port, names turned into ASCII. */
#include <platform/mts.h>

#include <cstring>

#include "exchange/allocation.h"
#include "exchange/tlv_reader.h"
#include "exchange/trace.h"
#include "files/file_name.h"
#include "wire/port_info.h"
#include "wire/port_info_request.h"

using namespace ficon;

namespace {

constexpr std::size_t kNameRoom = 9;  // 8 characters and a terminator

/** Where the caller wants what the reply's head says; either may be null. */
struct HeadOutputs {
  std::uint32_t* vsan;
  char* name;
};

/** How names are to be handed out. */
struct Conversion {
  bool to_ascii;
  std::uint32_t codepage;
};

/** The file's name out of the reply's own record: converted, or terminated there in place. */
Status hand_out_name(const Tlv& tlv, const Conversion& conversion, char* name) {
  const auto record = tlv.read<wire::PortInfoRequest>();
  if (!conversion.to_ascii) {
    constexpr std::size_t kTerminator = offsetof(wire::PortInfoRequest, spare);
    static_assert(kTerminator == 136);
    if (tlv.length > kTerminator) static_cast<std::uint8_t*>(tlv.value)[kTerminator] = 0;
    std::memcpy(name, record.file_name.raw, sizeof record.file_name.raw);
    name[sizeof record.file_name.raw] = '\0';
    return status::kOk;
  }
  char ascii[kNameRoom] = {};
  if (convert_ebcdic_filename_to_ascii(conversion.codepage, record.file_name.raw, ascii) != 0) {
    trace("CMI_ERROR: conversion of %.8s (codepage:%d) to ascii failed\n",
          reinterpret_cast<const char*>(record.file_name.raw),
          static_cast<int>(conversion.codepage));
    return status::kInvalidPayload;
  }
  std::memcpy(name, ascii, sizeof ascii);
  return status::kOk;
}

Status judge_head(const Tlv& tlv, const Conversion& conversion, const HeadOutputs& outputs) {
  const auto record = tlv.read<wire::PortInfoRequest>();
  if (record.status.get() != 0) {
    trace("CMI_ERROR: status was %d\n", static_cast<int>(record.status.get()));
    return record.status.get();
  }
  if (outputs.vsan != nullptr) *outputs.vsan = record.vsan.get();
  return outputs.name == nullptr ? status::kOk : hand_out_name(tlv, conversion, outputs.name);
}

/** First pass: the head judged, the records counted. */
Status judge_reply(TlvReader& reader, const Conversion& conversion, const HeadOutputs& outputs,
                   std::uint32_t* records) {
  bool seen = false;
  const Status failure = for_each_tlv(reader, [&](const Tlv& tlv) -> Status {
    if (tlv.is(wire::TlvType::kPortInfo)) ++*records;
    if (!tlv.is(wire::TlvType::kPortInfoRequest)) return status::kOk;
    if (const Status refused = judge_head(tlv, conversion, outputs)) return refused;
    seen = true;
    return status::kOk;
  });
  if (reader.status() != 0) trace("CMI_ERROR: tlv_next_tlv gave error\n");
  if (failure != 0 || seen) return failure;
  trace("CMI_ERROR: Unrecognised response for the request\n");
  return status::kInvalidPayload;
}

/** Second pass: the records, back to back. */
Status copy_records(TlvReader& reader, ficon_cmi_port_info_t* list) {
  reader.rewind();
  const Status failure = for_each_tlv(reader, [&](const Tlv& tlv) -> Status {
    if (!tlv.is(wire::TlvType::kPortInfo)) return status::kOk;
    if (tlv.length != sizeof *list) {
      trace("CMI_ERROR: Invalid size of ficon_cmi_port_info_t payload\n");
      return status::kInvalidPayload;
    }
    std::memcpy(list++, tlv.value, sizeof *list);
    return status::kOk;
  });
  if (reader.status() != 0) trace("CMI_ERROR: Next tlv failed for ports.\n");
  return failure;
}

Status convert_port_names(ficon_cmi_port_info_t* list, std::uint32_t count,
                          std::uint32_t codepage) {
  for (std::uint32_t i = 0; i < count; ++i) {
    ficon_cmi_port_info_t& port = list[i];
    char ascii[sizeof port.port_name];
    const auto* ebcdic = reinterpret_cast<const std::uint8_t*>(port.port_name);
    if (const Status failure = convert_ebcdic_portname_to_ascii(
            codepage, ebcdic, ascii, static_cast<std::uint32_t>(port.port))) {
      trace("CMI_ERROR: ascii conversion of portname for port %d failed\n", int{port.port});
      return failure;
    }
    std::memcpy(port.port_name, ascii, sizeof ascii);
    port.port_name_end = 0;
  }
  return status::kOk;
}

}  // namespace

uint32_t ficon_cmi_file_parse_port_info(uint32_t /*requester*/, mts_msg_ref_t* reply,
                                        ficon_cmi_port_info_t** list, uint32_t* vsan, char* name,
                                        uint32_t convert, uint32_t codepage, uint32_t* count) {
  TlvReader reader(mts_payload_get(reply));
  if (reader.empty()) {
    trace("CMI_ERROR: invalid cmi payload: no tlvs present\n");
    return status::kInvalidPayload;
  }
  const Conversion conversion{convert == kConvert, codepage};
  std::uint32_t records = 0;
  if (const Status failure = judge_reply(reader, conversion, {vsan, name}, &records)) {
    return failure;
  }
  if (count == nullptr) return status::kInvalidPayload;
  *count = records;
  if (records == 0) return status::kOk;

  Tracked<ficon_cmi_port_info_t> ports(
      allocate(TEVRAK_MEM_portinfo, records * sizeof(ficon_cmi_port_info_t), __LINE__));
  if (!ports) {
    trace("CMI_ERROR: No mem for ports data\n");
    return status::kNoMemory;  // the plain 1: intended
  }
  if (const Status failure = copy_records(reader, ports.get())) return failure;
  if (conversion.to_ascii) {
    if (const Status failure = convert_port_names(ports.get(), records, codepage)) return failure;
  }
  *list = ports.release();
  return status::kOk;
}
