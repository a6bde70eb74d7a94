/**
 * The look-up by FCID. An FCID names the switch by its domain, a port by its address, and ends in
 * the byte that the port's VSAN sets.
 */
#include "handlers/port_map.h"
#include "handlers/tlv_message.h"
#include "model/port_operations.h"
#include "protocol/cmi_header.h"

namespace ficon::emulator {
namespace {

using wire::TlvType;

constexpr std::uint32_t kDomain = 1;

/** 0 for a port that no frame can reach. */
std::uint32_t fcid_of(const PortKeys& port, const Switch& model) {
  const Vsan* vsan = model.vsan_with_fcid(port.port_address);
  if (vsan == nullptr) return 0;
  return kDomain << 16 | std::uint32_t{port.port_address} << 8 | vsan->fcid_last_byte;
}

const wire::PortmapFcid* asked_in(const std::optional<TlvMessage>& message) {
  return message ? message->record<wire::PortmapFcid>(TlvType::kPortmapFcid) : nullptr;
}

std::optional<PortKeys> find_port(const wire::PortmapFcid& asked, const Switch& model,
                                  const PortOperations& ports) {
  PortKeys keys{asked.if_index.get(), asked.key1.get(), asked.key2.get()};
  const std::uint32_t fcid = asked.fcid.get();
  if (keys.any() || fcid == 0) return ports.find(keys);
  keys.port_address = static_cast<std::uint16_t>(fcid >> 8 & 0xff);
  const auto found = ports.find(keys);
  return found && fcid_of(*found, model) == fcid ? found : std::nullopt;
}

}  // namespace

Answer handle_portmap_fcid(const Request& request, Switch& model) {
  const auto message = TlvMessage::parse(request.payload);
  const wire::PortmapFcid* asked = asked_in(message);
  if (asked == nullptr) return Malformed{"port map by FCID without its record"};
  const PortOperations ports(model);
  std::optional<PortKeys> found;
  switch (platform::message_type(asked->platform)) {
    case wire::MessageType::kGet:
      found = find_port(*asked, model, ports);
      if (!found) return FcdStatus::kNoSuchPort;
      break;
    case wire::MessageType::kGetNext:
      found = ports.next({asked->if_index.get(), asked->key1.get(), asked->key2.get()});
      if (!found) return FcdStatus::kNoPortInRange;
      break;
    default:
      return FcdStatus::kUnknownOperation;
  }
  wire::PortmapFcid reply = *asked;
  const platform::Port* hardware = model.chassis().port(found->if_index);
  const auto state = hardware == nullptr ? wire::PortState::kUnknown : state_of(*hardware);
  reply.if_index.set(found->if_index);
  reply.status.set(0);
  reply.key1.set(found->port_number);
  reply.key2.set(found->port_address);
  reply.answer = static_cast<std::uint8_t>(state);
  reply.fcid.set(fcid_of(*found, model));
  return TlvReply().add(TlvType::kPortmapFcid, reply).take();
}

Bytes portmap_fcid_status_reply(ByteView request, FcdStatus status) {
  const auto message = TlvMessage::parse(request);
  const auto* tlv = message ? message->only(TlvType::kPortmapFcid) : nullptr;
  auto reply = leading_record<wire::PortmapFcid>(tlv == nullptr ? ByteView{} : tlv->value);
  reply.status.set(static_cast<Status>(status));
  return TlvReply().add(TlvType::kPortmapFcid, reply).take();
}

}  // namespace ficon::emulator
