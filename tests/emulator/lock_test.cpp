#include "model/lock.h"

#include <doctest/doctest.h>

#include "model/switch.h"

using namespace ficon;
using namespace ficon::emulator;

namespace {
constexpr Asker kAlice{101, Requester::kOperator};
constexpr Asker kBob{102, Requester::kOperator};
}  // namespace

TEST_CASE("A lock belongs to a requester code on a connection") {
  Locks locks;
  CHECK(locks.get(7, kAlice, 1000) == FcdStatus::kDone);
  CHECK(locks.get(7, kAlice, 1001) == FcdStatus::kLockAlreadyHeld);
  CHECK(locks.get(7, kBob, 1001) == FcdStatus::kLockBusy);
  CHECK(locks.get(7, {101, Requester::kHost}, 1001) == FcdStatus::kLockBusy);
  CHECK(locks.get(8, kBob, 1001) == FcdStatus::kDone);
  CHECK(locks.holder(7)->since == 1000);
}

TEST_CASE("Only its owner frees a lock; freeing a free one is done already") {
  Locks locks;
  CHECK(locks.free(7, kAlice) == FcdStatus::kDone);
  CHECK(locks.get(7, kAlice, 1) == FcdStatus::kDone);
  CHECK(locks.free(7, kBob) == FcdStatus::kNotLockOwner);
  CHECK(locks.holder(7) != nullptr);
  CHECK(locks.free(7, kAlice) == FcdStatus::kDone);
  CHECK(locks.get(7, kBob, 2) == FcdStatus::kDone);
}

TEST_CASE("The locks of a connection end with it, and no others") {
  Locks locks;
  CHECK(locks.get(7, kAlice, 1) == FcdStatus::kDone);
  CHECK(locks.get(9, kAlice, 1) == FcdStatus::kDone);
  CHECK(locks.get(8, kBob, 1) == FcdStatus::kDone);
  locks.connection_closed(101);
  CHECK(locks.count() == 1);
  CHECK(locks.holder(8) != nullptr);
}

TEST_CASE("A held lock keeps changes of other connections out; a reset lets them in") {
  Switch model;
  model.enable_feature();
  CHECK(model.enable_ficon(7, kAlice) == FcdStatus::kDone);
  CHECK(model.get_lock(7, kAlice) == FcdStatus::kDone);
  CHECK(model.set_codepage(7, kBob, 500) == FcdStatus::kLockBusy);
  CHECK(model.disable_ficon(7, kBob) == FcdStatus::kLockBusy);
  CHECK(model.set_codepage(7, kAlice, 500) == FcdStatus::kDone);
  CHECK(model.reset_lock(7, kBob) == FcdStatus::kDone);
  CHECK(model.history.entries().back().change == Change::kLockReset);
  CHECK(model.set_codepage(7, kBob, 273) == FcdStatus::kDone);
}

TEST_CASE("The lock wants a FICON VSAN and a known requester") {
  Switch model;
  CHECK(model.get_lock(0, kAlice) == FcdStatus::kVsanOutOfRange);
  CHECK(model.get_lock(4094, kAlice) == FcdStatus::kVsanOutOfRange);
  CHECK(model.get_lock(7, kAlice) == FcdStatus::kVsanWithoutFicon);
  model.enable_feature();
  CHECK(model.enable_ficon(7, kAlice) == FcdStatus::kDone);
  CHECK(model.get_lock(7, {101, Requester::kUnknown}) == FcdStatus::kUnknownRequester);
}
