#include "handlers/port_info.h"

#include <algorithm>

#include "handlers/file_request.h"
#include "handlers/port_map.h"
#include "handlers/port_set.h"
#include "protocol/cmi_header.h"
#include "wire/port_info.h"
#include "wire/port_info_request.h"

namespace ficon::emulator {
namespace {

using wire::PortSelector;
using wire::TlvType;

struct ListedPort {
  std::uint32_t address;
  PortIdentity identity;
};

/** The ports of the switch in the order of what they are selected by. */
std::vector<ListedPort> ports_by(PortSelector selector, const Switch& model) {
  std::vector<ListedPort> ports;
  for (std::uint32_t address = 0; address <= kLastUsablePortAddress; ++address) {
    const PortIdentity identity = model.port_identity(address);
    if (selector == PortSelector::kInterfaces && identity.if_index == 0) continue;
    ports.push_back({address, identity});
  }
  if (selector == PortSelector::kInterfaces) {
    std::ranges::sort(ports, {}, [](const ListedPort& port) { return port.identity.if_index; });
  }
  return ports;
}

std::uint32_t key_of(PortSelector selector, const ListedPort& port) {
  return selector == PortSelector::kInterfaces ? port.identity.if_index : port.address;
}

wire::PortInfo port_info(const ListedPort& port, const ConfigurationFile& file) {
  const PortSettings& settings = file.port(port.address);
  wire::PortInfo info{};
  info.port_number.set(port.identity.port_number);
  info.port_address.set(port.address);
  info.if_index.set(port.identity.if_index);
  info.blocked = settings.blocked ? 1 : 0;
  info.installed = port.identity.installed ? 1 : 0;
  info.port_name = std::bit_cast<wire::bytes<24>>(settings.name);
  info.prohibited = bitset_of(settings.prohibited);
  return info;
}

/** Behind `start` in a get-next, whatever its end; from `start` to `end` in a get. */
std::vector<ListedPort> select(const std::vector<ListedPort>& ports, PortSelector selector,
                               const wire::PortRange& range, bool next) {
  constexpr std::uint32_t kFromTheFirst = 512;
  const std::uint32_t start = range.first.get();
  std::vector<ListedPort> selected;
  for (const ListedPort& port : ports) {
    const std::uint32_t key = key_of(selector, port);
    if (next) {
      const bool from_the_first =
          selector == PortSelector::kPortAddresses ? start == kFromTheFirst : start == 0;
      if (!from_the_first && key <= start) continue;
      return {port};
    }
    if (key >= start && key <= range.last.get()) selected.push_back(port);
  }
  return selected;
}

const wire::PortInfoRequest* asked_in(const std::optional<TlvMessage>& message) {
  return message ? message->record<wire::PortInfoRequest>(TlvType::kPortInfoRequest) : nullptr;
}

}  // namespace

Answer handle_port_info(const Request& request, Switch& model) {
  const auto message = TlvMessage::parse(request.payload);
  const wire::PortInfoRequest* asked = asked_in(message);
  if (asked == nullptr) return Malformed{"port information without its request record"};
  const auto selector = PortSelector{asked->selector.get()};
  if (selector == PortSelector::kEveryPortNumber || selector == PortSelector::kPortNumbers) {
    return port_map_tables(*asked, *message, model);
  }
  if (selector != PortSelector::kPortAddresses && selector != PortSelector::kInterfaces) {
    return FcdStatus::kUnknownOperation;
  }
  const auto range_type =
      selector == PortSelector::kInterfaces ? TlvType::kInterfaceRange : TlvType::kPortAddressRange;
  const auto* range = message->record<wire::PortRange>(range_type);
  if (range == nullptr) return Malformed{"port information without its range"};

  const bool next = platform::message_type(asked->platform) == wire::MessageType::kGetNext;
  const std::uint32_t number = asked->vsan.get();
  const Vsan* vsan = next && number == 0 ? model.next_vsan(0) : model.find_vsan(number);
  if (vsan == nullptr) return next ? FcdStatus::kNoNextVsan : model.check_vsan(number);
  const FileTarget target{asked->file_key.get(), file_name(asked->file_name)};
  const ConfigurationFile* file =
      FileOperations(model).find(vsan->number, request.asker(asked->requester.get()), target);
  if (file == nullptr) return target.key != 0 ? FcdStatus::kNoSuchEdit : FcdStatus::kNoSuchFile;

  const auto ports = select(ports_by(selector, model), selector, *range, next);
  if (next && ports.empty()) return FcdStatus::kNoPortInRange;
  wire::PortInfoRequest head = *asked;
  head.vsan.set(vsan->number);
  head.status.set(0);
  TlvReply reply;
  reply.add(TlvType::kPortInfoRequest, head);
  for (const ListedPort& port : ports) reply.add(TlvType::kPortInfo, port_info(port, *file));
  return reply.take();
}

Bytes port_info_status_reply(ByteView request, FcdStatus status) {
  const auto message = TlvMessage::parse(request);
  const auto* tlv = message ? message->only(TlvType::kPortInfoRequest) : nullptr;
  auto reply = leading_record<wire::PortInfoRequest>(tlv == nullptr ? ByteView{} : tlv->value);
  reply.status.set(static_cast<Status>(status));
  return TlvReply().add(TlvType::kPortInfoRequest, reply).take();
}

}  // namespace ficon::emulator
