/** Requests of one TLV, answered by the same record: port numbers and their reservations. */
#pragma once

#include "exchange/console.h"
#include "exchange/exchange.h"
#include "exchange/tlv_reader.h"
#include "exchange/tlv_writer.h"

namespace ficon {

/** Which function and line a failed send is reported with. */
struct CallSite {
  const char* function;
  int line;
};

/**
 * Sends the record alone and gives fcd's answer to `judge(record)`. A send fails with the
 * transport's error number; the first record of the type decides, and only in its full length.
 */
template <class Record, class Judge>
Status exchange_record(const Caller& caller, wire::Opcode opcode, wire::TlvType type,
                       const Record& record, CallSite site, Judge judge) {
  const auto send = [&](mts_msg_ref_t* request) -> Sent {
    RequestTlvs tlvs;
    tlvs.add(type, record);
    if (tlvs.status() != 0) return tlvs.status();
    const std::int32_t result =
        send_to_fcd(caller.handle, opcode, tlvs.array(), tlvs.size(), request);
    return sent_or_errno(caller.handle, result, site.function, site.line);
  };
  return exchange(caller, send, report_nothing, [&](mts_msg_ref_t* reply) {
    TlvReader reader(mts_payload_get(reply));
    if (reader.empty()) {
      console("CMI_ERROR: %s", kNoTlvs);
      return status::kInvalidPayload;
    }
    Tlv tlv{};
    if (!reader.find(type, tlv)) {
      return reader.status() != 0 ? reader.status() : status::kInvalidPayload;
    }
    if (tlv.length != sizeof(Record)) return status::kInvalidPayload;
    return judge(*static_cast<const Record*>(tlv.value));
  });
}

}  // namespace ficon
