#include "chassis/chassis_file.h"

namespace ficon::platform {
namespace {

constexpr std::string_view kDirector = R"toml(name = "director"
software_version = "4.1(3a)"
model = "D9"
serial = "D900001"
slots = 9

# Hosts of VSAN 10 in front, its control units behind them; slot 4 waits for a module.
[[module]]
slot = 1
type = "48-port"
ports = 48
vsan = 10

  [[module.port]]
  ports = "1-24"
  condition = "up"

  [[module.port]]
  ports = "46"
  condition = "failed"

  [[module.port]]
  ports = "47-48"
  mode = "TE"
  condition = "up"
  trunk_vsans = [1, 10, 20]

[[module]]
slot = 2
type = "48-port"
ports = 48
vsan = 10

  [[module.port]]
  ports = "1-32"
  condition = "up"

  [[module.port]]
  ports = "33-40"
  condition = "admin-down"

  [[module.port]]
  ports = "41-48"
  transceiver = "absent"

[[module]]
slot = 3
type = "48-port"
ports = 48
vsan = 20

  [[module.port]]
  ports = "1-40"
  mode = "Fx"
  condition = "up"

# Slots 5 and 6 hold the supervisors.
[[module]]
slot = 7
type = "48-port"
ports = 48
vsan = 20

  [[module.port]]
  ports = "1-8"
  condition = "up"

  [[module.port]]
  ports = "9-48"
  transceiver = "absent"

[[port_channel]]
number = 12
mode = "TE"
condition = "up"
trunk_vsans = [10, 20]

[[port_channel]]
number = 13
mode = "E"
vsan = 20
auto_created = true

[[tunnel]]
number = 3
mode = "TE"
condition = "up"
vsan = 10
trunk_vsans = [10]
)toml";

}  // namespace

std::string_view default_chassis_text() {
  return kDirector;
}

}  // namespace ficon::platform
