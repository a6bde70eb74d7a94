/**
 * Edits under way: an edit is a private copy of a file that replaces it when it is kept. Edits
 * belong to a connection, are never stored, and are discarded when the connection ends.
 */
#pragma once

#include <map>
#include <optional>
#include <vector>

#include "model/configuration_file.h"
#include "model/requester.h"

namespace ficon::emulator {

using VsanNumber = std::uint16_t;

/** Names an edit to its owner; 0 names none. */
using FileKey = std::uint32_t;

struct FileEdit {
  VsanNumber vsan;
  FileName name;      // as the file will be called when it is kept
  FileName original;  // as it was called when it was opened
  Asker editor;
  bool creates;  // there was no such file
  ConfigurationFile draft;
  std::optional<std::vector<std::uint8_t>> upload = {};  // contents that are coming in
};

class FileEdits {
 public:
  FileKey open(FileEdit edit);
  /** The edit behind a key, if it is this connection's. */
  FileEdit* find(FileKey key, ConnectionId connection);
  /** Who edits a file, under the name it had or the one it is to have; null when nobody does. */
  const FileEdit* editing(VsanNumber vsan, const FileName& name) const;
  /** The key of a connection's own edit of a file; 0 when it has none. */
  FileKey key_of(VsanNumber vsan, const FileName& name, ConnectionId connection) const;
  /** How many edits are to create a file in a VSAN. */
  std::size_t creating(VsanNumber vsan) const;
  void close(FileKey key) { edits_.erase(key); }

  void connection_closed(ConnectionId connection);
  void vsan_disabled(VsanNumber vsan);
  std::size_t count() const { return edits_.size(); }

 private:
  std::map<FileKey, FileEdit> edits_;
  FileKey last_key_ = 0;
};

}  // namespace ficon::emulator
