#include "model/file_edits.h"

#include <algorithm>
#include <utility>

namespace ficon::emulator {

FileKey FileEdits::open(FileEdit edit) {
  do {
    ++last_key_;
  } while (last_key_ == 0 || edits_.contains(last_key_));
  edits_.emplace(last_key_, std::move(edit));
  return last_key_;
}

FileEdit* FileEdits::find(FileKey key, ConnectionId connection) {
  const auto place = edits_.find(key);
  if (place == edits_.end() || place->second.editor.connection != connection) return nullptr;
  return &place->second;
}

const FileEdit* FileEdits::editing(VsanNumber vsan, const FileName& name) const {
  for (const auto& [key, edit] : edits_) {
    if (edit.vsan == vsan && (edit.name == name || edit.original == name)) return &edit;
  }
  return nullptr;
}

FileKey FileEdits::key_of(VsanNumber vsan, const FileName& name, ConnectionId connection) const {
  for (const auto& [key, edit] : edits_) {
    if (edit.vsan == vsan && edit.name == name && edit.editor.connection == connection) return key;
  }
  return 0;
}

std::size_t FileEdits::creating(VsanNumber vsan) const {
  return static_cast<std::size_t>(std::ranges::count_if(
      edits_, [&](const auto& edit) { return edit.second.vsan == vsan && edit.second.creates; }));
}

void FileEdits::connection_closed(ConnectionId connection) {
  std::erase_if(edits_,
                [&](const auto& edit) { return edit.second.editor.connection == connection; });
}

void FileEdits::vsan_disabled(VsanNumber vsan) {
  std::erase_if(edits_, [&](const auto& edit) { return edit.second.vsan == vsan; });
}

}  // namespace ficon::emulator
