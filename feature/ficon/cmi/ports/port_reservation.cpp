/** Reserving port numbers for a module, or for the logical ports. */
#include <cstring>

#include "ports/number_request.h"
#include "wire/port_numbers.h"

using namespace ficon;

namespace {

void take_ranges(const wire::PortNumberReservation& answer, std::int32_t* count,
                 std::uint32_t* firsts, std::uint32_t* lasts) {
  std::uint32_t ranges = answer.count.get();
  if (ranges > wire::kReservedRanges) ranges = wire::kReservedRanges;
  *count = static_cast<std::int32_t>(ranges);
  for (std::uint32_t i = 0; i < ranges; ++i) {
    firsts[i] = answer.first[i].get();
    lasts[i] = answer.last[i].get();
  }
}

void take_text(const wire::PortNumberReservation& answer, char* text) {
  const std::size_t length =
      strnlen(reinterpret_cast<const char*>(answer.text.raw), wire::kReserveText);
  __builtin_memcpy(text, answer.text.raw, length);
  text[length] = '\0';
}

}  // namespace

uint32_t ficon_cmi_reserve_portnum(uint32_t requester, mts_handle_t handle, const char* word_a,
                                   const char* word_b, uint32_t wait, uint8_t op, uint32_t module,
                                   uint32_t arg, uint32_t* result, int32_t* count, uint32_t* firsts,
                                   uint32_t* lasts, char* error_text) {
  error_text[0] = '\0';
  if (op == 0 || op > wire::kLastReserveOperation) return status::kInvalidPayload;
  const bool query = wire::reserve_is_query(op);
  const auto ranges = static_cast<std::uint32_t>(*count);
  if (!query && ranges > wire::kReservedRanges) return status::kInvalidPayload;

  wire::PortNumberReservation record{};
  record.module.set(module);
  record.count.set(ranges);
  for (std::uint32_t i = 0; !query && i < ranges; ++i) {
    record.first[i].set(firsts[i]);
    record.last[i].set(lasts[i]);
  }
  if (wire::reserve_names_module(op)) {
    record.module_ports.set(static_cast<std::uint32_t>(
        ficon_cmi_fc_port_in_mod(handle, static_cast<std::uint8_t>(module))));
  }
  record.operation = op;
  record.argument.set(arg);
  return exchange_record({requester, handle, word_a, word_b, wait},
                         wire::Opcode::kReservePortNumbers, wire::TlvType::kReservePortNumbers,
                         record, {"ficon_cmi_reserve_portnum", __LINE__},
                         [&](const wire::PortNumberReservation& answer) {
                           const Status refusal = answer.status.get();
                           if (refusal == 0 && query) {
                             take_ranges(answer, count, firsts, lasts);
                             *result = answer.result.get();
                           } else if (refusal != 0 && !query) {
                             take_text(answer, error_text);
                           }
                           return refusal;
                         });
}
