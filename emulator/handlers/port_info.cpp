#include "handlers/port_info.h"

#include <algorithm>

#include "handlers/file_request.h"
#include "handlers/port_map.h"
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

wire::PortInfo port_info(const ListedPort& port, const ConfigurationFile& file) {
  const PortSettings& settings = file.port(port.address);
  wire::PortInfo info{};
  info.port_number.set(port.identity.port_number);
  info.port_address.set(port.address);
  info.if_index.set(port.identity.if_index);
  info.blocked = settings.blocked ? 1 : 0;
  info.installed = port.identity.installed ? 1 : 0;
  info.port_name = std::bit_cast<wire::bytes<24>>(settings.name);
  info.prohibited = std::bit_cast<wire::bytes<32>>(settings.prohibited.mask());
  return info;
}

/** Both ends included; empty where the first is above the last. */
struct Keys {
  std::uint64_t first;
  std::uint64_t last;
};

/** Behind the range's start in a get-next, whatever its end; from start to end in a get. */
Keys keys_asked(PortSelector selector, const wire::PortRange& range, bool next) {
  const std::uint32_t start = range.first.get();
  if (!next) return {start, range.last.get()};
  const bool from_the_first =
      selector == PortSelector::kPortAddresses ? start == kNoPort : start == 0;
  return {from_the_first ? 0 : std::uint64_t{start} + 1, UINT32_MAX};
}

std::vector<ListedPort> ports_by_address(const Switch& model, const Keys& keys) {
  std::vector<ListedPort> ports;
  for (std::uint64_t key = keys.first; key <= keys.last && key <= kLastUsablePortAddress; ++key) {
    const auto address = static_cast<std::uint32_t>(key);
    ports.push_back({address, model.port_identity(address)});
  }
  return ports;
}

std::vector<ListedPort> ports_by_interface(const Switch& model, const Keys& keys) {
  std::vector<ListedPort> ports = ports_by_address(model, {0, kLastUsablePortAddress});
  std::erase_if(ports, [&](const ListedPort& port) {
    const if_index_t key = port.identity.if_index;
    return key == 0 || key < keys.first || key > keys.last;
  });
  std::ranges::sort(ports, {}, [](const ListedPort& port) { return port.identity.if_index; });
  return ports;
}

/** In the order of what they are selected by; of a get-next the first alone. */
std::vector<ListedPort> select(const Switch& model, PortSelector selector,
                               const wire::PortRange& range, bool next) {
  const Keys keys = keys_asked(selector, range, next);
  auto ports = selector == PortSelector::kInterfaces ? ports_by_interface(model, keys)
                                                     : ports_by_address(model, keys);
  if (next && ports.size() > 1) ports.resize(1);
  return ports;
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

  const auto ports = select(model, selector, *range, next);
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
