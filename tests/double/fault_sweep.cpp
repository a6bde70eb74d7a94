#include "double/fault_sweep.h"

#include <doctest/doctest.h>

#include "double/format.h"

namespace ficon::test {

void fault_sweep(const std::function<std::uint32_t(ScriptedPlatform&)>& operation,
                 const std::function<void(ScriptedPlatform&)>& script,
                 const std::vector<FaultCase>& expected, std::int32_t error) {
  for (std::size_t n = 0;; ++n) {
    ScriptedPlatform platform;
    script(platform);
    platform.fail_call(static_cast<int>(n) + 1, error);
    const std::uint32_t status = operation(platform);
    if (!platform.fault_was_hit()) {
      CHECK_MESSAGE(n == expected.size(), "calls that can fail, and rows of the table");
      CHECK_MESSAGE(platform.finished(), "the run without a fault");
      return;
    }
    const std::string where = "fault in call " + std::to_string(n + 1) + ": " + platform.fault();
    CAPTURE(where);
    if (n < expected.size()) {
      CHECK(platform.fault().substr(0, platform.fault().find(' ')) == expected[n].call);
      CHECK(formatted("%08x", status) == formatted("%08x", expected[n].status));
    }
    CHECK(platform.messages_dropped());
    CHECK(platform.lock_balanced());
    CHECK(platform.leaks().empty());
  }
}

}  // namespace ficon::test
