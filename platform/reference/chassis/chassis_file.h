/**
 * Reads the description of a chassis, in TOML:
 *
 *   name = "director"
 *   software_version = "4.1(3a)"
 *   model = "D9"                   # up to 12 characters are shown of it
 *   serial = "D900042"             # the modules' have their slot behind it: D900042-01
 *   slots = 9                      # 1 to 16
 *   ficon_ports = 256              # port numbers, 1 to 1280
 *
 *   [[module]]
 *   slot = 1                       # from 1
 *   number = 1                     # of the module; the slot's unless given
 *   type = "48-port"
 *   ports = 48                     # 1 to 64
 *   vsan = 10                      # what all of its ports are, see below
 *
 *     [[module.port]]              # and what some of them are instead
 *     ports = "1-4, 17"
 *     mode = "TE"
 *     trunk_vsans = [10, 20]
 *
 *   [[port_channel]]               # and [[tunnel]]
 *   number = 12                    # 1 to 256
 *   auto_created = true
 *
 * Letters beyond ASCII may stand in lines that are comments, and nowhere else.
 *
 * Every port takes mode (auto, E, F, TE, SD, Fx; F), condition (up, offline, admin-down, failed;
 * offline), transceiver (usable, absent, unsupported; usable), vsan (1) and trunk_vsans (none).
 */
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "chassis/chassis.h"

namespace ficon::platform {

/** `name` leads the error: "NAME:LINE:COLUMN: what is wrong". */
std::optional<Chassis> read_chassis(std::string_view text, const std::string& name,
                                    std::string* error);
/** The text of a file, or an error; files beyond 1 MiB are refused unread. */
std::optional<std::string> read_chassis_file(const std::string& path, std::string* error);

/** The description built in: a director with FICON on VSANs 10 and 20. */
std::string_view default_chassis_text();

}  // namespace ficon::platform
