#include "handlers/host_data.h"

#include "model/host_data.h"
#include "wire/host_data.h"

namespace ficon::emulator {

Answer handle_get_host_data(const Request& request, Switch& model) {
  const auto* asked = whole_record<wire::GetHostDataRequest>(request.payload);
  if (asked == nullptr) return Malformed{"reading host data takes 4 bytes"};
  const std::uint32_t number = asked->vsan.get();
  if (const FcdStatus status = model.check_vsan(number); status != FcdStatus::kDone) return status;
  const std::vector<std::uint8_t>& data = model.find_vsan(number)->host_data;
  wire::GetHostDataReply head{};
  head.vsan.set(number);
  head.length.set(static_cast<std::uint32_t>(data.size()));
  Bytes reply = to_bytes(head);
  reply.insert(reply.end(), data.begin(), data.end());
  return reply;
}

Bytes get_host_data_status_reply(ByteView request, FcdStatus status) {
  wire::GetHostDataReply reply{};
  reply.status.set(static_cast<Status>(status));
  reply.vsan = leading_record<wire::GetHostDataRequest>(request).vsan;
  return to_bytes(reply);
}

Answer handle_set_host_data(const Request& request, Switch& model) {
  constexpr std::size_t kHead = sizeof(wire::SetHostDataRequest);
  if (request.payload.size() < kHead) return Malformed{"writing host data takes 12 bytes and more"};
  const auto asked = leading_record<wire::SetHostDataRequest>(request.payload);
  const ByteView bytes = request.payload.subspan(kHead);
  if (asked.length.get() != bytes.size()) return Malformed{"host data of another length"};
  return write_host_data(model, asked.vsan.get(), {request.connection, Requester::kUnstated},
                         asked.offset.get(), bytes);
}

Bytes set_host_data_status_reply(ByteView request, FcdStatus status) {
  wire::SetHostDataReply reply{};
  reply.status.set(static_cast<Status>(status));
  reply.vsan = leading_record<wire::SetHostDataRequest>(request).vsan;
  return to_bytes(reply);
}

}  // namespace ficon::emulator
