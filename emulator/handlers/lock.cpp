#include "handlers/lock.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "wire/fcd_lock.h"

namespace ficon::emulator {
namespace {

void show_holder(wire::FcdLockRecord& record, const Switch& model, VsanNumber vsan) {
  wire::LockHolder shown{};
  if (const Locks::Holder* holder = model.sessions.locks.holder(vsan)) {
    constexpr std::int64_t kMost = std::numeric_limits<std::uint32_t>::max();
    shown.requester = static_cast<std::uint8_t>(holder->owner.requester);
    shown.age.set(
        static_cast<std::uint32_t>(std::clamp<std::int64_t>(model.age_of(*holder), 0, kMost)));
  }
  record.spare = std::bit_cast<decltype(record.spare)>(shown);
}

}  // namespace

Answer handle_lock(const Request& request, Switch& model) {
  const auto* asked = whole_record<wire::FcdLockRecord>(request.payload);
  if (asked == nullptr) return Malformed{"lock record is not 18 bytes"};
  const std::uint32_t vsan = asked->vsan.get();
  const Asker asker = request.asker(asked->requester.get());
  switch (static_cast<wire::LockOperation>(asked->operation)) {
    case wire::LockOperation::kFree:
      return model.free_lock(vsan, asker);
    case wire::LockOperation::kGet:
      return model.get_lock(vsan, asker);
    case wire::LockOperation::kReset:
      return model.reset_lock(vsan, asker);
    case wire::LockOperation::kStatus:
      break;
    default:
      return FcdStatus::kUnknownOperation;
  }
  if (const FcdStatus status = model.check_vsan(vsan); status != FcdStatus::kDone) return status;
  wire::FcdLockRecord reply = *asked;
  reply.status.set(0);
  show_holder(reply, model, static_cast<VsanNumber>(vsan));
  return to_bytes(reply);
}

Bytes lock_status_reply(ByteView request, FcdStatus status) {
  auto reply = leading_record<wire::FcdLockRecord>(request);
  reply.status.set(static_cast<Status>(status));
  return to_bytes(reply);
}

}  // namespace ficon::emulator
