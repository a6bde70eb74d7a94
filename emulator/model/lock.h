/**
 * The fcd lock of each VSAN: held by one requester on one connection, freed when that connection
 * ends. Nothing of it is stored.
 */
#pragma once

#include <cstdint>
#include <map>

#include "model/requester.h"
#include "wire/fcd_status.h"

namespace ficon::emulator {

class Locks {
 public:
  struct Holder {
    Asker owner;
    std::int64_t since = 0;  // seconds of a clock that never steps back
  };

  FcdStatus get(std::uint16_t vsan, const Asker& asker, std::int64_t now);
  /** Freeing a free lock is done already; another's lock stays. */
  FcdStatus free(std::uint16_t vsan, const Asker& asker);
  /** @return whether somebody held it */
  bool reset(std::uint16_t vsan) { return holders_.erase(vsan) != 0; }

  const Holder* holder(std::uint16_t vsan) const;
  /** Whether the lock keeps changes from this connection out. */
  bool held_against(std::uint16_t vsan, ConnectionId connection) const;
  std::size_t count() const { return holders_.size(); }

  void connection_closed(ConnectionId connection);

 private:
  std::map<std::uint16_t, Holder> holders_;
};

}  // namespace ficon::emulator
