#include "server/embedded.h"

#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "server/event_loop.h"

namespace ficon::emulator {
namespace {

/** As the directory's chassis.toml describes it, or the built-in one where there is none. */
std::shared_ptr<Hardware> hardware_in(const std::filesystem::path& directory) {
  const auto description = directory / "chassis.toml";
  return read_hardware(std::filesystem::exists(description) ? description.string() : "");
}

/** One emulator and its thread. */
class Embedded {
 public:
  explicit Embedded(const std::filesystem::path& directory)
      : log_(LogLevel::kError),
        service_((directory / "ficon.db").string(), {.hardware = hardware_in(directory)}, log_),
        loop_(service_, {}, log_) {
    start();
  }
  ~Embedded() {
    loop_.stop();
    thread_.join();
  }

  void adopt(int fd) { loop_.adopt(fd); }

 private:
  void start() {
    // Signals belong to the program around us: this thread takes none.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    thread_ = std::thread([this] { run(); });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
  }
  void run() {
    try {
      loop_.run();
    } catch (const std::exception& error) {
      log_.error(error.what());
    }
  }

  Log log_;
  Service service_;
  EventLoop loop_;
  std::thread thread_;
};

std::mutex mutex;
std::map<std::filesystem::path, std::unique_ptr<Embedded>> running;

int connect_to(const char* directory) {
  std::error_code failure;
  std::filesystem::create_directories(directory, failure);
  if (failure) {
    throw std::runtime_error("the directory " + std::string(directory) +
                             " cannot be created: " + failure.message());
  }
  const auto key = std::filesystem::canonical(directory);
  const std::lock_guard guard(mutex);
  auto& emulator = running[key];
  if (emulator == nullptr) emulator = std::make_unique<Embedded>(key);
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
    throw std::runtime_error(std::strerror(errno));
  }
  emulator->adopt(ends[0]);
  return ends[1];
}

}  // namespace

int connect_embedded(const char* directory, char* error, std::size_t error_size) {
  try {
    return connect_to(directory);
  } catch (const std::exception& failure) {
    if (error != nullptr && error_size != 0) {
      std::snprintf(error, error_size, "%s", failure.what());
    }
    return -1;
  }
}

}  // namespace ficon::emulator
