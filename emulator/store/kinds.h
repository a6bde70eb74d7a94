/** Everything that is stored: one line a kind of object. */
#pragma once

#include "store/saved_config.h"
#include "store/stored_kind.h"

namespace ficon::emulator {

inline constexpr StoredKind kStoredKinds[] = {
    {"feature", save_feature, load_feature},
    {"debug", save_debug, load_debug},
    {"limits", save_limits, load_limits},
    {"ports", save_ports, load_ports},
    {"prohibit-settings", save_prohibit_settings, load_prohibit_settings},
    {"vsan/?", save_vsan, load_vsan},
    {"vsan/?/active", save_active_configuration, load_active_configuration},
    {"vsan/?/file/?", save_file, load_file},
    {"vsan/?/host-data", save_host_data, load_host_data},
    {"history/?", save_history, load_history},
};

inline constexpr SavedConfigKind kSavedConfigKinds[] = {
    {"feature", write_feature_record}, {"limits", write_limits_record},
    {"ports", write_port_records},     {"prohibit-settings", write_default_prohibit_record},
    {"vsan/?", write_vsan_record},
};

}  // namespace ficon::emulator
