/** The product identification block. */
#include <platform/mts.h>

#include "exchange/allocation.h"
#include "exchange/console.h"
#include "exchange/header.h"
#include "exchange/tlv_reader.h"
#include "exchange/tlv_writer.h"
#include "wire/pib.h"

using namespace ficon;

namespace {

/** First pass: the range that fcd returns, and how many records it makes. */
Status judge_pib(TlvReader& reader, uint8_t* first, uint8_t* last, int* records) {
  bool seen = false;
  const Status failure = for_each_tlv(reader, [&](const Tlv& tlv) {
    if (!tlv.is(wire::TlvType::kPibRequest)) return status::kOk;
    const auto head = tlv.read<wire::PibRequest>();
    if (first != nullptr) *first = head.first;
    if (last != nullptr) *last = head.last;
    seen = true;
    *records = head.last + 1 - head.first;
    return head.status.get();
  });
  if (failure != 0) return failure;
  if (!seen) {
    console("Unrecognised response for the request\n");
    return status::kInvalidPayload;
  }
  if (*records <= 0) {
    console("Invalid number of records\n");
    return status::kInvalidPayload;
  }
  return status::kOk;
}

}  // namespace

uint32_t ficon_cmi_send_get_pib(uint32_t requester, mts_handle_t handle, const char* word_a,
                                const char* word_b, uint32_t wait, uint32_t pib_key, uint8_t first,
                                uint8_t last, mts_msg_ref_t* msg) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  auto request =
      request_header<wire::PibRequest>(caller, wire::MessageType::kGet, wire::Subtype::kPib);
  request.pib_key.set(pib_key);
  request.first = first;
  request.last = last;
  return RequestTlvs()
      .add(wire::TlvType::kPibRequest, request)
      .send(caller, wire::Opcode::kPib, msg);
}

uint32_t ficon_cmi_parse_getpib(mts_msg_ref_t* reply, uint32_t /*ignored*/, uint8_t* first,
                                uint8_t* last, ficon_cmi_pib_rec_t** records) {
  TlvReader reader(mts_payload_get(reply));
  if (reader.empty()) {
    console(kNoTlvs);
    return status::kInvalidPayload;
  }
  int count = 0;
  if (const Status failure = judge_pib(reader, first, last, &count)) return failure;
  const std::size_t size = static_cast<std::size_t>(count) * sizeof(wire::PibRecord);
  auto* copy = static_cast<ficon_cmi_pib_rec_t*>(allocate(TEVRAK_MEM_pib, size, 6611));
  *records = copy;  // the caller's to free from here on, also when the rest fails: intended
  if (copy == nullptr) return status::kAllocationFailed;
  reader.rewind();
  Tlv tlv{};
  if (!reader.find(wire::TlvType::kPibRecords, tlv)) {
    return reader.status() != 0 ? reader.status() : status::kInvalidPayload;
  }
  if (tlv.length != size) {
    console("(%s):Invalid length of returned data\n", "ficon_cmi_parse_getpib");
    return status::kInvalidPayload;
  }
  __builtin_memcpy(copy, tlv.value, size);
  return status::kOk;
}
