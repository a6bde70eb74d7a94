#include "file_client.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <cstring>
#include <memory>

#include "requester.h"
#include "vsan_record.h"
#include "wire/code_set.h"
#include "wire/fcd_status.h"
#include "wire/port_info.h"

namespace ficon::ctl {
namespace {

template <class T>
struct TrackedFree {
  void operator()(T* memory) const { mtrack_free(memory); }
};
template <class T>
using Tracked = std::unique_ptr<T[], TrackedFree<T>>;

constexpr std::uint32_t kNoVsanInReply = 0;

std::string trimmed(const char* text, std::size_t size) {
  std::string result(text, strnlen(text, size));
  result.erase(result.find_last_not_of(' ') + 1);
  return result;
}

Port to_port(const ficon_cmi_port_info_t& record) {
  const auto info = std::bit_cast<wire::PortInfo>(record);
  Port port{.port_number = info.port_number.get(),
            .if_index = info.if_index.get(),
            .installed = info.installed != 0,
            .blocked = info.blocked != 0,
            .name = trimmed(record.port_name, sizeof record.port_name),
            .prohibited = {}};
  for (std::uint32_t a = 0; a < port.prohibited.size(); ++a) {
    port.prohibited[a] = (info.prohibited.raw[a / 8] & (0x80 >> (a % 8))) != 0;
  }
  return port;
}

/** For operators and agents the library does; a host gives names and descriptions in EBCDIC. */
bool converts_names(const Session& session) {
  constexpr std::uint32_t kHost = 3;
  return session.requester() < kHost;
}

ficon_cmi_prohibit_entry_t prohibit_entry(std::uint32_t address, const PortSet& prohibited) {
  ficon_cmi_prohibit_entry_t entry{};
  entry.port_address = address;
  entry.common_value = 0;  // the mask replaces the one that is there
  for (std::uint32_t a = 0; a < prohibited.size(); ++a) {
    if (prohibited[a]) entry.bitset[a / 8] |= static_cast<std::uint8_t>(0x80 >> (a % 8));
  }
  return entry;
}

ficon_cmi_port_name_entry_t name_entry(std::uint32_t address, const std::string& name) {
  ficon_cmi_port_name_entry_t entry{};
  entry.port_address = address;
  std::copy_n(name.data(), std::min(name.size(), kPortNameLength), entry.port_name);
  return entry;
}

}  // namespace

std::string FileName::text() const {
  const std::string of_vsan = " of VSAN " + std::to_string(vsan);
  return name.empty() ? "the active configuration" + of_vsan : "file " + name + of_vsan;
}

FileName named_file(const std::string& vsan, std::string name) {
  std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::toupper(c); });
  return {parse_vsan(vsan), std::move(name)};
}

FileName file_or_active(const std::string& vsan, const std::string& name) {
  return name.empty() || name == "active" ? FileName{parse_vsan(vsan), ""} : named_file(vsan, name);
}

NameBuffer::NameBuffer(const std::string& name) {
  if (name.size() > 8) {
    throw UsageError("file name \"" + name + "\" is longer than 8 characters");
  }
  std::ranges::copy(name, text_);
}

NameBuffer NameBuffer::for_requester(Session& session, const FileName& file) {
  NameBuffer name(file.name);
  if (converts_names(session)) return name;
  NameBuffer ebcdic("");
  const std::uint32_t status =
      convert_ascii_filename_to_ebcdic(read_vsan(session, file.vsan).codepage, name.text_,
                                       reinterpret_cast<std::uint8_t*>(ebcdic.text_));
  if (status != 0) throw session.failure(status, "cannot name " + file.text());
  return ebcdic;
}

std::vector<FileFacts> list_files(Session& session, std::uint32_t vsan) {
  ficon_cmi_file_info_t* list = nullptr;
  std::uint32_t count = 0;
  session.require("cannot list the files of VSAN " + std::to_string(vsan), ficon_cmi_file_info, 0U,
                  kGet, vsan, nullptr, &list, &count);
  const Tracked<ficon_cmi_file_info_t> owned(list);
  std::vector<FileFacts> files;
  for (std::uint32_t i = 0; i < count; ++i) {
    const auto facts = std::bit_cast<wire::FileInfo>(list[i]);
    files.push_back({.name = trimmed(list[i].file_name, sizeof list[i].file_name),
                     .description = trimmed(list[i].description, sizeof list[i].description),
                     .equals_active = facts.equals_active != 0,
                     .editor = facts.editor});
  }
  return files;
}

PortTable read_ports(Session& session, const FileName& file, std::uint32_t key) {
  // In and out: the library writes back the name that the daemon answers with, terminator included.
  NameBuffer name(file.name);
  char no_name[9] = "";
  std::uint32_t vsan = file.vsan;
  ficon_cmi_port_info_t* list = nullptr;
  std::uint32_t count = 0;
  char* in_out_name = name.get() == nullptr ? no_name : name.get();
  session.require("cannot read " + file.text(), ficon_cmi_file_get_port_info_portaddr, kGet,
                  kNoVsanInReply, &vsan, in_out_name, key == 0 ? nullptr : &key, 0U,
                  kLastPortAddress, &list, &count);
  const Tracked<ficon_cmi_port_info_t> owned(list);
  PortTable ports{};
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t address = static_cast<std::uint32_t>(std::int32_t{list[i].port});
    if (address < kPortCount) ports[address] = to_port(list[i]);
  }
  return ports;
}

void file_operation(Session& session, const FileName& file, wire::FileOperation operation,
                    const std::string& what) {
  NameBuffer name(file.name);
  session.require(what + " " + file.text(), ficon_cmi_file_ops, file.vsan,
                  static_cast<std::uint32_t>(operation), name.get(), nullptr, nullptr, nullptr);
}

void copy_file(Session& session, const FileName& from, const FileName& to) {
  NameBuffer source = NameBuffer::for_requester(session, from);
  NameBuffer copy = NameBuffer::for_requester(session, to);
  session.require("cannot copy " + from.text() + " to " + to.name, ficon_cmi_file_copy, from.vsan,
                  source.get(), copy.get());
}

FileEdit::FileEdit(Session& session, FileName file) : session_(session), file_(std::move(file)) {
  NameBuffer name(file_.name);
  std::uint8_t flag = 0;  // of a new file 1; where the edit is refused, whose is in the way
  const std::uint32_t status = session_.ask(ficon_cmi_file_ops, file_.vsan,
                                            static_cast<std::uint32_t>(wire::FileOperation::kOpen),
                                            name.get(), &key_, &flag, nullptr);
  if (status == 0) {
    is_new_ = flag == 1;
    return;
  }
  const bool edited = status == static_cast<std::uint32_t>(FcdStatus::kFileBeingEdited);
  throw session_.failure(
      status, "cannot edit " + file_.text() + (edited ? ", open by " + requester_name(flag) : ""));
}

FileEdit::~FileEdit() {
  if (key_ == 0) return;
  session_.ask(ficon_cmi_file_ops, file_.vsan,
               static_cast<std::uint32_t>(wire::FileOperation::kDiscard), nullptr, &key_, nullptr,
               nullptr);
}

void FileEdit::change(const PortTable& before, const PortTable& after) {
  std::vector<ficon_cmi_port_blocked_entry_t> blocked;
  std::vector<ficon_cmi_port_name_entry_t> names;
  std::vector<ficon_cmi_prohibit_entry_t> prohibits;
  for (std::uint32_t a = 0; a < kPortCount; ++a) {
    if (before[a].blocked != after[a].blocked) {
      blocked.push_back(
          {static_cast<std::uint16_t>(a), static_cast<std::uint8_t>(after[a].blocked ? 1 : 0)});
    }
    if (before[a].name != after[a].name) names.push_back(name_entry(a, after[a].name));
    if (before[a].prohibited != after[a].prohibited) {
      prohibits.push_back(prohibit_entry(a, after[a].prohibited));
    }
  }
  const std::string what = "cannot change " + file_.text();
  const auto send = [&](auto function, const auto& entries) {
    if (entries.empty()) return;
    session_.require(what, function, file_.vsan, nullptr, &key_, entries.data(),
                     static_cast<std::uint32_t>(entries.size()), nullptr);
  };
  send(ficon_cmi_file_set_port_blocked_portaddr, blocked);
  send(ficon_cmi_file_set_port_name_portaddr, names);
  send(ficon_cmi_file_set_prohibit_bitset, prohibits);
}

void FileEdit::rename(const std::string& name) {
  NameBuffer new_name(name);
  session_.require("cannot rename " + file_.text(), ficon_cmi_file_ops, file_.vsan,
                   static_cast<std::uint32_t>(wire::FileOperation::kRename), new_name.get(), &key_,
                   nullptr, nullptr);
}

void FileEdit::describe(const std::string& text) {
  ficon_cmi_file_hdr_t header{};
  std::ranges::fill(header.description, ' ');
  std::copy_n(text.data(), std::min(text.size(), kDescriptionLength), header.description);
  const std::string what = "cannot describe " + file_.text();
  if (!converts_names(session_)) {
    auto* bytes = reinterpret_cast<std::uint8_t*>(header.description);
    const std::uint32_t status =
        convert_codepage_and_copy(wire::kAsciiCodeSet, read_vsan(session_, file_.vsan).codepage,
                                  bytes, bytes, kDescriptionLength);
    if (status != 0) throw session_.failure(status, what);
  }
  session_.require(what, ficon_cmi_file_set_file_hdr, file_.vsan, nullptr, &key_, &header);
}

void FileEdit::keep() {
  std::uint32_t key = key_;
  session_.require("cannot keep the changes of " + file_.text(), ficon_cmi_file_ops, file_.vsan,
                   static_cast<std::uint32_t>(wire::FileOperation::kKeep), nullptr, &key, nullptr,
                   nullptr);
  key_ = 0;
}

namespace {

/** The whole character that begins there, of one byte or, in UTF-8, of more. */
std::string character_at(const std::string& text, std::size_t at) {
  std::size_t end = at + 1;
  while (end < text.size() && (text[end] & 0xc0) == 0x80) ++end;
  return text.substr(at, end - at);
}

bool takes(std::uint32_t codepage, const std::string& character) {
  std::uint8_t ebcdic[kPortNameLength];
  const bool printable = character.size() == 1 && character[0] >= 0x20 && character[0] < 0x7f;
  return printable && convert_ascii_portname_to_ebcdic(codepage, character.c_str(), ebcdic) == 0;
}

}  // namespace

void check_port_name(Session& session, std::uint32_t vsan, const std::string& name) {
  const std::uint32_t codepage = read_vsan(session, vsan).codepage;
  std::string character;
  std::size_t at = 0;
  for (; at < name.size(); at += character.size()) {
    character = character_at(name, at);
    if (!takes(codepage, character)) break;
  }
  if (at < name.size()) {
    throw UsageError("port name \"" + name + "\": code page " + std::to_string(codepage) +
                     " of VSAN " + std::to_string(vsan) + " takes no character '" + character +
                     "'");
  }
  if (name.size() > kPortNameLength) {
    throw UsageError("port name \"" + name + "\" is longer than 24 characters");
  }
}

}  // namespace ficon::ctl
