#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "store/store.h"

namespace ficon::emulator {
namespace {

std::string holder_in(int fd) {
  char text[32] = {};
  const ssize_t length = pread(fd, text, sizeof text - 1, 0);
  return length > 0 ? " (process " + std::string(text) + ")" : std::string();
}

}  // namespace

StoreLock::StoreLock(const std::string& store_path) {
  const std::string path = store_path + ".lock";
  fd_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (fd_ < 0) throw StoreError(path + ": " + std::strerror(errno));
  if (flock(fd_, LOCK_EX | LOCK_NB) != 0) {
    const std::string holder = holder_in(fd_);
    close(fd_);
    throw StoreError("it is in use by another process" + holder);
  }
  // The number is for people only; the lock holds without it.
  const std::string own = std::to_string(getpid());
  if (ftruncate(fd_, 0) == 0) [[maybe_unused]]
    const ssize_t n = pwrite(fd_, own.data(), own.size(), 0);
}

StoreLock::~StoreLock() {
  close(fd_);
}

}  // namespace ficon::emulator
