/** The emulator's configuration as a whole: where it is stored, and its startup copy. */
#pragma once

#include <ficon_cmi.h>

#include <string>

namespace ficon::platform {

/** 0 with the path of the emulator's SQLite file, or a status. `wait_ms` 0 waits without end. */
std::uint32_t get_store_path(mts_handle_t handle, std::uint32_t wait_ms, std::string* path);

/** Makes the running configuration the startup configuration. */
std::uint32_t save_startup(mts_handle_t handle, std::uint32_t wait_ms);

/** Sets the level of the feature's debug output, 0 to 7. */
std::uint32_t set_logging_level(mts_handle_t handle, std::uint32_t wait_ms, std::uint32_t level);

/** Where the emulator keeps the startup configuration of a store. */
std::string startup_store(const std::string& store_path);

}  // namespace ficon::platform
