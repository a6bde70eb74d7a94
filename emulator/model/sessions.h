/** What belongs to connections: never stored, gone when the connection is. */
#pragma once

#include "model/file_edits.h"
#include "model/lock.h"

namespace ficon::emulator {

struct Sessions {
  Locks locks;
  FileEdits edits;

  void connection_closed(ConnectionId connection) {
    locks.connection_closed(connection);
    edits.connection_closed(connection);
  }
};

}  // namespace ficon::emulator
