#include "handlers/port_swap.h"

#include "model/port_operations.h"
#include "wire/port_swap.h"

namespace ficon::emulator {
namespace {

wire::PortSwapReply reply_head(ByteView request) {
  wire::PortSwapReply reply{};
  reply.platform = leading_record<wire::PortSwapRequest>(request).platform;
  return reply;
}

Answer swap(const Request& request, Switch& model, std::uint32_t first, std::uint32_t second) {
  SwappedInterfaces swapped{};
  const Asker asker{request.connection, Requester::kUnstated};
  const FcdStatus status = PortOperations(model).swap(asker, first, second, swapped);
  if (status != FcdStatus::kDone) return status;
  auto head = reply_head(request.payload);
  head.count.set(1);
  wire::SwapInterfaces operation{};
  operation.first.set(swapped.first);
  operation.second.set(swapped.second);
  Bytes reply = to_bytes(head);
  append(reply, operation);
  return reply;
}

}  // namespace

Answer handle_swap_ports(const Request& request, Switch& model) {
  const auto* asked = whole_record<wire::PortSwapRequest>(request.payload);
  if (asked == nullptr) return Malformed{"port swap: not the length of its record"};
  return swap(request, model, asked->first.get(), asked->second.get());
}

Answer handle_swap_interfaces(const Request& request, Switch& model) {
  const auto* asked = whole_record<wire::PortSwapRequest>(request.payload);
  if (asked == nullptr) return Malformed{"interface swap: not the length of its record"};
  PortNumber numbers[2];
  const if_index_t interfaces[2] = {asked->first.get(), asked->second.get()};
  for (int i = 0; i < 2; ++i) {
    if (model.chassis().port(interfaces[i]) == nullptr) return FcdStatus::kPortNotInstalled;
    numbers[i] = model.port_plan().number_of_interface(interfaces[i]);
    if (numbers[i] == kNoPort) return FcdStatus::kPortWithoutNumber;
  }
  return swap(request, model, numbers[0], numbers[1]);
}

Bytes port_swap_status_reply(ByteView request, FcdStatus status) {
  auto reply = reply_head(request);
  reply.status.set(static_cast<Status>(status));
  return to_bytes(reply);
}

}  // namespace ficon::emulator
