/** A VSAN setting with each of its platform calls failing in turn. */
#include <doctest/doctest.h>

#include "double/fault_sweep.h"

using namespace ficon::test;

TEST_CASE("faults: a VSAN setting under the lock") {
  fault_sweep(
      [](ScriptedPlatform& platform) {
        return ficon_cmi_clock_alert_mode(0x01020304, platform.handle(), "VSH", "UNKNOWN", 5,
                                          0x11223344, 1);
      },
      [](ScriptedPlatform& platform) {
        platform.ficon_enabled_on({0x11223344}).lock_granted();
        platform.expect_send(7865, golden("vsan_setting.hex")).reply(tlvs().header_status(0));
      },
      {
          {"ficon_send_get_enabled_vsans", 0},  // not known to be enabled: goes unlocked
          {"mts_recv", 0},
          {"ficon_parse_get_enabled_vsans", 0},
          {"mts_send", 0x40850012},  // the lock
          {"mts_recv", 0x40850012},
          {"mts_payload_get", 0x40850012},
          {"tlv_aligned_array_add_tlv", kInjected},
          {"tlv_aligned_array_add_tlv", kInjected},
          {"mts_send", 0xffffffff},
          {"mts_recv", 0x40850000},
          {"mts_payload_get", 0x40850003},
          {"tlv_aligned_array_get_num_tlvs", 0x40850003},
          {"tlv_aligned_array_get_next_tlv", kInjected},
          {"mts_send", 0},  // the free: its result does not matter
          {"mts_recv", 0},
          {"mts_payload_get", 0},
      });
}
