#include "model/lock.h"

namespace ficon::emulator {
namespace {

bool same(const Asker& a, const Asker& b) {
  return a.connection == b.connection && a.requester == b.requester;
}

}  // namespace

FcdStatus Locks::get(std::uint16_t vsan, const Asker& asker, std::int64_t now) {
  const auto [place, taken] = holders_.try_emplace(vsan, Holder{asker, now});
  if (taken) return FcdStatus::kDone;
  return same(place->second.owner, asker) ? FcdStatus::kLockAlreadyHeld : FcdStatus::kLockBusy;
}

FcdStatus Locks::free(std::uint16_t vsan, const Asker& asker) {
  const auto place = holders_.find(vsan);
  if (place == holders_.end()) return FcdStatus::kDone;
  if (!same(place->second.owner, asker)) return FcdStatus::kNotLockOwner;
  holders_.erase(place);
  return FcdStatus::kDone;
}

const Locks::Holder* Locks::holder(std::uint16_t vsan) const {
  const auto place = holders_.find(vsan);
  return place == holders_.end() ? nullptr : &place->second;
}

bool Locks::held_against(std::uint16_t vsan, ConnectionId connection) const {
  const Holder* held = holder(vsan);
  return held != nullptr && held->owner.connection != connection;
}

void Locks::connection_closed(ConnectionId connection) {
  std::erase_if(holders_,
                [&](const auto& held) { return held.second.owner.connection == connection; });
}

}  // namespace ficon::emulator
