/** The header in front of most requests, its platform part filled by the base library. */
#pragma once

#include <platform/ficon_base.h>

#include "exchange/caller.h"
#include "wire/cmi_header.h"

namespace ficon {

/**
 * A zeroed request record of type `Record` that begins with a CMI header. Queries whose message
 * type is the caller's pass it on as a number.
 */
template <class Record>
Record request_header(const Caller& caller, std::uint32_t message_type, wire::Subtype subtype) {
  Record record{};
  static_assert(sizeof(Record) >= sizeof(wire::PlatformHeader));
  ficon_init_cmi_hdr(&record, message_type, caller.word_a, caller.word_b,
                     static_cast<std::uint32_t>(subtype));
  return record;
}
template <class Record>
Record request_header(const Caller& caller, wire::MessageType message_type, wire::Subtype subtype) {
  return request_header<Record>(caller, static_cast<std::uint32_t>(message_type), subtype);
}

}  // namespace ficon
