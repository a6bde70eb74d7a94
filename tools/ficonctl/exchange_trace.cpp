#include "exchange_trace.h"

#include <platform/tlv_array.h>

#include <cstdio>

#include "output.h"
#include "wire/cmi_header.h"
#include "wire/fcd_lock.h"
#include "wire/ficon_state.h"
#include "wire/opcode.h"
#include "wire/tlv_type.h"

namespace ficon::ctl {
namespace {

template <class Record>
std::optional<Status> status_in(const ficon_mts_event_t& event) {
  if (event.length < sizeof(Record)) return std::nullopt;
  return static_cast<const Record*>(event.payload)->status.get();
}

/** An array says its own size first; a bare header does not look like one. */
bool is_tlv_array(const ficon_mts_event_t& event) {
  return event.length >= sizeof(wire::be32) &&
         static_cast<const wire::be32*>(event.payload)->get() == event.length;
}

std::optional<Status> status_in_array(const void* array) {
  constexpr std::uint32_t kAlignment = 1;
  const std::int32_t count = tlv_aligned_array_get_num_tlvs(array, kAlignment);
  std::uint32_t cursor = 0;
  for (std::int32_t i = 0; i < count; ++i) {
    std::uint16_t type = 0;
    std::uint16_t length = 0;
    void* value = nullptr;
    if (tlv_aligned_array_get_next_tlv(array, &type, &length, &value, kAlignment, &cursor) != 0) {
      break;
    }
    if (static_cast<wire::TlvType>(type) != wire::TlvType::kHeader) continue;
    if (length < sizeof(wire::CmiHeader)) break;
    return static_cast<const wire::CmiHeader*>(value)->status.get();
  }
  return std::nullopt;
}

std::string outcome(const ficon_mts_event_t& event) {
  const std::optional<Status> status = status_of_reply(event);
  return status ? ", status " + hex(*status, 8) : "";
}

}  // namespace

std::optional<Status> status_of_reply(const ficon_mts_event_t& event) {
  switch (static_cast<wire::Opcode>(event.opcode)) {
    case wire::Opcode::kLock:
      return status_in<wire::FcdLockRecord>(event);
    case wire::Opcode::kFiconState:
      return status_in<wire::FiconStateRequest>(event);
    default:
      break;
  }
  return is_tlv_array(event) ? status_in_array(event.payload) : std::nullopt;
}

void print_exchange(const ficon_mts_event_t* event, void* /*context*/) {
  if (event->reply != 0) {
    std::fprintf(stderr, "<- opcode %u SAP %u, %u bytes%s, %llu us\n", event->opcode, event->sap,
                 event->length, outcome(*event).c_str(),
                 static_cast<unsigned long long>(event->elapsed_us));
  } else if (event->error == 0) {
    std::fprintf(stderr, "-> opcode %u SAP %u, %u bytes\n", event->opcode, event->sap,
                 event->length);
  } else {
    std::fprintf(stderr, "-> opcode %u SAP %u, %u bytes: not sent, error %d\n", event->opcode,
                 event->sap, event->length, event->error);
  }
}

}  // namespace ficon::ctl
