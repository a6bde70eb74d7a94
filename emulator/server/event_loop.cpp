#include "server/event_loop.h"

#include <signal.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace ficon::emulator {
namespace {

// Tags of the descriptors that are no client; clients are tagged with their identity.
constexpr std::uint64_t kWakeTag = 0;
constexpr std::uint64_t kListenerTag = 1;
constexpr std::uint64_t kSignalTag = 2;
constexpr ConnectionId kFirstConnection = 16;

/** Packets that one client may have read before the others get their turn. */
constexpr int kPacketsATurn = 16;

void require(bool ok, const char* what) {
  if (!ok) throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
}

}  // namespace

EventLoop::EventLoop(Service& service, Limits limits, Log& log)
    : service_(service),
      limits_(limits),
      log_(log),
      epoll_(epoll_create1(EPOLL_CLOEXEC)),
      wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      last_id_(kFirstConnection),
      buffer_(sizeof(platform::FrameHeader) + platform::kFramePayload) {
  require(epoll_ >= 0 && wake_ >= 0, "event loop");
  watch(wake_, kWakeTag);
}

EventLoop::~EventLoop() {
  connections_.clear();
  for (const int fd : adopted_) close(fd);
  for (const int fd : {listener_, signals_, wake_, epoll_}) {
    if (fd >= 0) close(fd);
  }
}

void EventLoop::watch(int fd, std::uint64_t tag, bool for_writing) {
  epoll_event event{};
  event.events = EPOLLIN | (for_writing ? std::uint32_t{EPOLLOUT} : 0);
  event.data.u64 = tag;
  if (epoll_ctl(epoll_, EPOLL_CTL_MOD, fd, &event) == 0) return;
  require(epoll_ctl(epoll_, EPOLL_CTL_ADD, fd, &event) == 0, "epoll");
}

void EventLoop::listen_on(int fd, std::set<unsigned> allowed_users) {
  listener_ = fd;
  allowed_users_ = std::move(allowed_users);
  watch(listener_, kListenerTag);
  accepting_ = true;
}

void EventLoop::stop_on_signals() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGTERM);
  sigaddset(&set, SIGINT);
  sigprocmask(SIG_BLOCK, &set, nullptr);
  signals_ = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
  require(signals_ >= 0, "signals");
  watch(signals_, kSignalTag);
}

void EventLoop::adopt(int fd) {
  {
    const std::lock_guard guard(adopted_mutex_);
    adopted_.push_back(fd);
  }
  eventfd_write(wake_, 1);
}

void EventLoop::stop() {
  stopping_ = true;
  eventfd_write(wake_, 1);
}

void EventLoop::run() {
  while (!stopping_) {
    epoll_event events[64];
    const int count = epoll_wait(epoll_, events, std::size(events), -1);
    require(count >= 0 || errno == EINTR, "epoll");
    for (int i = 0; i < count; ++i) handle(events[i].data.u64, events[i].events);
    finish_turn();
  }
}

void EventLoop::handle(std::uint64_t tag, std::uint32_t events) {
  switch (tag) {
    case kWakeTag:
      take_adopted();
      return;
    case kListenerTag:
      accept_clients();
      return;
    case kSignalTag:
      stopping_ = true;
      return;
    default:
      break;
  }
  const auto place = connections_.find(tag);
  if (place == connections_.end()) return;  // dropped earlier in this turn
  Connection& connection = *place->second;
  if ((events & EPOLLOUT) != 0 && !connection.flush()) return drop(tag, nullptr);
  if ((events & EPOLLOUT) != 0) update_watch(connection);
  if ((events & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0) read(connection);
}

void EventLoop::accept_clients() {
  for (;;) {
    const int fd = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (fd >= 0) {
      if (is_allowed(fd)) {
        add(fd);
      } else {
        close(fd);
      }
      continue;
    }
    if (errno != EMFILE && errno != ENFILE) return;
    // Out of descriptors: wait until a client leaves instead of being told again and again.
    log_.complaint("no descriptor left for another client");
    epoll_ctl(epoll_, EPOLL_CTL_DEL, listener_, nullptr);
    accepting_ = false;
    return;
  }
}

bool EventLoop::is_allowed(int fd) {
  ucred peer{};
  socklen_t size = sizeof peer;
  if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return false;
  if (allowed_users_.contains(peer.uid)) return true;
  log_.complaint("user " + std::to_string(peer.uid) + " (process " + std::to_string(peer.pid) +
                 ") is not allowed to connect; see --allow-user");
  return false;
}

void EventLoop::take_adopted() {
  eventfd_t ignored;
  eventfd_read(wake_, &ignored);
  std::vector<int> adopted;
  {
    const std::lock_guard guard(adopted_mutex_);
    adopted.swap(adopted_);
  }
  for (const int fd : adopted) add(fd);
}

void EventLoop::add(int fd) {
  if (connections_.size() >= limits_.clients) {
    log_.complaint("a client was turned away: the limit of " + std::to_string(limits_.clients) +
                   " clients is reached; see --max-clients");
    close(fd);
    return;
  }
  const ConnectionId id = ++last_id_;
  connections_.emplace(id, std::make_unique<Connection>(id, fd, limits_));
  watch(fd, id);
  log_.debug("connection " + std::to_string(id) + " opened");
}

void EventLoop::read(Connection& connection) {
  const ConnectionId id = connection.id();
  for (int i = 0; i < kPacketsATurn; ++i) {
    Message message;
    const char* reason = nullptr;
    switch (connection.read(buffer_, message, reason)) {
      case Connection::Read::kMessage:
        service_.apply(id, std::move(message));
        // One transaction serves many changes; without one there is nothing to share.
        if (!service_.has_changes()) return;
        break;
      case Connection::Read::kNothing:
        return;  // if more is there, the next turn finds it
      case Connection::Read::kClosed:
        return drop(id, nullptr);
      case Connection::Read::kBroken:
        return drop(id, reason);
    }
  }
}

void EventLoop::finish_turn() {
  for (Service::Reply& reply : service_.finish_turn()) {
    const auto place = connections_.find(reply.to);
    if (place == connections_.end()) continue;  // it left; what it changed stays
    Connection& connection = *place->second;
    if (connection.queue(std::move(reply.message))) {
      update_watch(connection);
    } else {
      drop(reply.to, connection.has_waiting() ? "it does not take its replies" : nullptr);
    }
  }
}

void EventLoop::update_watch(Connection& connection) {
  if (connection.watched_for_writing == connection.has_waiting()) return;
  connection.watched_for_writing = connection.has_waiting();
  watch(connection.fd(), connection.id(), connection.watched_for_writing);
}

void EventLoop::drop(ConnectionId id, const char* reason) {
  if (reason != nullptr) {
    log_.complaint("connection " + std::to_string(id) + " is cut: " + reason);
  } else {
    log_.debug("connection " + std::to_string(id) + " closed");
  }
  connections_.erase(id);
  service_.connection_closed(id);
  if (accepting_ || listener_ < 0) return;
  watch(listener_, kListenerTag);
  accepting_ = true;
}

}  // namespace ficon::emulator
