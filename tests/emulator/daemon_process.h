/** A real fcd-emulator in a directory of its own. */
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace ficon::test {

/** A directory that goes when the test does. */
class ScratchDirectory {
 public:
  ScratchDirectory();
  ~ScratchDirectory();
  std::string path(const std::string& name = {}) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

class DaemonProcess {
 public:
  /** Starts it on `directory` and waits until it listens or ends; it is killed if it does neither.
   */
  explicit DaemonProcess(const ScratchDirectory& directory, std::vector<std::string> options = {});
  ~DaemonProcess();

  const std::string& socket() const { return socket_; }
  bool running() const { return pid_ > 0; }
  pid_t pid() const { return pid_; }
  void signal(int number) const;
  /** @return the exit status, or minus the signal that ended it */
  int wait();

 private:
  void wait_for_socket();

  std::string socket_;
  pid_t pid_ = -1;
};

}  // namespace ficon::test
