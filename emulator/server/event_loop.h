/**
 * The event loop: one thread, no request waits for another's client. A turn reads a bounded
 * number of packets from every client that has some, finishes the service's turn, and sends the
 * replies as far as the sockets take them.
 */
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <vector>

#include "server/connection.h"
#include "server/log.h"
#include "server/service.h"

namespace ficon::emulator {

class EventLoop {
 public:
  EventLoop(Service& service, Limits limits, Log& log);
  ~EventLoop();
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  /** Accepts clients of these users on a listening socket; takes the descriptor. */
  void listen_on(int fd, std::set<unsigned> allowed_users);
  /** Ends the loop when SIGTERM or SIGINT comes. */
  void stop_on_signals();

  /** Takes a connected socket; from any thread. */
  void adopt(int fd);
  /** Ends the loop; from any thread. */
  void stop();

  void run();

 private:
  void watch(int fd, std::uint64_t tag, bool for_writing = false);
  void handle(std::uint64_t tag, std::uint32_t events);
  void accept_clients();
  bool is_allowed(int fd);
  void add(int fd);
  void take_adopted();
  void read(Connection& connection);
  void finish_turn();
  void update_watch(Connection& connection);
  void drop(ConnectionId id, const char* reason);

  Service& service_;
  Limits limits_;
  Log& log_;
  int epoll_;
  int wake_;
  int listener_ = -1;
  int signals_ = -1;
  bool accepting_ = false;
  std::set<unsigned> allowed_users_;
  std::atomic<bool> stopping_{false};
  std::mutex adopted_mutex_;
  std::vector<int> adopted_;
  ConnectionId last_id_;
  std::map<ConnectionId, std::unique_ptr<Connection>> connections_;
  Bytes buffer_;
};

}  // namespace ficon::emulator
