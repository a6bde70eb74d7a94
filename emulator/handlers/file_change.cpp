/** Opcode 7866: changes of a file's ports and header, and the copy of a file. */
#include <cstdio>

#include "handlers/file_request.h"
#include "handlers/files.h"
#include "wire/port_settings.h"

namespace ficon::emulator {
namespace {

using wire::FileOperation;
using wire::TlvType;

FcdStatus set_blocked(ConfigurationFile& file, const wire::PortBlockedEntry& entry) {
  return file.set_blocked(entry.port_address.get(), entry.blocked);
}

FcdStatus set_name(ConfigurationFile& file, const wire::PortNameEntry& entry) {
  return file.set_name(entry.port_address.get(), std::bit_cast<PortName>(entry.port_name));
}

FcdStatus change_prohibited(ConfigurationFile& file, const wire::ProhibitEntry& entry) {
  return file.change_prohibited(entry.port_address.get(), entry.common_value.get(),
                                PortSet(std::bit_cast<PortSet::Mask>(entry.bitset)));
}

FcdStatus set_header(ConfigurationFile& file, const wire::FileHeader& header) {
  file.header = std::bit_cast<FileHeader>(header);
  return FcdStatus::kDone;
}

/** For the history: "ports 1a, 1b, 2f blocking changed". */
template <class Entry>
std::string describe(const std::vector<const Entry*>& entries, const char* what) {
  constexpr std::size_t kNamed = 8;
  std::string text = "ports";
  for (std::size_t i = 0; i < entries.size() && i < kNamed; ++i) {
    char address[16];
    std::snprintf(address, sizeof address, "%s %02x", i == 0 ? "" : ",",
                  unsigned{entries[i]->port_address.get()});
    text += address;
  }
  if (entries.size() > kNamed) text += " and " + std::to_string(entries.size() - kNamed) + " more";
  return text + ": " + what;
}

/** Every TLV behind the request record is one entry, and all of them or none are applied. */
template <class Entry>
Answer change_ports(const TlvMessage& message, TlvType type, Switch& model,
                    const wire::FileRequest& asked, const Asker& asker, const char* what,
                    FcdStatus (*apply)(ConfigurationFile&, const Entry&)) {
  std::vector<const Entry*> entries;
  for (const TlvMessage::Tlv& tlv : message.tlvs()) {
    if (tlv.type == TlvType::kFileRequest) continue;
    const Entry* entry = tlv.type == type ? whole_record<Entry>(tlv.value) : nullptr;
    if (entry == nullptr) return Malformed{"file change with a TLV of the wrong type or length"};
    entries.push_back(entry);
  }
  const auto apply_all = [&](ConfigurationFile& file) {
    for (const Entry* entry : entries) {
      if (const FcdStatus refused = apply(file, *entry); refused != FcdStatus::kDone) {
        return refused;
      }
    }
    return FcdStatus::kDone;
  };
  return FileOperations(model).change(asked.vsan.get(), asker, target_of(asked), apply_all,
                                      describe(entries, what));
}

Answer change_header(const TlvMessage& message, Switch& model, const wire::FileRequest& asked,
                     const Asker& asker) {
  const auto* header = message.record<wire::FileHeader>(TlvType::kFileHeader);
  if (header == nullptr) return Malformed{"file header request without its header TLV"};
  return FileOperations(model).change(
      asked.vsan.get(), asker, target_of(asked),
      [&](ConfigurationFile& file) { return set_header(file, *header); }, "header written");
}

}  // namespace

Answer handle_file_change(const Request& request, Switch& model) {
  const auto message = TlvMessage::parse(request.payload);
  if (!message) return Malformed{"file change is no TLV array"};
  const auto* asked = message->record<wire::FileRequest>(TlvType::kFileRequest);
  if (asked == nullptr) return Malformed{"file change without its request record"};
  const Asker asker = request.asker(asked->requester.get());
  switch (FileOperation{asked->operation.get()}) {
    case FileOperation::kPortName:
      return change_ports(*message, TlvType::kPortName, model, *asked, asker, "named", set_name);
    case FileOperation::kPortBlocked:
      return change_ports(*message, TlvType::kPortBlocked, model, *asked, asker, "blocking changed",
                          set_blocked);
    case FileOperation::kProhibitBitset:
      return change_ports(*message, TlvType::kProhibitBitset, model, *asked, asker,
                          "prohibits changed", change_prohibited);
    case FileOperation::kSetHeader:
      return change_header(*message, model, *asked, asker);
    case FileOperation::kCopy:
      return FileOperations(model).copy(asked->vsan.get(), asker, file_name(asked->file_name),
                                        file_name(asked->file_name2));
    default:
      return FcdStatus::kUnknownOperation;
  }
}

}  // namespace ficon::emulator
