/** The description of a chassis: refused with a sentence, or whole and consistent. */
#include <optional>

#include "chassis/chassis_file.h"
#include "input.h"
#include "interface_index/interface_index.h"

using namespace ficon::fuzz;
using namespace ficon::platform;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string error;
  const auto chassis = read_chassis(text_of({data, size}), "input", &error);
  if (!chassis) {
    require(error.starts_with("input"), "a refusal names its file");
    return 0;
  }
  require(chassis->slots >= 1 && chassis->slots <= kSlots, "slots are 1 to 16");
  for (const Module& module : chassis->modules) {
    require(module.slot >= 1 && module.slot <= chassis->slots, "a module stands in a slot");
    require(!module.ports.empty() && module.ports.size() <= kPortsPerSlot, "1 to 64 ports");
    for (const std::uint16_t number : default_port_numbers(*chassis, module)) {
      require(number < chassis->ficon_ports, "a default port number is one of the switch's");
    }
  }
  if_index_t before = 0;
  for (const if_index_t if_index : chassis->interfaces()) {
    require(if_index > before, "interfaces are in order, each once");
    before = if_index;
    const Port* port = chassis->port(if_index);
    require(port != nullptr, "an interface that is listed is there");
    require(port->vsan <= kLastVsan, "a port is in a VSAN");
    require(parse_interface(interface_name(if_index)) == if_index,
            "a name leads back to its index");
  }
  return 0;
}
