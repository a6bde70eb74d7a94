#include "handlers/port_numbers.h"

#include <cstring>

#include "handlers/tlv_message.h"
#include "model/port_operations.h"
#include "wire/port_numbers.h"

namespace ficon::emulator {
namespace {

using wire::TlvType;

// None of these records has a place for the requester.
Asker unstated(const Request& request) {
  return {request.connection, Requester::kUnstated};
}

/** The only TLV of a request: its record, null when it is anything else. */
template <class Record>
const Record* record_in(const std::optional<TlvMessage>& message, TlvType type) {
  return message ? message->record<Record>(type) : nullptr;
}

/** The request's record with a status, whatever is left of it. */
template <class Record>
Bytes tlv_reply(ByteView request, TlvType type, FcdStatus status) {
  const auto message = TlvMessage::parse(request);
  const auto* tlv = message ? message->only(type) : nullptr;
  auto reply = leading_record<Record>(tlv == nullptr ? ByteView{} : tlv->value);
  reply.status.set(static_cast<Status>(status));
  return TlvReply().add(type, reply).take();
}

template <class Record>
Bytes bare_reply(ByteView request, FcdStatus status) {
  auto reply = leading_record<Record>(request);
  reply.status.set(static_cast<Status>(status));
  return to_bytes(reply);
}

FcdStatus check_in_vsan(const Switch& model, std::uint32_t vsan, if_index_t if_index) {
  const platform::Port* port = model.chassis().port(if_index);
  if (port == nullptr) return FcdStatus::kNoSuchInterface;
  const bool member =
      port->vsan == vsan || (vsan < port->trunk_vsans.size() && port->trunk_vsans.test(vsan));
  return member ? FcdStatus::kDone : FcdStatus::kInterfaceNotInVsan;
}

/** The first range of a reservation, then the others. */
std::vector<PortNumberRange> ranges_in(const wire::PortNumberReservation& asked) {
  std::vector<PortNumberRange> ranges;
  for (std::uint32_t i = 0; i < asked.count.get(); ++i) {
    ranges.push_back({asked.first[i].get(), asked.last[i].get()});
  }
  return ranges;
}

Bytes reservations(wire::PortNumberReservation reply, const PortPlan& plan, NumberOwner owner) {
  const auto ranges = plan.reserved_for(owner);
  std::uint32_t numbers = 0;
  std::uint32_t row = 0;
  for (const PortNumberRange& range : ranges) {
    numbers += range.last - range.first + 1;
    if (row == wire::kReservedRanges) continue;  // the count of numbers shows that some are missing
    reply.first[row].set(range.first);
    reply.last[row++].set(range.last);
  }
  reply.count.set(row);
  reply.result.set(numbers);
  reply.status.set(0);
  return TlvReply().add(TlvType::kReservePortNumbers, reply).take();
}

}  // namespace

Answer handle_port_number_binding(const Request& request, Switch& model) {
  const auto message = TlvMessage::parse(request.payload);
  const auto* asked = record_in<wire::PortNumberBinding>(message, TlvType::kPortNumberBinding);
  if (asked == nullptr) return Malformed{"port number binding without its record"};
  const std::uint32_t vsan = asked->vsan.get();
  const std::uint32_t number = asked->port_number.get();
  if (asked->operation == wire::kBindingQuery) {
    if (const FcdStatus status = model.check_vsan(vsan); status != FcdStatus::kDone) return status;
    const if_index_t if_index = model.port_plan().interface_of(number);
    if (if_index == 0 || check_in_vsan(model, vsan, if_index) != FcdStatus::kDone) {
      return FcdStatus::kPortNumberNotBound;
    }
    wire::PortNumberBinding reply = *asked;
    reply.if_index.set(if_index);
    reply.status.set(0);
    return TlvReply().add(TlvType::kPortNumberBinding, reply).take();
  }
  const Asker asker = unstated(request);
  const VsanAccess access = model.change_vsan(vsan, asker);
  if (access.status != FcdStatus::kDone) return access.status;
  const if_index_t if_index = asked->if_index.get();
  if (const FcdStatus status = check_in_vsan(model, vsan, if_index); status != FcdStatus::kDone) {
    return status;
  }
  PortOperations ports(model);
  if (asked->operation == wire::kBindNumber) return ports.assign(asker, if_index, number);
  if (asked->operation == wire::kUnbindNumber) return ports.unassign(asker, if_index, number);
  return FcdStatus::kUnknownOperation;
}

Bytes port_number_binding_status_reply(ByteView request, FcdStatus status) {
  return tlv_reply<wire::PortNumberBinding>(request, TlvType::kPortNumberBinding, status);
}

Answer handle_set_port_number(const Request& request, Switch& model) {
  const auto message = TlvMessage::parse(request.payload);
  const auto* asked = record_in<wire::PortNumberAssignment>(message, TlvType::kSetPortNumber);
  if (asked == nullptr) return Malformed{"port number without its record"};
  const Asker asker = unstated(request);
  const if_index_t if_index = asked->if_index.get();
  const std::uint32_t number = asked->port_number.get();
  PortOperations ports(model);
  switch (asked->operation) {
    case wire::kAssignPortNumber:
      return ports.assign(asker, if_index, number);
    case wire::kReleasePortNumber:
      return ports.unassign(asker, if_index, number);
    case wire::kComparePortNumber:
      if (model.chassis().port(if_index) == nullptr) return FcdStatus::kNoSuchInterface;
      return number != kNoPort && model.port_plan().number_of_interface(if_index) == number
                 ? FcdStatus::kDone
                 : FcdStatus::kPortNumberNotBound;
    default:
      return FcdStatus::kUnknownOperation;
  }
}

Bytes set_port_number_status_reply(ByteView request, FcdStatus status) {
  return tlv_reply<wire::PortNumberAssignment>(request, TlvType::kSetPortNumber, status);
}

Answer handle_reserve_port_numbers(const Request& request, Switch& model) {
  const auto message = TlvMessage::parse(request.payload);
  const auto* asked = record_in<wire::PortNumberReservation>(message, TlvType::kReservePortNumbers);
  if (asked == nullptr) return Malformed{"reservation without its record"};
  const std::uint8_t operation = asked->operation;
  if (operation == 0 || operation > wire::kLastReserveOperation) {
    return FcdStatus::kUnknownOperation;
  }
  const bool for_module = wire::reserve_names_module(operation);
  const NumberOwner owner = for_module ? asked->module.get() : kLogicalPorts;
  if (for_module && (owner == 0 || owner > kModules)) return FcdStatus::kNoSuchModule;
  if (wire::reserve_is_query(operation)) return reservations(*asked, model.port_plan(), owner);
  if (asked->count.get() > wire::kReservedRanges)
    return Malformed{"reservation of too many ranges"};

  PortOperations ports(model);
  const bool takes = operation == wire::kReserveForModule || operation == wire::kReserveLogical;
  const PlanVerdict verdict = takes ? ports.reserve(unstated(request), owner, ranges_in(*asked))
                                    : ports.release(unstated(request), owner, ranges_in(*asked));
  if (verdict.text.empty()) return verdict.status;
  wire::PortNumberReservation reply = *asked;
  reply.status.set(static_cast<Status>(verdict.status));
  std::memcpy(reply.text.raw, verdict.text.data(),
              std::min(verdict.text.size(), sizeof reply.text.raw - 1));
  return TlvReply().add(TlvType::kReservePortNumbers, reply).take();
}

Bytes reserve_port_numbers_status_reply(ByteView request, FcdStatus status) {
  const auto message = TlvMessage::parse(request);
  const auto* tlv = message ? message->only(TlvType::kReservePortNumbers) : nullptr;
  auto reply =
      leading_record<wire::PortNumberReservation>(tlv == nullptr ? ByteView{} : tlv->value);
  reply.status.set(static_cast<Status>(status));
  reply.text = {};
  if (const auto* text = find_fcd_status(static_cast<Status>(status))) {
    std::strncpy(reinterpret_cast<char*>(reply.text.raw), text->sentence,
                 sizeof reply.text.raw - 1);
  }
  return TlvReply().add(TlvType::kReservePortNumbers, reply).take();
}

Answer handle_bind_address_to_interface(const Request& request, Switch& model) {
  const auto* asked = whole_record<wire::AddressToInterface>(request.payload);
  if (asked == nullptr) return Malformed{"address to interface: not the length of its record"};
  const if_index_t if_index = asked->if_index.get();
  PortNumber number = kNoPort;
  if (if_index != 0) {
    if (model.chassis().port(if_index) == nullptr) return FcdStatus::kNoSuchInterface;
    number = model.port_plan().number_of_interface(if_index);
    if (number == kNoPort) return FcdStatus::kPortWithoutNumber;
  }
  return PortOperations(model).bind_address(unstated(request), asked->port_address.get(), number);
}

Bytes bind_address_to_interface_status_reply(ByteView request, FcdStatus status) {
  return bare_reply<wire::AddressToInterface>(request, status);
}

Answer handle_bind_address_to_number(const Request& request, Switch& model) {
  const auto* asked = whole_record<wire::AddressToNumber>(request.payload);
  if (asked == nullptr) return Malformed{"address to port number: not the length of its record"};
  return PortOperations(model).bind_address(unstated(request), asked->port_address.get(),
                                            asked->port_number.get());
}

Bytes bind_address_to_number_status_reply(ByteView request, FcdStatus status) {
  return bare_reply<wire::AddressToNumber>(request, status);
}

}  // namespace ficon::emulator
