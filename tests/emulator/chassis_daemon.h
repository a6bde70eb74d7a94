/** A daemon on a chassis of the test's own, which can be killed and started again on its store. */
#pragma once

#include <doctest/doctest.h>
#include <signal.h>

#include <fstream>
#include <memory>
#include <string>

#include "daemon_process.h"

namespace ficon::test {

class ChassisDaemon {
 public:
  explicit ChassisDaemon(const std::string& chassis) {
    std::ofstream(directory_.path("chassis.toml")) << chassis;
    start();
  }
  void start() {
    daemon_.reset();
    daemon_ = std::make_unique<DaemonProcess>(
        directory_, std::vector<std::string>{"--chassis", directory_.path("chassis.toml")});
    REQUIRE(daemon_->running());
  }
  void kill_and_start() {
    daemon_->signal(SIGKILL);
    daemon_->wait();
    start();
  }
  const std::string& socket() const { return daemon_->socket(); }

 private:
  ScratchDirectory directory_;
  std::unique_ptr<DaemonProcess> daemon_;
};

}  // namespace ficon::test
