#include <doctest/doctest.h>

#include "model/switch.h"

using namespace ficon;
using namespace ficon::emulator;

namespace {

constexpr Asker kOperator{101, Requester::kOperator};
constexpr Asker kAgent{101, Requester::kAgent};
constexpr Asker kHost{101, Requester::kHost};

struct WithVsan {
  WithVsan() {
    model.enable_feature();
    REQUIRE(model.enable_ficon(20, kOperator) == FcdStatus::kDone);
  }
  FcdStatus set(const Asker& asker, const ModeField& mode, std::uint8_t value) {
    const ModeChange change{&mode, value};
    return model.set_modes(20, asker, {&change, 1});
  }
  const Vsan& vsan() const { return *model.find_vsan(20); }

  Switch model;
};

}  // namespace

TEST_CASE("FICON wants the feature first") {
  Switch model;
  CHECK(model.enable_ficon(20, kOperator) == FcdStatus::kFeatureOff);
  CHECK(model.enable_feature());
  CHECK_FALSE(model.enable_feature());
  CHECK(model.enable_ficon(0, kOperator) == FcdStatus::kVsanOutOfRange);
  CHECK(model.enable_ficon(4094, kOperator) == FcdStatus::kVsanOutOfRange);
  CHECK(model.enable_ficon(20, {1, Requester::kUnknown}) == FcdStatus::kUnknownRequester);
  CHECK(model.enable_ficon(1, kOperator) == FcdStatus::kDone);
  CHECK(model.enable_ficon(4093, kOperator) == FcdStatus::kDone);
  CHECK(model.vsans().size() == 2);
}

TEST_CASE_FIXTURE(WithVsan, "Disabling discards the VSAN; enabling begins anew") {
  CHECK(model.set_codepage(20, kOperator, 500) == FcdStatus::kDone);
  CHECK(model.disable_ficon(20, kOperator) == FcdStatus::kDone);
  CHECK(model.find_vsan(20) == nullptr);
  CHECK(model.disable_ficon(20, kOperator) == FcdStatus::kDone);
  CHECK(model.set_codepage(20, kOperator, 500) == FcdStatus::kVsanWithoutFicon);
  CHECK(model.enable_ficon(20, kOperator) == FcdStatus::kDone);
  CHECK(vsan().codepage == 37);
  CHECK(vsan().key_counter == 0);
}

TEST_CASE_FIXTURE(WithVsan, "A mode takes 0 and 1, and several are set all or none") {
  const ModeChange changes[] = {{&kUserAlertMode, 1}, {&kAutoSave, 2}};
  CHECK(model.set_modes(20, kOperator, changes) == FcdStatus::kBadAutoSave);
  CHECK_FALSE(vsan().modes.user_alert_mode);
  CHECK(vsan().key_counter == 0);
  const ModeChange good[] = {{&kUserAlertMode, 1}, {&kAutoSave, 1}};
  CHECK(model.set_modes(20, kOperator, good) == FcdStatus::kDone);
  CHECK(vsan().modes.user_alert_mode);
  CHECK(vsan().modes.auto_save);
  CHECK(vsan().key_counter == 1);
  CHECK(model.history.entries().back().detail == "user alert mode on, automatic saving on");
}

TEST_CASE_FIXTURE(WithVsan, "Setting what is set changes neither counter nor history") {
  const auto position = model.history.last_position();
  CHECK(set(kOperator, kUserAlertMode, 0) == FcdStatus::kDone);
  CHECK(model.set_codepage(20, kOperator, 37) == FcdStatus::kDone);
  CHECK(model.set_clock(20, kOperator, {}) == FcdStatus::kDone);
  CHECK(vsan().key_counter == 0);
  CHECK(model.history.last_position() == position);
}

TEST_CASE_FIXTURE(WithVsan, "The key counter tests, counts and wraps") {
  CHECK(model.increment_key_counter(20, kHost) == FcdStatus::kDone);
  CHECK(model.test_and_increment_key_counter(20, kHost, 0) == FcdStatus::kKeyCounterStale);
  CHECK(model.test_and_increment_key_counter(20, kHost, 1) == FcdStatus::kDone);
  CHECK(vsan().key_counter == 2);
  model.restore_vsan(20).key_counter = 0xffffffff;
  CHECK(model.test_and_increment_key_counter(20, kHost, 0xffffffff) == FcdStatus::kDone);
  CHECK(vsan().key_counter == 0);
}

TEST_CASE_FIXTURE(WithVsan, "Prohibitions concern the requesters that they name") {
  CHECK(set(kOperator, kProhibitHostControl, 1) == FcdStatus::kDone);
  CHECK(model.set_codepage(20, kHost, 500) == FcdStatus::kHostControlProhibited);
  CHECK(model.increment_key_counter(20, kHost) == FcdStatus::kHostControlProhibited);
  CHECK(model.disable_ficon(20, kHost) == FcdStatus::kHostControlProhibited);
  CHECK(model.set_codepage(20, kAgent, 500) == FcdStatus::kDone);
  CHECK(set(kOperator, kProhibitSnmp, 1) == FcdStatus::kDone);
  CHECK(model.set_codepage(20, kAgent, 273) == FcdStatus::kSnmpProhibited);
  CHECK(model.set_codepage(20, kOperator, 273) == FcdStatus::kDone);
  CHECK(model.set_codepage(20, {1, Requester::kUnknown}, 37) == FcdStatus::kUnknownRequester);
}

TEST_CASE_FIXTURE(WithVsan, "The host sets clock and offline only where it may") {
  CHECK(model.set_clock(20, kHost, {0x11223344, 0x55667788}) == FcdStatus::kDone);
  CHECK(vsan().clock.first == 0x11223344);
  CHECK(vsan().clock.second == 0x55667788);
  CHECK(set(kOperator, kHostClockSetAllowed, 0) == FcdStatus::kDone);
  CHECK(model.set_clock(20, kHost, {}) == FcdStatus::kHostClockProhibited);
  CHECK(model.set_clock(20, kOperator, {}) == FcdStatus::kDone);
  CHECK(set(kHost, kSwitchOffline, 1) == FcdStatus::kDone);
  CHECK(vsan().state() == VsanState::kOffline);
  CHECK(set(kOperator, kHostControlSwitchOffline, 0) == FcdStatus::kDone);
  CHECK(set(kHost, kSwitchOffline, 0) == FcdStatus::kHostOfflineProhibited);
}

TEST_CASE_FIXTURE(WithVsan, "A code page is one of those on offer") {
  for (const std::uint32_t page : {1u, 0u, 38u, 1139u, 1150u}) {
    CHECK(model.set_codepage(20, kOperator, page) == FcdStatus::kCodepageNotOffered);
  }
  for (const std::uint32_t page : kCodepages) {
    CHECK(model.set_codepage(20, kOperator, page) == FcdStatus::kDone);
  }
}

TEST_CASE_FIXTURE(WithVsan, "The walk goes in ascending order and ends") {
  CHECK(model.enable_ficon(4093, kOperator) == FcdStatus::kDone);
  CHECK(model.next_vsan(0)->number == 20);
  CHECK(model.next_vsan(20)->number == 4093);
  CHECK(model.next_vsan(4093) == nullptr);
  CHECK(model.next_vsan(0xffffffff) == nullptr);
}
