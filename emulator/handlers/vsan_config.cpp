#include "handlers/vsan_config.h"

#include <array>
#include <bit>

#include "handlers/tlv_message.h"
#include "protocol/cmi_header.h"
#include "wire/vsan_config.h"

namespace ficon::emulator {
namespace {

using wire::VsanConfig;
using wire::VsanOperation;

struct ModeByte {
  const ModeField* mode;
  std::uint8_t VsanConfig::*byte;
};

constexpr ModeByte kModeBytes[] = {
    {&kHostControlSwitchOffline, &VsanConfig::host_control_switch_offline},
    {&kProhibitHostControl, &VsanConfig::prohibit_host_control},
    {&kClockAlertMode, &VsanConfig::clock_alert_mode},
    {&kUserAlertMode, &VsanConfig::user_alert_mode},
    {&kProhibitSnmp, &VsanConfig::prohibit_snmp},
    {&kAutoSave, &VsanConfig::auto_save},
    {&kSwitchOffline, &VsanConfig::switch_offline},
    {&kHostClockSetAllowed, &VsanConfig::host_clock_set_allowed},
};
/** The operation for all modes at once carries these, the first of the table. */
constexpr std::size_t kModesAtOnce = 6;

struct ModeOperation {
  VsanOperation operation;
  const ModeField* mode;
};
constexpr ModeOperation kModeOperations[] = {
    {VsanOperation::kProhibitHostControl, &kProhibitHostControl},
    {VsanOperation::kHostControlSwitchOffline, &kHostControlSwitchOffline},
    {VsanOperation::kClockAlertMode, &kClockAlertMode},
    {VsanOperation::kUserAlertMode, &kUserAlertMode},
    {VsanOperation::kProhibitSnmp, &kProhibitSnmp},
    {VsanOperation::kAutoSave, &kAutoSave},
    {VsanOperation::kSwitchOffline, &kSwitchOffline},
    {VsanOperation::kHostClockSetAllowed, &kHostClockSetAllowed},
};

FcdStatus set_all_modes(Switch& model, std::uint32_t vsan, const Asker& asker,
                        const VsanConfig& config) {
  std::array<ModeChange, kModesAtOnce> changes{};
  for (std::size_t i = 0; i < kModesAtOnce; ++i) {
    changes[i] = {kModeBytes[i].mode, config.*kModeBytes[i].byte};
  }
  return model.set_modes(vsan, asker, changes);
}

FcdStatus set_mode(Switch& model, std::uint32_t vsan, const Asker& asker, VsanOperation operation,
                   const VsanConfig& config) {
  for (const ModeOperation& known : kModeOperations) {
    if (known.operation != operation) continue;
    for (const ModeByte& place : kModeBytes) {
      if (place.mode != known.mode) continue;
      const ModeChange change{place.mode, config.*place.byte};
      return model.set_modes(vsan, asker, {&change, 1});
    }
  }
  return FcdStatus::kUnknownOperation;
}

FcdStatus apply(Switch& model, std::uint32_t vsan, const Asker& asker, VsanOperation operation,
                const VsanConfig& config) {
  switch (operation) {
    case VsanOperation::kMode:
      return set_all_modes(model, vsan, asker, config);
    case VsanOperation::kIncrementKeyCounter:
      return model.increment_key_counter(vsan, asker);
    case VsanOperation::kTestAndIncrementKeyCounter:
      return model.test_and_increment_key_counter(vsan, asker, config.key_counter.get());
    case VsanOperation::kCodepage:
      return model.set_codepage(vsan, asker, config.codepage.get());
    case VsanOperation::kSetTimestampClock:
      return model.set_clock(vsan, asker,
                             {config.timestamp_clock1.get(), config.timestamp_clock2.get()});
    case VsanOperation::kClearTimestampClock:
      return model.set_clock(vsan, asker, {});
    case VsanOperation::kFcidLastByte:
      return model.set_fcid_last_byte(vsan, asker, config.fcid_last_byte);
    default:
      return set_mode(model, vsan, asker, operation, config);
  }
}

VsanConfig config_of(const Vsan& vsan) {
  VsanConfig config{};
  config.vsan.set(vsan.number);
  config.state.set(static_cast<std::uint32_t>(vsan.state()));
  for (const ModeByte& place : kModeBytes) {
    config.*place.byte = vsan.modes.*place.mode->field ? 1 : 0;
  }
  config.key_counter.set(vsan.key_counter);
  // Readers take the four bytes as they stand, so here the code page is in host order although
  // its setter sends it big-endian: intended.
  config.codepage = std::bit_cast<wire::be32>(vsan.codepage);
  config.timestamp_clock1.set(vsan.clock.first);
  config.timestamp_clock2.set(vsan.clock.second);
  config.fcid_last_byte = vsan.fcid_last_byte;
  return config;
}

}  // namespace

Answer handle_vsan_config(const Request& request, Switch& model) {
  const auto message = TlvMessage::parse(request.payload);
  if (!message) return Malformed{"VSAN configuration is no TLV array"};
  const auto* header = message->record<wire::CmiHeader>(wire::TlvType::kHeader);
  const auto* config = message->record<VsanConfig>(wire::TlvType::kVsanConfig);
  if (header == nullptr) return Malformed{"VSAN configuration without its header TLV"};
  if (config == nullptr) return Malformed{"VSAN configuration without its record TLV"};
  const std::uint32_t vsan = header->vsan.get();
  if (config->vsan.get() != vsan) return Malformed{"header and record name different VSANs"};
  return apply(model, vsan, request.asker(header->requester.get()),
               VsanOperation{header->operation.get()}, *config);
}

Answer handle_vsan_info(const Request& request, Switch& model) {
  const auto message = TlvMessage::parse(request.payload);
  if (!message) return Malformed{"VSAN information is no TLV array"};
  const auto* header = message->record<wire::CmiHeader>(wire::TlvType::kHeader);
  if (header == nullptr) return Malformed{"VSAN information without its header TLV"};
  const std::uint32_t number = header->vsan.get();
  const Vsan* vsan = nullptr;
  switch (platform::message_type(header->platform)) {
    case wire::MessageType::kGet:
      if (const FcdStatus status = model.check_vsan(number); status != FcdStatus::kDone) {
        return status;
      }
      vsan = model.find_vsan(number);
      break;
    case wire::MessageType::kGetNext:
      vsan = model.next_vsan(number);
      if (vsan == nullptr) return FcdStatus::kNoNextVsan;
      break;
    default:
      return FcdStatus::kUnknownOperation;
  }
  wire::CmiHeader reply = *header;
  reply.status.set(0);
  return TlvReply()
      .add(wire::TlvType::kHeader, reply)
      .add(wire::TlvType::kVsanConfig, config_of(*vsan))
      .take();
}

}  // namespace ficon::emulator
