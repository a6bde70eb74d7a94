#include "model/file_operations.h"

#include <algorithm>
#include <utility>

#include "model/file_contents.h"

namespace ficon::emulator {
namespace {

const ConfigurationFile* find_file(const Vsan& vsan, const FileName& name) {
  if (name == kActiveConfiguration) return &vsan.files.active;
  const auto place = vsan.files.named.find(name);
  return place == vsan.files.named.end() ? nullptr : &place->second;
}

}  // namespace

const ConfigurationFile* FileOperations::find(std::uint32_t vsan, const Asker& asker,
                                              const FileTarget& target) const {
  const Vsan* found = switch_.find_vsan(vsan);
  if (found == nullptr) return nullptr;
  if (target.key == 0) return find_file(*found, target.name);
  const FileEdit* edit = switch_.sessions.edits.find(target.key, asker.connection);
  return edit != nullptr && edit->vsan == vsan ? &edit->draft : nullptr;
}

FileKey FileOperations::key_of(std::uint32_t vsan, const Asker& asker,
                               const FileTarget& target) const {
  if (target.key != 0 || !is_vsan(vsan)) return target.key;
  return switch_.sessions.edits.key_of(static_cast<VsanNumber>(vsan), target.name,
                                       asker.connection);
}

FcdStatus FileOperations::check_writable(const Vsan& vsan, const FileName& name) const {
  if (name == kIplFile) return FcdStatus::kReservedFile;
  if (name != kActiveConfiguration && !is_file_name(name)) return FcdStatus::kBadFileName;
  const bool edited = switch_.sessions.edits.editing(vsan.number, name) != nullptr;
  return edited ? FcdStatus::kFileBeingEdited : FcdStatus::kDone;
}

bool FileOperations::has_room_for(const Vsan& vsan, const FileName& name) const {
  return find_file(vsan, name) != nullptr || vsan.files.named.size() < switch_.options().max_files;
}

FcdStatus FileOperations::open(std::uint32_t number, const Asker& asker, const FileName& name,
                               FileKey& key) {
  const VsanAccess access = switch_.change_vsan(number, asker);
  if (access.status != FcdStatus::kDone) return access.status;
  const Vsan& vsan = *access.vsan;
  if (const FcdStatus refused = check_writable(vsan, name); refused != FcdStatus::kDone) {
    return refused;
  }
  const ConfigurationFile* file = find_file(vsan, name);
  // Files to be count too, or a client could open as many as memory has room for.
  const std::size_t to_be = vsan.files.named.size() + switch_.sessions.edits.creating(vsan.number);
  if (file == nullptr && to_be >= switch_.options().max_files) return FcdStatus::kTooManyFiles;
  key = switch_.sessions.edits.open({.vsan = vsan.number,
                                     .name = name,
                                     .original = name,
                                     .editor = asker,
                                     .creates = file == nullptr,
                                     .draft = file != nullptr ? *file : switch_.new_file(vsan)});
  return FcdStatus::kDone;
}

FcdStatus FileOperations::keep(std::uint32_t number, const Asker& asker, FileKey key) {
  const VsanAccess access = switch_.change_vsan(number, asker);
  if (access.status != FcdStatus::kDone) return access.status;
  FileEdit* edit = switch_.sessions.edits.find(key, asker.connection);
  if (edit == nullptr || edit->vsan != number) return FcdStatus::kNoSuchEdit;
  Vsan& vsan = *access.vsan;
  if (edit->upload) {
    auto uploaded = from_contents(*edit->upload);
    if (!uploaded) return FcdStatus::kBadFileContents;
    edit->draft = *std::move(uploaded);
  }
  const bool renamed = edit->name != edit->original;
  if (renamed && find_file(vsan, edit->name) != nullptr) return FcdStatus::kFileExists;
  if (edit->creates && !has_room_for(vsan, edit->name)) return FcdStatus::kTooManyFiles;
  const FileEdit kept = std::move(*edit);
  switch_.sessions.edits.close(key);
  if (renamed && vsan.files.named.erase(kept.original) != 0) {
    switch_.touched.object(file_object(vsan.number, kept.original));
  }
  replace(vsan, asker, kept.name, kept.draft,
          renamed ? readable(kept.original) + " renamed to " + readable(kept.name)
                  : readable(kept.name) + (kept.creates ? " created" : " edited"));
  return FcdStatus::kDone;
}

FcdStatus FileOperations::discard(std::uint32_t number, const Asker& asker, FileKey key) {
  const FileEdit* edit = switch_.sessions.edits.find(key, asker.connection);
  if (edit == nullptr || edit->vsan != number) return FcdStatus::kNoSuchEdit;
  switch_.sessions.edits.close(key);
  return FcdStatus::kDone;
}

FcdStatus FileOperations::rename(std::uint32_t number, const Asker& asker, FileKey key,
                                 const FileName& name) {
  const VsanAccess access = switch_.change_vsan(number, asker);
  if (access.status != FcdStatus::kDone) return access.status;
  FileEdit* edit = switch_.sessions.edits.find(key, asker.connection);
  if (edit == nullptr || edit->vsan != number) return FcdStatus::kNoSuchEdit;
  if (edit->original == kActiveConfiguration || name == kActiveConfiguration) {
    return FcdStatus::kBadFileName;
  }
  if (const FcdStatus refused = check_writable(*access.vsan, name); refused != FcdStatus::kDone) {
    return refused;
  }
  if (find_file(*access.vsan, name) != nullptr) return FcdStatus::kFileExists;
  edit->name = name;
  return FcdStatus::kDone;
}

FcdStatus FileOperations::erase(std::uint32_t number, const Asker& asker, const FileName& name) {
  const VsanAccess access = switch_.change_vsan(number, asker);
  if (access.status != FcdStatus::kDone) return access.status;
  Vsan& vsan = *access.vsan;
  if (name == kActiveConfiguration) return FcdStatus::kBadFileName;
  if (const FcdStatus refused = check_writable(vsan, name); refused != FcdStatus::kDone) {
    return refused;
  }
  if (vsan.files.named.erase(name) == 0) return FcdStatus::kNoSuchFile;
  switch_.touched.object(file_object(vsan.number, name));
  switch_.changed(vsan, asker, Change::kFile, readable(name) + " deleted");
  return FcdStatus::kDone;
}

FcdStatus FileOperations::copy(std::uint32_t number, const Asker& asker, const FileName& from,
                               const FileName& to) {
  const VsanAccess access = switch_.change_vsan(number, asker);
  if (access.status != FcdStatus::kDone) return access.status;
  Vsan& vsan = *access.vsan;
  const ConfigurationFile* source = find_file(vsan, from);
  if (source == nullptr) return FcdStatus::kNoSuchFile;
  if (to == kActiveConfiguration) return FcdStatus::kBadFileName;
  if (const FcdStatus refused = check_writable(vsan, to); refused != FcdStatus::kDone) {
    return refused;
  }
  if (find_file(vsan, to) != nullptr) return FcdStatus::kFileExists;
  if (!has_room_for(vsan, to)) return FcdStatus::kTooManyFiles;
  replace(vsan, asker, to, *source, readable(from) + " copied to " + readable(to));
  return FcdStatus::kDone;
}

FcdStatus FileOperations::apply(std::uint32_t number, const Asker& asker, const FileName& name) {
  const VsanAccess access = switch_.change_vsan(number, asker);
  if (access.status != FcdStatus::kDone) return access.status;
  Vsan& vsan = *access.vsan;
  const ConfigurationFile* file = find_file(vsan, name);
  if (file == nullptr) return FcdStatus::kNoSuchFile;
  if (const FcdStatus refused = check_writable(vsan, kActiveConfiguration);
      refused != FcdStatus::kDone) {
    return refused;
  }
  replace(vsan, asker, kActiveConfiguration, *file, readable(name) + " applied");
  return FcdStatus::kDone;
}

FcdStatus FileOperations::save_active(std::uint32_t number, const Asker& asker,
                                      const FileName& name) {
  const VsanAccess access = switch_.change_vsan(number, asker);
  if (access.status != FcdStatus::kDone) return access.status;
  Vsan& vsan = *access.vsan;
  if (name == kActiveConfiguration) return FcdStatus::kBadFileName;
  if (const FcdStatus refused = check_writable(vsan, name); refused != FcdStatus::kDone) {
    return refused;
  }
  if (!has_room_for(vsan, name)) return FcdStatus::kTooManyFiles;
  replace(vsan, asker, name, vsan.files.active,
          "the active configuration saved as " + readable(name));
  return FcdStatus::kDone;
}

FcdStatus FileOperations::change(std::uint32_t number, const Asker& asker, const FileTarget& target,
                                 const Edit& edit, const std::string& detail) {
  const VsanAccess access = switch_.change_vsan(number, asker);
  if (access.status != FcdStatus::kDone) return access.status;
  Vsan& vsan = *access.vsan;
  if (const FileKey key = key_of(number, asker, target); key != 0) {
    FileEdit* open_edit = switch_.sessions.edits.find(key, asker.connection);
    if (open_edit == nullptr || open_edit->vsan != number) return FcdStatus::kNoSuchEdit;
    ConfigurationFile draft = open_edit->draft;  // a refused request changes nothing of it
    const FcdStatus refused = edit(draft);
    if (refused == FcdStatus::kDone) open_edit->draft = std::move(draft);
    return refused;
  }
  if (const FcdStatus refused = check_writable(vsan, target.name); refused != FcdStatus::kDone) {
    return refused;
  }
  const ConfigurationFile* file = find_file(vsan, target.name);
  if (file == nullptr) return FcdStatus::kNoSuchFile;
  ConfigurationFile changed = *file;
  if (const FcdStatus refused = edit(changed); refused != FcdStatus::kDone) return refused;
  if (changed == *file) return FcdStatus::kDone;
  replace(vsan, asker, target.name, std::move(changed), readable(target.name) + ": " + detail);
  return FcdStatus::kDone;
}

FcdStatus FileOperations::write_contents(std::uint32_t number, const Asker& asker,
                                         const FileTarget& target, std::uint32_t offset,
                                         std::span<const std::uint8_t> piece) {
  if (std::uint64_t{offset} + piece.size() > switch_.options().max_file_contents) {
    return FcdStatus::kFileTooLarge;
  }
  const FileKey key = key_of(number, asker, target);
  if (key == 0) {
    const auto file = offset == 0 ? from_contents(piece) : std::nullopt;
    if (!file) return FcdStatus::kBadFileContents;
    return change(
        number, asker, target,
        [&](ConfigurationFile& changed) {
          changed = *file;
          return FcdStatus::kDone;
        },
        "contents uploaded");
  }
  const VsanAccess access = switch_.change_vsan(number, asker);
  if (access.status != FcdStatus::kDone) return access.status;
  FileEdit* edit = switch_.sessions.edits.find(key, asker.connection);
  if (edit == nullptr || edit->vsan != number) return FcdStatus::kNoSuchEdit;
  if (!edit->upload) edit->upload.emplace();
  if (edit->upload->size() < offset + piece.size()) edit->upload->resize(offset + piece.size());
  std::ranges::copy(piece, edit->upload->begin() + offset);
  return FcdStatus::kDone;
}

void FileOperations::replace(Vsan& vsan, const Asker& asker, const FileName& name,
                             ConfigurationFile file, std::string detail) {
  if (name == kActiveConfiguration) {
    vsan.files.active = std::move(file);
    if (vsan.modes.auto_save) {
      vsan.files.named[kIplFile] = vsan.files.active;
      switch_.touched.object(file_object(vsan.number, kIplFile));
    }
  } else {
    vsan.files.named[name] = std::move(file);
  }
  switch_.touched.object(file_object(vsan.number, name));
  switch_.changed(vsan, asker, Change::kFile, std::move(detail));
}

}  // namespace ficon::emulator
