#include "model/hardware.h"

#include <stdexcept>

#include "chassis/chassis_file.h"

namespace ficon::emulator {

std::shared_ptr<Hardware> hardware_from(std::string description, const std::string& name) {
  std::string error;
  auto chassis = platform::read_chassis(description, name, &error);
  if (!chassis) throw std::runtime_error(error);
  return std::make_shared<Hardware>(Hardware{std::move(description), *std::move(chassis)});
}

std::shared_ptr<Hardware> read_hardware(const std::string& path) {
  if (path.empty()) {
    return hardware_from(std::string(platform::default_chassis_text()), "built-in chassis");
  }
  std::string error;
  auto text = platform::read_chassis_file(path, &error);
  if (!text) throw std::runtime_error(error);
  return hardware_from(*std::move(text), path);
}

}  // namespace ficon::emulator
