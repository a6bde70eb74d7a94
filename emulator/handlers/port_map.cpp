#include "handlers/port_map.h"

#include "handlers/tlv_message.h"
#include "model/port_operations.h"
#include "protocol/port_map.h"
#include "wire/port_map.h"

namespace ficon::emulator {
namespace {

using wire::TlvType;

Bytes interface_map(const PortPlan& plan) {
  Bytes table;
  table.reserve(plan.rows() * sizeof(wire::be32));
  for (const if_index_t if_index : plan.interfaces_by_number()) {
    wire::be32 row{};
    row.set(if_index);
    append(table, row);
  }
  return table;
}

Bytes address_map(const PortPlan& plan) {
  Bytes table;
  table.reserve(plan.rows() * sizeof(wire::AddressMapRow));
  for (std::uint32_t address = 0; address < plan.rows(); ++address) {
    wire::AddressMapRow row{};
    row.set(address < kPortAddresses ? plan.number_of_address(address) : kNoPort);
    append(table, row);
  }
  return table;
}

Bytes port_records(const PortPlan& plan, const wire::PortRange& range) {
  Bytes table;
  // A range that ends before it begins asks for no port at all, which is no mistake.
  for (std::uint32_t position = range.first.get(); position <= range.last.get(); ++position) {
    const PortNumber number = plan.number_at(position);
    wire::PortRecord record{};
    record.port_number.set(number);
    record.port_address.set(plan.address_of(number));
    append(table, record);
  }
  return table;
}

}  // namespace

Answer port_map_tables(const wire::PortInfoRequest& asked, const TlvMessage& message,
                       const Switch& model) {
  wire::PortInfoRequest head = asked;
  head.status.set(0);
  TlvReply reply;
  reply.add(TlvType::kPortInfoRequest, head);
  const PortPlan& plan = model.port_plan();
  if (wire::PortSelector{asked.selector.get()} == wire::PortSelector::kEveryPortNumber) {
    reply.add(TlvType::kAddressToNumberMap, ByteView(address_map(plan)));
  } else {
    const auto* range = message.record<wire::PortRange>(TlvType::kPortNumberRange);
    if (range == nullptr) return Malformed{"port map without its range"};
    if (range->first.get() <= range->last.get() && range->last.get() >= wire::kPortPositions) {
      return FcdStatus::kNotAPortPosition;
    }
    reply.add(TlvType::kPortRecords, ByteView(port_records(plan, *range)));
  }
  return reply.add(TlvType::kNumberToInterfaceMap, ByteView(interface_map(plan))).take();
}

Answer handle_interface_states(const Request& request, Switch& model) {
  const auto message = TlvMessage::parse(request.payload);
  if (!message) return Malformed{"interface states: no TLV array"};
  TlvReply reply;
  for (const TlvMessage::Tlv& tlv : message->tlvs()) {
    const auto* asked = whole_record<wire::InterfaceState>(tlv.value);
    if (tlv.type != TlvType::kInterfaceState || asked == nullptr) {
      return Malformed{"interface states: a TLV is no interface"};
    }
    wire::InterfaceState state = *asked;
    const platform::Port* port = model.chassis().port(asked->if_index.get());
    if (port == nullptr) {
      state.status.set(static_cast<Status>(FcdStatus::kNoSuchInterface));
    } else {
      const InterfaceCondition condition = condition_of(*port);
      state.port.set(model.port_plan().number_of_interface(asked->if_index.get()));
      state.status.set(0);
      state.flags = condition.flags;
      state.reason = condition.reason;
    }
    reply.add(TlvType::kInterfaceState, state);
  }
  return reply.take();
}

Bytes interface_states_status_reply(ByteView, FcdStatus status) {
  wire::InterfaceState state{};
  state.status.set(static_cast<Status>(status));
  return TlvReply().add(TlvType::kInterfaceState, state).take();
}

Answer handle_portmap_walk(const Request& request, Switch& model) {
  constexpr std::uint32_t kExact = 1;
  constexpr std::uint32_t kNext = 2;
  const auto* asked = whole_record<platform::PortmapRequest>(request.payload);
  if (asked == nullptr) return Malformed{"port map: not the length of its record"};
  const std::uint32_t type = asked->type.get();
  if (type != kExact && type != kNext) return FcdStatus::kUnknownOperation;
  const PortKeys keys{asked->if_index.get(), asked->port_number.get(), asked->port_address.get()};
  const PortOperations ports(model);
  const auto found = type == kExact ? ports.find(keys) : ports.next(keys);
  if (!found) return type == kExact ? FcdStatus::kNoSuchPort : FcdStatus::kNoPortInRange;
  platform::PortmapReply reply{};
  reply.if_index.set(found->if_index);
  reply.port_number.set(found->port_number);
  reply.port_address.set(found->port_address);
  return to_bytes(reply);
}

Bytes portmap_walk_status_reply(ByteView, FcdStatus status) {
  platform::PortmapReply reply{};
  reply.status.set(static_cast<Status>(status));
  return to_bytes(reply);
}

}  // namespace ficon::emulator
