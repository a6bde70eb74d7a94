#include "daemon_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

#include "child.h"
#include "client.h"

namespace ficon::test {

ScratchDirectory::ScratchDirectory() {
  std::string name = (std::filesystem::temp_directory_path() / "fcd-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no scratch directory");
  path_ = name;
}

ScratchDirectory::~ScratchDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

DaemonProcess::DaemonProcess(const ScratchDirectory& directory, std::vector<std::string> options)
    : socket_(directory.path("socket")) {
  std::vector<std::string> words{FCD_EMULATOR, "--socket", socket_, "--store",
                                 directory.path("ficon.db")};
  words.insert(words.end(), options.begin(), options.end());
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const std::string log = directory.path("log");
  pid_ = start_child([&] {
    const int fd = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    dup2(fd, 2);
    execv(FCD_EMULATOR, arguments.data());
    return false;
  });
  wait_for_socket();
}

void DaemonProcess::wait_for_socket() {
  constexpr int kTries = 12'000;  // a minute: a large store on a busy machine takes many seconds
  for (int i = 0; i < kTries; ++i) {
    if (Client(socket_).connected()) return;
    if (waitpid(pid_, nullptr, WNOHANG) == pid_) {
      pid_ = -1;
      return;
    }
    usleep(5000);
  }
  signal(SIGKILL);
  wait();
}

DaemonProcess::~DaemonProcess() {
  if (!running()) return;
  signal(SIGKILL);
  wait();
}

void DaemonProcess::signal(int number) const {
  kill(pid_, number);
}

int DaemonProcess::wait() {
  int status = 0;
  waitpid(pid_, &status, 0);
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace ficon::test
