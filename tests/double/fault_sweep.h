/** Runs an operation once per platform call that it makes, that call failing. */
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "double/scripted_platform.h"

namespace ficon::test {

/** What is expected of the run in which a call fails: the call's name and the status. */
struct FaultCase {
  std::string call;
  std::uint32_t status;
};

/**
 * `script` prepares a healthy run, `operation` runs it and gives its status. `expected` names, in
 * order, every call that can fail and the status of the run in which it does; written by hand.
 * After each run every message has been dropped once, the lock is free and nothing leaked.
 */
void fault_sweep(const std::function<std::uint32_t(ScriptedPlatform&)>& operation,
                 const std::function<void(ScriptedPlatform&)>& script,
                 const std::vector<FaultCase>& expected, std::int32_t error = kInjectedError);

}  // namespace ficon::test
