/**
 * The hardware that the switch runs on: lives as long as the process, whatever becomes of the
 * model, and is not stored. A port's condition changes while clients look.
 */
#pragma once

#include <memory>
#include <string>

#include "chassis/chassis.h"

namespace ficon::emulator {

struct Hardware {
  std::string description;  // as it was read
  platform::Chassis chassis;
};

/** From a description; throws std::runtime_error that says what is wrong with it. */
std::shared_ptr<Hardware> hardware_from(std::string description, const std::string& name);
/** The description in a file, or the built-in one where the path is empty. */
std::shared_ptr<Hardware> read_hardware(const std::string& path);

}  // namespace ficon::emulator
