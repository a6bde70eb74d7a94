#include "unit/vsan_setting_table.h"

namespace ficon::test {
namespace {

constexpr std::size_t kOperationAt = 8 + 116;
constexpr std::size_t kRecordAt = 140;
constexpr std::size_t kClockAlertAt = 11;

constexpr std::uint8_t kValue = 0xa5;

template <auto Function, class... Own>
auto nonblock(Own... own) {
  return [=](mts_handle_t handle, mts_msg_ref_t* msg) {
    return Function(kSettingRequester, handle, "VSH", "UNKNOWN", kSettingWait, own..., msg);
  };
}

template <auto Function, class... Own>
auto blocking(Own... own) {
  return [=](mts_handle_t handle) {
    return Function(kSettingRequester, handle, "VSH", "UNKNOWN", kSettingWait, own...);
  };
}

template <auto Nonblock, auto Blocking>
VsanSetting byte_setting(const char* name, std::uint32_t operation, std::size_t offset) {
  return {name,
          operation,
          {{offset, {kValue}}},
          nonblock<Nonblock>(kSettingVsan, kValue),
          blocking<Blocking>(kSettingVsan, kValue)};
}

template <auto Blocking>
VsanSetting blocking_byte_setting(const char* name, std::uint32_t operation, std::size_t offset) {
  return {name, operation, {{offset, {kValue}}}, {}, blocking<Blocking>(kSettingVsan, kValue)};
}

const std::uint8_t kModes[6] = {0xa1, 0xa2, 0xa3, 0xa4, 0xa5, 0xa6};

}  // namespace

Golden VsanSetting::request() const {
  Golden request = golden("vsan_setting.hex")
                       .with(kOperationAt, be32(operation), "operation")
                       .with(kRecordAt + kClockAlertAt, {0}, "clock alert mode");
  for (const Field& field : fields) {
    request = request.with(kRecordAt + field.offset, field.bytes, name);
  }
  return request;
}

const std::vector<VsanSetting>& vsan_settings() {
  static const std::vector<VsanSetting> rows = {
      {"all modes",
       1,
       {{9, {0xa1}}, {10, {0xa2}}, {11, {0xa3}}, {12, {0xa4}}, {13, {0xa5}}, {14, {0xa6}}},
       nonblock<ficon_cmi_set_mode_nonblock>(kSettingVsan, kModes),
       blocking<ficon_cmi_set_mode>(kSettingVsan, kModes)},
      byte_setting<ficon_cmi_set_prohibit_host_control_nonblock,
                   ficon_cmi_set_prohibit_host_control>("prohibit host control", 2, 10),
      byte_setting<ficon_cmi_set_host_control_switch_offline_nonblock,
                   ficon_cmi_set_host_control_switch_offline>("host control switch offline", 3, 9),
      byte_setting<ficon_cmi_clock_alert_mode_nonblock, ficon_cmi_clock_alert_mode>(
          "clock alert mode", 4, 11),
      byte_setting<ficon_cmi_user_alert_mode_nonblock, ficon_cmi_user_alert_mode>("user alert mode",
                                                                                  5, 12),
      byte_setting<ficon_cmi_prohibit_snmp_nonblock, ficon_cmi_prohibit_snmp>("prohibit SNMP", 6,
                                                                              13),
      byte_setting<ficon_cmi_auto_save_nonblock, ficon_cmi_auto_save_config>("automatic saving", 7,
                                                                             14),
      {"increment the key counter",
       8,
       {},
       nonblock<ficon_cmi_inc_key_counter_nonblock>(kSettingVsan),
       blocking<ficon_cmi_inc_key_counter>(kSettingVsan)},
      {"test and increment the key counter",  // the counter comes before the VSAN
       9,
       {{16, {0x55, 0x66, 0x77, 0x88}}},
       nonblock<ficon_cmi_test_inc_key_counter_nonblock>(0x55667788U, kSettingVsan),
       blocking<ficon_cmi_test_inc_key_counter>(0x55667788U, kSettingVsan)},
      {"code page",
       10,
       {{20, {0x55, 0x66, 0x77, 0x88}}},
       {},
       blocking<ficon_cmi_set_codepage>(kSettingVsan, 0x55667788U)},
      byte_setting<ficon_cmi_switch_offline_nonblock, ficon_cmi_switch_offline>("switch offline",
                                                                                11, 8),
      {"time-stamp clock",  // host order, both words
       12,
       {{1320, host32(0x55667788)}, {1324, host32(0x99aabbcc)}},
       nonblock<ficon_cmi_set_tstmp_clock_nonblock>(kSettingVsan, 0x55667788U, 0x99aabbccU),
       blocking<ficon_cmi_set_tstmp_clock>(kSettingVsan, 0x55667788U, 0x99aabbccU)},
      blocking_byte_setting<ficon_cmi_set_fcid_last_byte>("last byte of the FCID", 13, 1328),
      blocking_byte_setting<ficon_cmi_set_host_clock_set_allowed>("host may set the clock", 14,
                                                                  1329),
      {"clear the time-stamp clock",
       15,
       {},
       {},
       blocking<ficon_cmi_clear_tstmp_clock>(kSettingVsan)},
  };
  return rows;
}

}  // namespace ficon::test
