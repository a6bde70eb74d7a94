#include "handlers/box_status.h"

#include <string_view>

#include "wire/box_status.h"
#include "wire/cmi_header.h"
#include "wire/saved_config.h"

namespace ficon::emulator {
namespace {

void add_entry(Bytes& reply, std::string_view label, std::size_t value) {
  wire::BoxCount entry{};
  entry.value.set(static_cast<std::uint32_t>(value));
  label.copy(reinterpret_cast<char*>(entry.label.raw), sizeof entry.label.raw - 1);
  append(reply, entry);
}

}  // namespace

Answer handle_box_status(const Request& request, Switch& model) {
  if (request.payload.size() != sizeof(wire::PlatformHeader)) {
    return Malformed{"box status is not a header of 112 bytes"};
  }
  wire::BoxStatusHead head{};
  head.group_count = 2;
  Bytes reply = to_bytes(head);
  add_entry(reply, "ficon feature", model.feature_enabled() ? 1 : 0);
  add_entry(reply, "ficon vsans", model.vsans().size());
  add_entry(reply, "locks held", model.sessions.locks.count());
  add_entry(reply, "history entries", model.history.entries().size());
  add_entry(reply, "history position", model.history.last_position());
  const SwitchLimits& limits = model.limits();
  add_entry(reply, "oldest history position", model.history.first_position());
  add_entry(reply, "history capacity", model.history.capacity());
  add_entry(reply, "maximum ports", limits.max_ports);
  add_entry(reply, "get-next type", static_cast<std::size_t>(limits.get_next_type));
  add_entry(reply, "default MIH seconds",
            wire::decode_mih_timeout(limits.default_mih_timeout.encoded));
  return reply;
}

Bytes box_status_reply(ByteView, FcdStatus status) {
  wire::BoxStatusHead head{};
  head.status.set(static_cast<Status>(status));
  return to_bytes(head);
}

}  // namespace ficon::emulator
