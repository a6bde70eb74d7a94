/** The locked pattern: changes are made under fcd's lock where FICON is enabled on the VSAN. */
#pragma once

#include "exchange/allocation.h"
#include "exchange/caller.h"
#include "wire/status.h"

namespace ficon {

/** Whether FICON is enabled on a VSAN, as far as could be found out. */
enum class FiconCheck : std::int8_t { kEnabled, kNotEnabledOrError, kFcdUnreachable, kNoReply };

/** The list of FICON-enabled VSANs as the base library hands it out, freed at the end. */
class EnabledVsans {
 public:
  explicit EnabledVsans(std::uint32_t* words) : words_(words) {}

  Status status() const { return words_[0]; }
  std::int32_t count() const { return static_cast<std::int32_t>(words_[1]); }
  std::uint32_t vsan(std::int32_t i) const { return words_[static_cast<std::uint32_t>(i) + 2]; }

 private:
  Malloced<std::uint32_t> words_;
};

FiconCheck check_ficon_enabled(mts_handle_t handle, std::uint32_t vsan, std::uint32_t wait);

/** Holds the lock for one change and frees it on every way out. */
class FcdLock {
 public:
  /** Takes the lock if FICON is enabled; otherwise the change goes unlocked and fcd judges it. */
  FcdLock(const Caller& caller, std::uint32_t vsan) : caller_(caller), vsan_(vsan) {
    if (check_ficon_enabled(caller.handle, vsan, caller.wait) != FiconCheck::kEnabled) return;
    refused_ = ficon_get_fcd_lock(caller.handle, vsan, caller.requester, caller.wait) == -1;
    held_ = !refused_;  // any other result counts as held, an unreachable fcd too
  }
  FcdLock(const FcdLock&) = delete;
  FcdLock& operator=(const FcdLock&) = delete;
  ~FcdLock() { free(); }

  bool refused() const { return refused_; }

  /** Frees it now, for what has to follow without the lock. */
  void free() {
    if (held_) ficon_free_fcd_lock(caller_.handle, vsan_, caller_.requester, caller_.wait);
    held_ = false;
  }

  /** Leaves it taken, for the way out that does not free it. */
  void keep() { held_ = false; }

 private:
  const Caller& caller_;
  std::uint32_t vsan_;
  bool held_ = false;
  bool refused_ = false;
};

/** Runs `body()` under the lock; its status is the result. */
template <class Body>
Status locked(const Caller& caller, std::uint32_t vsan, Body body) {
  const FcdLock lock(caller, vsan);
  return lock.refused() ? status::kLockUnavailable : body();
}

}  // namespace ficon
