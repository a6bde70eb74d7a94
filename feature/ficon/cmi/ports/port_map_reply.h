/** Both port-map queries begin alike: the request, and an answer that is judged before it is read.
 */
#pragma once

#include <platform/mts.h>

#include "exchange/caller.h"
#include "exchange/tlv_reader.h"
#include "exchange/tlv_writer.h"
#include "exchange/trace.h"
#include "wire/port_info_request.h"

namespace ficon {

using PortMapTlvs = TlvArray<24576>;

/** A TLV carries no more rows of the map from port numbers to interfaces. */
inline constexpr std::uint32_t kMaxMapRows = 0xffff / sizeof(std::uint32_t);

/** Rows of the tables by port number, or 0 when no answer could carry them. */
inline std::uint32_t map_rows(std::uint32_t max_port_number) {
  return max_port_number < kMaxMapRows ? max_port_number + 1 : 0;
}

/** The record that asks for the port map. */
wire::PortInfoRequest port_map_request(const Caller& caller, wire::PortSelector selector);

/** First pass: a refusal of fcd, or an answer with neither of the two tables, ends the query. */
Status judge_port_map(TlvReader& reader, wire::TlvType table1, wire::TlvType table2);

/** Copies a table of exactly `size` bytes; any other length is an invalid payload. */
Status take_table(const Tlv& tlv, void* table, std::size_t size);

/**
 * Both passes. `read(tlv)` takes the tables in the second; its first nonzero status ends it. A
 * table that does not come leaves what was there.
 */
template <class Read>
Status parse_port_map(mts_msg_ref_t* reply, wire::TlvType table1, wire::TlvType table2,
                      std::uint32_t rows, Read read) {
  TlvReader reader(mts_payload_get(reply));
  if (const Status failure = judge_port_map(reader, table1, table2)) return failure;
  if (rows == 0) return status::kInvalidPayload;
  reader.rewind();
  const Status result = for_each_tlv(reader, read);
  if (reader.status() != 0) trace("CMI_ERROR: Next tlv failed for ports.\n");
  return result;
}

}  // namespace ficon
