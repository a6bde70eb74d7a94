#include "handlers/ficon_state.h"

#include "wire/ficon_state.h"

namespace ficon::emulator {

Answer handle_ficon_state(const Request& request, Switch& model) {
  const auto* asked = whole_record<wire::FiconStateRequest>(request.payload);
  if (asked == nullptr) return Malformed{"FICON state record is not 128 bytes"};
  const std::uint32_t vsan = asked->vsan.get();
  const Asker asker = request.asker(asked->requester.get());
  return asked->state.get() != 0 ? model.enable_ficon(vsan, asker)
                                 : model.disable_ficon(vsan, asker);
}

Bytes ficon_state_status_reply(ByteView request, FcdStatus status) {
  auto reply = leading_record<wire::FiconStateRequest>(request);
  reply.status.set(static_cast<Status>(status));
  return to_bytes(reply);
}

}  // namespace ficon::emulator
