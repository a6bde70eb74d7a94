/** Clients in processes of their own, and what they bring about. */
#pragma once

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <string>

#include "child.h"
#include "transport/endpoint.h"

namespace ficon::test {

/** A handle of this process's own. */
class Connected {
 public:
  explicit Connected(const std::string& socket)
      : handle_(ficon_mts_open(("unix:" + socket).c_str(), nullptr, 0)) {}
  ~Connected() {
    if (handle_ != nullptr) ficon_mts_close(handle_);
  }
  Connected(const Connected&) = delete;
  Connected& operator=(const Connected&) = delete;

  mts_handle_t get() const { return handle_; }

 private:
  mts_handle_t handle_;
};

/** Runs `work` in a process of its own. */
class Process {
 public:
  explicit Process(const std::function<bool()>& work) : pid_(start_child(work)) {}
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process() {
    if (pid_ > 0) {
      kill(pid_, SIGKILL);
      succeeded();
    }
  }

  bool succeeded() {
    int status = -1;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }
  bool running() {
    if (pid_ < 0) return false;
    int status = -1;
    if (waitpid(pid_, &status, WNOHANG) != pid_) return true;
    pid_ = -1;
    ok_ = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return false;
  }
  bool ended_well() const { return ok_; }

 private:
  pid_t pid_;
  bool ok_ = false;
};

/** Waits for it, twenty seconds at most. */
inline bool comes_true(const std::function<bool()>& condition) {
  for (int i = 0; i < 10'000; ++i) {
    if (condition()) return true;
    usleep(2000);
  }
  return false;
}

}  // namespace ficon::test
