/**
 * What can be done with the configuration files of a VSAN. Every change is a change of the VSAN:
 * refused, counted, recorded and stored like any other, and while automatic saving is on, the
 * active configuration and IPL change together.
 */
#pragma once

#include <functional>
#include <string>

#include "model/file_edits.h"
#include "model/switch.h"

namespace ficon::emulator {

/** The file that a request means: its own edit, or a name without one. */
struct FileTarget {
  FileKey key = 0;
  FileName name = kActiveConfiguration;
};

class FileOperations {
 public:
  explicit FileOperations(Switch& of_switch) : switch_(of_switch) {}

  /** The file, the active configuration, or the draft of the asker's edit; null: none such. */
  const ConfigurationFile* find(std::uint32_t vsan, const Asker& asker,
                                const FileTarget& target) const;

  /** Begins an edit, of a new file where there is none of that name. Nothing is stored yet. */
  FcdStatus open(std::uint32_t vsan, const Asker& asker, const FileName& name, FileKey& key);
  FcdStatus keep(std::uint32_t vsan, const Asker& asker, FileKey key);
  FcdStatus discard(std::uint32_t vsan, const Asker& asker, FileKey key);
  /**
   * The key of the asker's own edit of a file: a requester that opened a file by name and kept no
   * key closes it by name. 0: none such.
   */
  FileKey key_of(std::uint32_t vsan, const Asker& asker, const FileTarget& target) const;
  /** The file of an edit takes another name when the edit is kept. */
  FcdStatus rename(std::uint32_t vsan, const Asker& asker, FileKey key, const FileName& name);

  FcdStatus erase(std::uint32_t vsan, const Asker& asker, const FileName& name);
  FcdStatus copy(std::uint32_t vsan, const Asker& asker, const FileName& from, const FileName& to);
  FcdStatus apply(std::uint32_t vsan, const Asker& asker, const FileName& name);
  FcdStatus save_active(std::uint32_t vsan, const Asker& asker, const FileName& name);

  /**
   * Changes a file through `edit`, which gives the status that refuses, if any: in the draft of the
   * asker's edit, or at once and whole where it has none.
   */
  using Edit = std::function<FcdStatus(ConfigurationFile&)>;
  FcdStatus change(std::uint32_t vsan, const Asker& asker, const FileTarget& target,
                   const Edit& edit, const std::string& detail);

  /**
   * Writes a piece of a file's stored contents. Within an edit, pieces come at their offsets and
   * are checked when the edit is kept; without one, the piece is the whole.
   */
  FcdStatus write_contents(std::uint32_t vsan, const Asker& asker, const FileTarget& target,
                           std::uint32_t offset, std::span<const std::uint8_t> piece);

 private:
  /** Puts a whole file in the place of another, all rules asked already. */
  void replace(Vsan& vsan, const Asker& asker, const FileName& name, ConfigurationFile file,
               std::string detail);
  FcdStatus check_writable(const Vsan& vsan, const FileName& name) const;
  bool has_room_for(const Vsan& vsan, const FileName& name) const;

  Switch& switch_;
};

}  // namespace ficon::emulator
