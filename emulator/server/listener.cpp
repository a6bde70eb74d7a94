#include "server/listener.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace ficon::emulator {
namespace {

[[noreturn]] void fail(const std::string& path, const std::string& why) {
  throw std::runtime_error("cannot listen on " + path + ": " + why);
}

sockaddr_un address_of(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) {
    fail(path,
         "a socket's path has 1 to " + std::to_string(sizeof address.sun_path - 1) + " characters");
  }
  std::memcpy(address.sun_path, path.data(), path.size());
  return address;
}

const sockaddr* generic(const sockaddr_un& address) {
  return reinterpret_cast<const sockaddr*>(&address);
}

/** Removes a socket that nobody answers on; anything else there is left alone. */
void remove_dead_socket(const std::string& path, const sockaddr_un& address) {
  struct stat found {};
  if (lstat(path.c_str(), &found) != 0) return;
  if (!S_ISSOCK(found.st_mode)) fail(path, "there is a file that is no socket");
  const int probe = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  const bool answered = connect(probe, generic(address), sizeof address) == 0 || errno == EAGAIN;
  close(probe);
  if (answered) fail(path, "another process listens there");
  unlink(path.c_str());
}

}  // namespace

int listen_at(const std::string& path) {
  const sockaddr_un address = address_of(path);
  remove_dead_socket(path, address);
  const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  // Nobody gets in between bind and chmod: the socket is born with the narrower of both modes.
  const mode_t before = umask(0117);
  const int bound = bind(fd, generic(address), sizeof address);
  const int error = errno;
  umask(before);
  if (bound != 0 || listen(fd, SOMAXCONN) != 0) {
    close(fd);
    fail(path, std::strerror(bound != 0 ? error : errno));
  }
  return fd;
}

}  // namespace ficon::emulator
