#include "handlers/routes.h"

#include "handlers/box_status.h"
#include "handlers/configuration.h"
#include "handlers/ficon_state.h"
#include "handlers/files.h"
#include "handlers/history.h"
#include "handlers/host_data.h"
#include "handlers/limits.h"
#include "handlers/lock.h"
#include "handlers/pib.h"
#include "handlers/platform_services.h"
#include "handlers/port_info.h"
#include "handlers/port_manager.h"
#include "handlers/port_map.h"
#include "handlers/port_numbers.h"
#include "handlers/port_swap.h"
#include "handlers/prohibit_settings.h"
#include "handlers/saved_file.h"
#include "handlers/tlv_message.h"
#include "handlers/vsan_config.h"
#include "protocol/port_manager.h"
#include "protocol/services.h"
#include "wire/address.h"
#include "wire/opcode.h"

namespace ficon::emulator {
namespace {

constexpr Route fcd(wire::Opcode opcode, const char* name, Handler handle, StatusReply reply) {
  return {wire::kFcdNode, wire::kRequestSap, static_cast<std::uint32_t>(opcode), name, handle,
          reply};
}

template <class ServiceOpcode>
constexpr Route service(platform::ServiceSap sap, ServiceOpcode opcode, const char* name,
                        Handler handle, StatusReply reply) {
  return {wire::kFcdNode,
          static_cast<std::uint32_t>(sap),
          static_cast<std::uint32_t>(opcode),
          name,
          handle,
          reply};
}

using platform::ChassisOpcode;
using platform::ConfigurationOpcode;
using platform::FeatureManagerOpcode;
using platform::FiconBaseOpcode;
using platform::PortManagerOpcode;
using platform::ServiceSap;
using wire::Opcode;

// clang-format off: one line a request
constexpr Route kRoutes[] = {
    fcd(Opcode::kFiconState, "FICON state", handle_ficon_state, ficon_state_status_reply),
    fcd(Opcode::kVsanInfo, "VSAN information", handle_vsan_info, header_status_reply),
    fcd(Opcode::kVsanConfig, "VSAN configuration", handle_vsan_config, header_status_reply),
    fcd(Opcode::kFileOperation, "file operation", handle_file_operation, file_status_reply),
    fcd(Opcode::kFileChange, "file change", handle_file_change, file_status_reply),
    fcd(Opcode::kFileInfo, "file information", handle_file_info, file_status_reply),
    fcd(Opcode::kPortInfo, "port information", handle_port_info, port_info_status_reply),
    fcd(Opcode::kGetSavedFile, "reading a saved file", handle_get_saved_file, file_status_reply),
    fcd(Opcode::kSetSavedFile, "writing a saved file", handle_set_saved_file, file_status_reply),
    fcd(Opcode::kGetHostData, "reading host data", handle_get_host_data,
        get_host_data_status_reply),
    fcd(Opcode::kSetHostData, "writing host data", handle_set_host_data,
        set_host_data_status_reply),
    fcd(Opcode::kPib, "identification block", handle_pib, pib_status_reply),
    fcd(Opcode::kHistory, "history", handle_history, history_status_reply),
    fcd(Opcode::kGetNextType, "get-next type", handle_get_next_type, limit_status_reply),
    fcd(Opcode::kMaxPorts, "maximum ports", handle_max_ports, limit_status_reply),
    fcd(Opcode::kMihTimeout, "MIH time-out", handle_mih_timeout, mih_timeout_status_reply),
    fcd(Opcode::kInterfaceState, "interface states", handle_interface_states,
        interface_states_status_reply),
    {wire::kFcidNode, wire::kRequestSap, static_cast<std::uint32_t>(Opcode::kPortmapFcid),
     "port map by FCID", handle_portmap_fcid, portmap_fcid_status_reply},
    fcd(Opcode::kSwapPort, "port swap", handle_swap_ports, port_swap_status_reply),
    fcd(Opcode::kSwapInterface, "interface swap", handle_swap_interfaces, port_swap_status_reply),
    fcd(Opcode::kSetPortNumber, "port number", handle_set_port_number,
        set_port_number_status_reply),
    fcd(Opcode::kReservePortNumbers, "port number reservation", handle_reserve_port_numbers,
        reserve_port_numbers_status_reply),
    fcd(Opcode::kPortNumberBinding, "port number binding", handle_port_number_binding,
        port_number_binding_status_reply),
    fcd(Opcode::kBindAddressToInterface, "address to interface", handle_bind_address_to_interface,
        bind_address_to_interface_status_reply),
    fcd(Opcode::kBindAddressToNumber, "address to port number", handle_bind_address_to_number,
        bind_address_to_number_status_reply),
    fcd(Opcode::kProhibitSettings, "prohibit settings", handle_prohibit_settings,
        prohibit_settings_status_reply),
    fcd(Opcode::kAclDowngrade, "downgrade of the access lists", handle_acl_downgrade,
        acl_downgrade_status_reply),
    fcd(Opcode::kBoxStatus, "box status", handle_box_status, box_status_reply),
    {wire::kFcdNode, wire::kLockSap, static_cast<std::uint32_t>(Opcode::kLock), "lock", handle_lock,
     lock_status_reply},

    service(ServiceSap::kFiconBase, FiconBaseOpcode::kEnabledVsans, "enabled VSANs",
            handle_enabled_vsans, enabled_vsans_status_reply),
    service(ServiceSap::kConfiguration, ConfigurationOpcode::kStorePath, "store path",
            handle_store_path, configuration_status_reply),
    service(ServiceSap::kConfiguration, ConfigurationOpcode::kSaveStartup,
            "saving the configuration", handle_save_startup, configuration_status_reply),
    service(ServiceSap::kConfiguration, ConfigurationOpcode::kSetLoggingLevel, "logging level",
            handle_set_logging_level, configuration_status_reply),
    service(ServiceSap::kFiconBase, FiconBaseOpcode::kPortmap, "port map", handle_portmap_walk,
            portmap_walk_status_reply),
    service(ServiceSap::kChassis, ChassisOpcode::kDescription, "chassis",
            handle_chassis_description, chassis_description_status_reply),
    service(ServiceSap::kPortManager, PortManagerOpcode::kPortConfig, "port configuration",
            handle_port_config, port_manager_status_reply),
    service(ServiceSap::kPortManager, PortManagerOpcode::kTransceivers, "transceivers",
            handle_transceivers, port_manager_status_reply),
    service(ServiceSap::kPortManager, PortManagerOpcode::kTrunkVsans, "trunk VSANs",
            handle_trunk_vsans, port_manager_status_reply),
    service(ServiceSap::kPortManager, PortManagerOpcode::kModulePorts, "ports of modules",
            handle_module_ports, port_manager_status_reply),
    service(ServiceSap::kPortManager, PortManagerOpcode::kAutoCreated, "origin of a port channel",
            handle_auto_created, port_manager_status_reply),
    service(ServiceSap::kPortManager, PortManagerOpcode::kSetCondition, "condition of a port",
            handle_set_condition, port_manager_status_reply),
    service(ServiceSap::kFeatureManager, FeatureManagerOpcode::kEnableFeature, "feature",
            handle_enable_feature, enable_feature_status_reply),
};
// clang-format on

}  // namespace

std::span<const Route> routes() {
  return kRoutes;
}

const Route* find_route(const Request& request) {
  for (const Route& route : kRoutes) {
    if (route.opcode == request.opcode && route.sap == request.sap && route.node == request.node) {
      return &route;
    }
  }
  return nullptr;
}

}  // namespace ficon::emulator
