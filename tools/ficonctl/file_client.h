/** Configuration files through the library: reading a file's ports, and edits of a whole. */
#pragma once

#include <ficon_cmi.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "port_table.h"
#include "session.h"
#include "wire/file_request.h"

namespace ficon::ctl {

/** A file of a VSAN, or its active configuration where the name is empty. */
struct FileName {
  std::uint32_t vsan;
  std::string name;

  /** "file PROD of VSAN 20" or "the active configuration of VSAN 20". */
  std::string text() const;
};

/** In capital letters, as files are stored. */
FileName named_file(const std::string& vsan, std::string name);
/** For commands that also take the active configuration: an empty name, or `active`. */
FileName file_or_active(const std::string& vsan, const std::string& name);

inline constexpr std::size_t kDescriptionLength = 24;

/** A name as the library wants it: a writable buffer that it may change, 9 bytes. */
class NameBuffer {
 public:
  explicit NameBuffer(const std::string& name);
  /** For the requests that convert names for operators and agents only: a host's are EBCDIC. */
  static NameBuffer for_requester(Session& session, const FileName& file);
  /** Null for the active configuration. */
  char* get() { return text_[0] == '\0' ? nullptr : text_; }

 private:
  char text_[9] = {};
};

struct FileFacts {
  std::string name;
  std::string description;
  bool equals_active;
  std::uint8_t editor;  // requester code of who has it open; 0 nobody
};

std::vector<FileFacts> list_files(Session& session, std::uint32_t vsan);
PortTable read_ports(Session& session, const FileName& file, std::uint32_t key = 0);

/** One operation on a whole file that needs no key. */
void file_operation(Session& session, const FileName& file, wire::FileOperation operation,
                    const std::string& what);

/** Copies to a name that is not there yet. */
void copy_file(Session& session, const FileName& from, const FileName& to);

/** An edit of a file: nothing shows before `keep`, and what is not kept is discarded. */
class FileEdit {
 public:
  FileEdit(Session& session, FileName file);
  FileEdit(const FileEdit&) = delete;
  FileEdit& operator=(const FileEdit&) = delete;
  ~FileEdit();

  /** Sends what differs between the two tables. */
  void change(const PortTable& before, const PortTable& after);
  void rename(const std::string& name);
  /** Up to 24 characters; the whole header is written. */
  void describe(const std::string& text);
  void keep();

  std::uint32_t key() const { return key_; }
  /** Whether there was no such file. */
  bool is_new() const { return is_new_; }

 private:
  Session& session_;
  FileName file_;
  std::uint32_t key_ = 0;
  bool is_new_ = false;
};

/** Refuses a name that the VSAN's code page cannot hold, naming the character. */
void check_port_name(Session& session, std::uint32_t vsan, const std::string& name);

}  // namespace ficon::ctl
