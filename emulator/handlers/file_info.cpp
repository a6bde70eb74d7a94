/** Opcode 7857: the files of a VSAN. */
#include <algorithm>

#include "handlers/file_request.h"
#include "handlers/files.h"
#include "protocol/cmi_header.h"

namespace ficon::emulator {
namespace {

wire::FileInfo file_info(const Switch& model, const Vsan& vsan, const FileName& name,
                         const ConfigurationFile& file) {
  wire::FileInfo info{};
  info.vsan.set(vsan.number);
  info.is_ipl = name == kIplFile ? 1 : 0;
  const FileEdit* edit = model.sessions.edits.editing(vsan.number, name);
  info.editor = edit == nullptr ? 0 : static_cast<std::uint8_t>(edit->editor.requester);
  info.equals_active = file == vsan.files.active ? 1 : 0;
  std::ranges::copy(name, info.file_name.raw);
  info.description = std::bit_cast<wire::FileHeader>(file.header).description;
  return info;
}

/** All files, or the one that is named. */
FcdStatus list_files(const Switch& model, const Vsan& vsan, const FileName& name, TlvReply& reply) {
  if (name != kActiveConfiguration && !vsan.files.named.contains(name)) {
    return FcdStatus::kNoSuchFile;
  }
  for (const auto& [each, file] : vsan.files.named) {
    if (name != kActiveConfiguration && each != name) continue;
    reply.add(wire::TlvType::kFileInfo, file_info(model, vsan, each, file));
  }
  return FcdStatus::kDone;
}

/** The file behind the one that is named, in the order of the names' bytes. */
FcdStatus next_file(const Switch& model, const Vsan& vsan, const FileName& name, TlvReply& reply) {
  const auto next = vsan.files.named.upper_bound(name);
  if (next == vsan.files.named.end()) return FcdStatus::kNoSuchFile;
  reply.add(wire::TlvType::kFileInfo, file_info(model, vsan, next->first, next->second));
  return FcdStatus::kDone;
}

}  // namespace

Answer handle_file_info(const Request& request, Switch& model) {
  const auto message = TlvMessage::parse(request.payload);
  if (!message) return Malformed{"file information is no TLV array"};
  const auto* asked = message->record<wire::FileRequest>(wire::TlvType::kFileRequest);
  if (asked == nullptr) return Malformed{"file information without its request record"};
  const bool next = platform::message_type(asked->platform) == wire::MessageType::kGetNext;
  const std::uint32_t number = asked->vsan.get();
  const Vsan* vsan = next && number == 0 ? model.next_vsan(0) : model.find_vsan(number);
  if (vsan == nullptr) return next ? FcdStatus::kNoNextVsan : model.check_vsan(number);

  wire::FileRequest head = reply_to(*asked, FcdStatus::kDone);
  head.vsan.set(vsan->number);
  TlvReply reply;
  reply.add(wire::TlvType::kFileRequest, head);
  const FileName name = file_name(asked->file_name);
  const FcdStatus status =
      next ? next_file(model, *vsan, name, reply) : list_files(model, *vsan, name, reply);
  if (status != FcdStatus::kDone) return status;
  return reply.take();
}

}  // namespace ficon::emulator
