#include "emulator_process.h"

#include <sched.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <transport/endpoint.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace ficon::bench {

void pin_to_one_core() {
  cpu_set_t cores;
  CPU_ZERO(&cores);
  CPU_SET(0, &cores);
  sched_setaffinity(0, sizeof cores, &cores);
}

EmulatorProcess::EmulatorProcess(const char* program, const std::vector<std::string>& options) {
  char directory[] = "/tmp/ficon-bench-XXXXXX";
  if (mkdtemp(directory) == nullptr) std::exit(2);
  directory_ = directory;
  const std::string store = directory_ + "/ficon.db";
  process_ = fork();
  if (process_ == 0) {
    std::vector<std::string> words = {program, "--socket", socket(), "--store", store};
    words.insert(words.end(), options.begin(), options.end());
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    execv(program, arguments.data());
    std::perror(program);
    _exit(2);
  }
  struct stat unused {};
  for (int i = 0; i < 500 && stat(socket().c_str(), &unused) != 0; ++i) usleep(10'000);
}

EmulatorProcess::~EmulatorProcess() {
  kill(process_, SIGTERM);
  waitpid(process_, nullptr, 0);
  std::filesystem::remove_all(directory_);
}

mts_handle_t EmulatorProcess::open() const {
  char error[256];
  mts_handle_t handle = ficon_mts_open(("unix:" + socket()).c_str(), error, sizeof error);
  const std::uint32_t status =
      ficon_cmi_set_ficon_state(1, handle, "BENCH", "UNKNOWN", 5000, kVsan, 1);
  if (status != 0) {
    std::fprintf(stderr, "FICON could not be enabled on VSAN %u: 0x%x\n", kVsan, status);
    std::exit(2);
  }
  return handle;
}

}  // namespace ficon::bench
