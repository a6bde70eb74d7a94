/** The settings of a VSAN: one request, one record, a field and an operation for each setting. */
#include <platform/ficon_base.h>

#include "core/fcd_lock.h"
#include "exchange/console.h"
#include "exchange/exchange.h"
#include "exchange/header.h"
#include "exchange/tlv_reader.h"
#include "exchange/tlv_writer.h"
#include "wire/cmi_header.h"
#include "wire/vsan_config.h"

namespace ficon {
namespace {

using wire::VsanConfig;
using wire::VsanOperation;

/** One change: the operation and the record with its own fields filled. */
struct VsanChange {
  VsanOperation operation;
  VsanConfig record;
};

/** A setting that is one byte of the record. */
struct ByteSetting {
  VsanOperation operation;
  std::uint8_t VsanConfig::*field;

  VsanChange to(std::uint8_t value) const {
    VsanChange change{operation, {}};
    change.record.*field = value;
    return change;
  }
};

constexpr ByteSetting kProhibitHostControl{VsanOperation::kProhibitHostControl,
                                           &VsanConfig::prohibit_host_control};
constexpr ByteSetting kHostControlSwitchOffline{VsanOperation::kHostControlSwitchOffline,
                                                &VsanConfig::host_control_switch_offline};
constexpr ByteSetting kClockAlertMode{VsanOperation::kClockAlertMode,
                                      &VsanConfig::clock_alert_mode};
constexpr ByteSetting kUserAlertMode{VsanOperation::kUserAlertMode, &VsanConfig::user_alert_mode};
constexpr ByteSetting kProhibitSnmp{VsanOperation::kProhibitSnmp, &VsanConfig::prohibit_snmp};
constexpr ByteSetting kAutoSave{VsanOperation::kAutoSave, &VsanConfig::auto_save};
constexpr ByteSetting kSwitchOffline{VsanOperation::kSwitchOffline, &VsanConfig::switch_offline};
constexpr ByteSetting kFcidLastByte{VsanOperation::kFcidLastByte, &VsanConfig::fcid_last_byte};
constexpr ByteSetting kHostClockSetAllowed{VsanOperation::kHostClockSetAllowed,
                                           &VsanConfig::host_clock_set_allowed};

VsanChange no_value(VsanOperation operation) {
  return {operation, {}};
}

/** The six modes at once, in the record's order. */
VsanChange all_modes(const std::uint8_t* modes) {
  VsanChange change = no_value(VsanOperation::kMode);
  change.record.host_control_switch_offline = modes[0];
  change.record.prohibit_host_control = modes[1];
  change.record.clock_alert_mode = modes[2];
  change.record.user_alert_mode = modes[3];
  change.record.prohibit_snmp = modes[4];
  change.record.auto_save = modes[5];
  return change;
}

VsanChange key_counter_test(std::uint32_t key_counter) {
  VsanChange change = no_value(VsanOperation::kTestAndIncrementKeyCounter);
  change.record.key_counter.set(key_counter);
  return change;
}

VsanChange codepage_change(std::uint32_t codepage) {
  VsanChange change = no_value(VsanOperation::kCodepage);
  change.record.codepage.set(codepage);
  return change;
}

VsanChange timestamp_clock(std::uint32_t first_word, std::uint32_t second_word) {
  VsanChange change = no_value(VsanOperation::kSetTimestampClock);
  change.record.timestamp_clock1.set(first_word);
  change.record.timestamp_clock2.set(second_word);
  return change;
}

Status send_change(const Caller& caller, std::uint32_t vsan, VsanChange&& change,
                   mts_msg_ref_t* message) {
  auto header =
      request_header<wire::CmiHeader>(caller, wire::MessageType::kSet, wire::Subtype::kVsan);
  header.requester.set(caller.requester);
  header.operation.set(static_cast<std::uint32_t>(change.operation));
  header.vsan.set(vsan);
  change.record.vsan.set(vsan);
  return RequestTlvs()
      .add(wire::TlvType::kHeader, header)
      .add(wire::TlvType::kVsanConfig, change.record)
      .send(caller, wire::Opcode::kVsanConfig, message);
}

Status change_vsan(const Caller& caller, std::uint32_t vsan, VsanChange&& change) {
  return locked(caller, vsan, [&] {
    return exchange(
        caller,
        [&](mts_msg_ref_t* request) {
          return send_change(caller, vsan, static_cast<VsanChange&&>(change), request);
        },
        [](Status failure) {
          // names and line that exist nowhere else: what operators' scripts look for
          console("%s(%d):ficon_cmi_set_vsan_info_nonblock failed:%d\n", "ficon_cmi_set_vsan_info",
                  999, static_cast<int>(failure));
        },
        ficon_cmi_parse_vsan_cfg);
  });
}

}  // namespace
}  // namespace ficon

using namespace ficon;

uint32_t ficon_cmi_set_mode_nonblock(uint32_t requester, mts_handle_t handle, const char* word_a,
                                     const char* word_b, uint32_t wait, uint32_t vsan,
                                     const uint8_t* modes, mts_msg_ref_t* msg) {
  return send_change({requester, handle, word_a, word_b, wait}, vsan, all_modes(modes), msg);
}

uint32_t ficon_cmi_set_mode(uint32_t requester, mts_handle_t handle, const char* word_a,
                            const char* word_b, uint32_t wait, uint32_t vsan,
                            const uint8_t* modes) {
  return change_vsan({requester, handle, word_a, word_b, wait}, vsan, all_modes(modes));
}

uint32_t ficon_cmi_set_prohibit_host_control_nonblock(uint32_t requester, mts_handle_t handle,
                                                      const char* word_a, const char* word_b,
                                                      uint32_t wait, uint32_t vsan, uint8_t value,
                                                      mts_msg_ref_t* msg) {
  return send_change({requester, handle, word_a, word_b, wait}, vsan,
                     kProhibitHostControl.to(value), msg);
}

uint32_t ficon_cmi_set_prohibit_host_control(uint32_t requester, mts_handle_t handle,
                                             const char* word_a, const char* word_b, uint32_t wait,
                                             uint32_t vsan, uint8_t value) {
  return change_vsan({requester, handle, word_a, word_b, wait}, vsan,
                     kProhibitHostControl.to(value));
}

uint32_t ficon_cmi_set_host_control_switch_offline_nonblock(uint32_t requester, mts_handle_t handle,
                                                            const char* word_a, const char* word_b,
                                                            uint32_t wait, uint32_t vsan,
                                                            uint8_t value, mts_msg_ref_t* msg) {
  return send_change({requester, handle, word_a, word_b, wait}, vsan,
                     kHostControlSwitchOffline.to(value), msg);
}

uint32_t ficon_cmi_set_host_control_switch_offline(uint32_t requester, mts_handle_t handle,
                                                   const char* word_a, const char* word_b,
                                                   uint32_t wait, uint32_t vsan, uint8_t value) {
  return change_vsan({requester, handle, word_a, word_b, wait}, vsan,
                     kHostControlSwitchOffline.to(value));
}

uint32_t ficon_cmi_clock_alert_mode_nonblock(uint32_t requester, mts_handle_t handle,
                                             const char* word_a, const char* word_b, uint32_t wait,
                                             uint32_t vsan, uint8_t value, mts_msg_ref_t* msg) {
  return send_change({requester, handle, word_a, word_b, wait}, vsan, kClockAlertMode.to(value),
                     msg);
}

uint32_t ficon_cmi_clock_alert_mode(uint32_t requester, mts_handle_t handle, const char* word_a,
                                    const char* word_b, uint32_t wait, uint32_t vsan,
                                    uint8_t value) {
  return change_vsan({requester, handle, word_a, word_b, wait}, vsan, kClockAlertMode.to(value));
}

uint32_t ficon_cmi_user_alert_mode_nonblock(uint32_t requester, mts_handle_t handle,
                                            const char* word_a, const char* word_b, uint32_t wait,
                                            uint32_t vsan, uint8_t value, mts_msg_ref_t* msg) {
  return send_change({requester, handle, word_a, word_b, wait}, vsan, kUserAlertMode.to(value),
                     msg);
}

uint32_t ficon_cmi_user_alert_mode(uint32_t requester, mts_handle_t handle, const char* word_a,
                                   const char* word_b, uint32_t wait, uint32_t vsan,
                                   uint8_t value) {
  return change_vsan({requester, handle, word_a, word_b, wait}, vsan, kUserAlertMode.to(value));
}

uint32_t ficon_cmi_prohibit_snmp_nonblock(uint32_t requester, mts_handle_t handle,
                                          const char* word_a, const char* word_b, uint32_t wait,
                                          uint32_t vsan, uint8_t value, mts_msg_ref_t* msg) {
  return send_change({requester, handle, word_a, word_b, wait}, vsan, kProhibitSnmp.to(value), msg);
}

uint32_t ficon_cmi_prohibit_snmp(uint32_t requester, mts_handle_t handle, const char* word_a,
                                 const char* word_b, uint32_t wait, uint32_t vsan, uint8_t value) {
  return change_vsan({requester, handle, word_a, word_b, wait}, vsan, kProhibitSnmp.to(value));
}

uint32_t ficon_cmi_auto_save_nonblock(uint32_t requester, mts_handle_t handle, const char* word_a,
                                      const char* word_b, uint32_t wait, uint32_t vsan,
                                      uint8_t value, mts_msg_ref_t* msg) {
  return send_change({requester, handle, word_a, word_b, wait}, vsan, kAutoSave.to(value), msg);
}

uint32_t ficon_cmi_auto_save_config(uint32_t requester, mts_handle_t handle, const char* word_a,
                                    const char* word_b, uint32_t wait, uint32_t vsan,
                                    uint8_t value) {
  return change_vsan({requester, handle, word_a, word_b, wait}, vsan, kAutoSave.to(value));
}

uint32_t ficon_cmi_inc_key_counter_nonblock(uint32_t requester, mts_handle_t handle,
                                            const char* word_a, const char* word_b, uint32_t wait,
                                            uint32_t vsan, mts_msg_ref_t* msg) {
  return send_change({requester, handle, word_a, word_b, wait}, vsan,
                     no_value(VsanOperation::kIncrementKeyCounter), msg);
}

uint32_t ficon_cmi_inc_key_counter(uint32_t requester, mts_handle_t handle, const char* word_a,
                                   const char* word_b, uint32_t wait, uint32_t vsan) {
  return change_vsan({requester, handle, word_a, word_b, wait}, vsan,
                     no_value(VsanOperation::kIncrementKeyCounter));
}

// The key counter comes before the VSAN, unlike in the rest of the family: intended.

uint32_t ficon_cmi_test_inc_key_counter_nonblock(uint32_t requester, mts_handle_t handle,
                                                 const char* word_a, const char* word_b,
                                                 uint32_t wait, uint32_t key_counter, uint32_t vsan,
                                                 mts_msg_ref_t* msg) {
  return send_change({requester, handle, word_a, word_b, wait}, vsan, key_counter_test(key_counter),
                     msg);
}

uint32_t ficon_cmi_test_inc_key_counter(uint32_t requester, mts_handle_t handle, const char* word_a,
                                        const char* word_b, uint32_t wait, uint32_t key_counter,
                                        uint32_t vsan) {
  return change_vsan({requester, handle, word_a, word_b, wait}, vsan,
                     key_counter_test(key_counter));
}

uint32_t ficon_cmi_set_codepage(uint32_t requester, mts_handle_t handle, const char* word_a,
                                const char* word_b, uint32_t wait, uint32_t vsan,
                                uint32_t codepage) {
  return change_vsan({requester, handle, word_a, word_b, wait}, vsan, codepage_change(codepage));
}

uint32_t ficon_cmi_switch_offline_nonblock(uint32_t requester, mts_handle_t handle,
                                           const char* word_a, const char* word_b, uint32_t wait,
                                           uint32_t vsan, uint8_t value, mts_msg_ref_t* msg) {
  return send_change({requester, handle, word_a, word_b, wait}, vsan, kSwitchOffline.to(value),
                     msg);
}

uint32_t ficon_cmi_switch_offline(uint32_t requester, mts_handle_t handle, const char* word_a,
                                  const char* word_b, uint32_t wait, uint32_t vsan, uint8_t value) {
  return change_vsan({requester, handle, word_a, word_b, wait}, vsan, kSwitchOffline.to(value));
}

uint32_t ficon_cmi_set_tstmp_clock_nonblock(uint32_t requester, mts_handle_t handle,
                                            const char* word_a, const char* word_b, uint32_t wait,
                                            uint32_t vsan, uint32_t first_word,
                                            uint32_t second_word, mts_msg_ref_t* msg) {
  return send_change({requester, handle, word_a, word_b, wait}, vsan,
                     timestamp_clock(first_word, second_word), msg);
}

uint32_t ficon_cmi_set_tstmp_clock(uint32_t requester, mts_handle_t handle, const char* word_a,
                                   const char* word_b, uint32_t wait, uint32_t vsan,
                                   uint32_t first_word, uint32_t second_word) {
  return change_vsan({requester, handle, word_a, word_b, wait}, vsan,
                     timestamp_clock(first_word, second_word));
}

uint32_t ficon_cmi_set_fcid_last_byte(uint32_t requester, mts_handle_t handle, const char* word_a,
                                      const char* word_b, uint32_t wait, uint32_t vsan,
                                      uint8_t value) {
  return change_vsan({requester, handle, word_a, word_b, wait}, vsan, kFcidLastByte.to(value));
}

uint32_t ficon_cmi_set_host_clock_set_allowed(uint32_t requester, mts_handle_t handle,
                                              const char* word_a, const char* word_b, uint32_t wait,
                                              uint32_t vsan, uint8_t value) {
  return change_vsan({requester, handle, word_a, word_b, wait}, vsan,
                     kHostClockSetAllowed.to(value));
}

uint32_t ficon_cmi_clear_tstmp_clock(uint32_t requester, mts_handle_t handle, const char* word_a,
                                     const char* word_b, uint32_t wait, uint32_t vsan) {
  return change_vsan({requester, handle, word_a, word_b, wait}, vsan,
                     no_value(VsanOperation::kClearTimestampClock));
}

uint32_t ficon_cmi_parse_vsan_cfg(mts_msg_ref_t* reply) {
  TlvReader reader(mts_payload_get(reply));
  if (reader.empty()) {
    console(kNoTlvs);
    return status::kInvalidPayload;
  }
  Tlv tlv{};
  if (reader.find(wire::TlvType::kHeader, tlv)) return tlv.read<wire::CmiHeader>().status.get();
  return reader.status() != 0 ? reader.status() : status::kNoReply;
}
