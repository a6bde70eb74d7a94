/** The lock functions with each of their platform calls failing in turn. */
#include <doctest/doctest.h>

#include "double/fault_sweep.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kVsan = 10;
constexpr std::uint32_t kFailed = 0xffffffff;
constexpr std::uint32_t kUnreachable = 0xfffffffe;
constexpr std::uint32_t kNotEnabled = 0x40850004;

void unlocked_script(ScriptedPlatform& platform) {
  platform.lock_granted().lock_may_stay();
}
void checked_script(ScriptedPlatform& platform) {
  platform.ficon_enabled_on({kVsan}).lock_granted().lock_may_stay();
}

/** A get alone keeps what it took: it is given back here, so that the lock is free in the end. */
std::uint32_t get(ScriptedPlatform& platform) {
  const std::int32_t result = ficon_get_fcd_lock(platform.handle(), kVsan, 1, 5);
  if (result == 0) ficon_free_fcd_lock(platform.handle(), kVsan, 1, 5);
  return static_cast<std::uint32_t>(result);
}
std::uint32_t free_lock(ScriptedPlatform& platform) {
  return static_cast<std::uint32_t>(ficon_free_fcd_lock(platform.handle(), kVsan, 1, 5));
}
std::uint32_t reset(ScriptedPlatform& platform) {
  return static_cast<std::uint32_t>(ficon_reset_fcd_lock(platform.handle(), kVsan, 1, 5));
}
std::uint32_t status(ScriptedPlatform& platform) {
  ficon_fcd_lock_rec_t record{};
  return static_cast<std::uint32_t>(
      ficon_get_fcd_lock_status(platform.handle(), kVsan, 1, 5, &record));
}

}  // namespace

TEST_CASE("faults: get") {
  fault_sweep(get, unlocked_script,
              {{"mts_send", kFailed},
               {"mts_recv", kFailed},
               {"mts_payload_get", kFailed},
               {"mts_send", 0},  // the free
               {"mts_recv", 0},
               {"mts_payload_get", 0}});
  fault_sweep(get, unlocked_script,
              {{"mts_send", kUnreachable},
               {"mts_recv", kFailed},
               {"mts_payload_get", kFailed},
               {"mts_send", 0},
               {"mts_recv", 0},
               {"mts_payload_get", 0}},
              32);
}

TEST_CASE("faults: get of a lock that is busy at first") {
  fault_sweep(get,
              [](ScriptedPlatform& platform) {
                platform.lock_answers({0x40890029, 0}).lock_may_stay();
              },
              {{"mts_send", kFailed},
               {"mts_recv", kFailed},
               {"mts_payload_get", kFailed},
               {"mts_send", kFailed},
               {"mts_recv", kFailed},
               {"mts_payload_get", kFailed},
               {"mts_send", 0},
               {"mts_recv", 0},
               {"mts_payload_get", 0}});
}

TEST_CASE("faults: free") {
  fault_sweep(free_lock, unlocked_script,
              {{"mts_send", kFailed}, {"mts_recv", kFailed}, {"mts_payload_get", kFailed}});
  fault_sweep(free_lock, unlocked_script,
              {{"mts_send", 0}, {"mts_recv", kFailed}, {"mts_payload_get", kFailed}}, 32);
}

TEST_CASE("faults: reset") {
  fault_sweep(reset, checked_script,
              {{"ficon_send_get_enabled_vsans", kNotEnabled},
               {"mts_recv", kNotEnabled},
               {"ficon_parse_get_enabled_vsans", kNotEnabled},
               {"mts_send", kFailed},
               {"mts_recv", 0x40850000},
               {"mts_payload_get", 0x40850013}});
  fault_sweep(reset, checked_script,
              {{"ficon_send_get_enabled_vsans", kNotEnabled},
               {"mts_recv", kNotEnabled},
               {"ficon_parse_get_enabled_vsans", kNotEnabled},
               {"mts_send", 0},
               {"mts_recv", 0x40850000},
               {"mts_payload_get", 0x40850013}},
              32);
}

TEST_CASE("faults: status, the same for a daemon that is gone") {
  for (const std::int32_t error : {kInjectedError, 32, 62}) {
    fault_sweep(status, checked_script,
                {{"ficon_send_get_enabled_vsans", kNotEnabled},
                 {"mts_recv", kNotEnabled},
                 {"ficon_parse_get_enabled_vsans", kNotEnabled},
                 {"mts_send", kFailed},
                 {"mts_recv", kFailed},
                 {"mts_payload_get", kFailed}},
                error);
  }
}
