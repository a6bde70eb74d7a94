/** Opcode 7861: open, keep, discard and the other operations on whole files. */
#include "handlers/file_request.h"
#include "handlers/files.h"

namespace ficon::emulator {
namespace {

using wire::FileOperation;

/** What the reply flag of a granted open says. */
constexpr std::uint8_t kOpenedFile = 0;
constexpr std::uint8_t kOpenedNewFile = 1;

struct Outcome {
  FcdStatus status;
  FileKey key = 0;
  std::uint8_t flag = 0;
};

/** A refused open says who is in the way: the requester code of the file's editor. */
Outcome open(Switch& model, std::uint32_t vsan, const Asker& asker, const FileName& name) {
  FileOperations files(model);
  Outcome outcome{};
  outcome.status = files.open(vsan, asker, name, outcome.key);
  if (outcome.status == FcdStatus::kDone) {
    const FileEdit* edit = model.sessions.edits.find(outcome.key, asker.connection);
    outcome.flag = edit->creates ? kOpenedNewFile : kOpenedFile;
  } else if (outcome.status == FcdStatus::kFileBeingEdited) {
    const FileEdit* edit = model.sessions.edits.editing(static_cast<VsanNumber>(vsan), name);
    outcome.flag = static_cast<std::uint8_t>(edit->editor.requester);
  }
  return outcome;
}

Outcome perform(Switch& model, const wire::FileRequest& asked, const Asker& asker) {
  FileOperations files(model);
  const std::uint32_t vsan = asked.vsan.get();
  const FileKey key = asked.file_key.get();
  const FileName name = file_name(asked.file_name);
  switch (FileOperation{asked.operation.get()}) {
    case FileOperation::kOpen:
      return open(model, vsan, asker, name);
    case FileOperation::kDelete:
      return {files.erase(vsan, asker, name)};
    case FileOperation::kRename:
      return {files.rename(vsan, asker, key, name), key};
    case FileOperation::kKeep:
      return {files.keep(vsan, asker, files.key_of(vsan, asker, {key, name}))};
    case FileOperation::kDiscard:
      return {files.discard(vsan, asker, files.key_of(vsan, asker, {key, name}))};
    case FileOperation::kApply:
      return {files.apply(vsan, asker, name)};
    case FileOperation::kSaveActive:
      return {files.save_active(vsan, asker, name)};
    default:
      return {FcdStatus::kUnknownOperation};
  }
}

}  // namespace

Answer handle_file_operation(const Request& request, Switch& model) {
  const auto message = TlvMessage::parse(request.payload);
  if (!message) return Malformed{"file operation is no TLV array"};
  const auto* asked = message->record<wire::FileRequest>(wire::TlvType::kFileRequest);
  if (asked == nullptr) return Malformed{"file operation without its request record"};
  const Outcome outcome = perform(model, *asked, request.asker(asked->requester.get()));
  wire::FileRequest reply = reply_to(*asked, outcome.status);
  reply.file_key.set(outcome.key);
  reply.reply_flag = outcome.flag;
  return TlvReply().add(wire::TlvType::kFileRequest, reply).take();
}

Bytes file_status_reply(ByteView request, FcdStatus status) {
  const auto message = TlvMessage::parse(request);
  const auto* tlv = message ? message->only(wire::TlvType::kFileRequest) : nullptr;
  auto reply = leading_record<wire::FileRequest>(tlv == nullptr ? ByteView{} : tlv->value);
  reply.status.set(static_cast<Status>(status));
  return TlvReply().add(wire::TlvType::kFileRequest, reply).take();
}

}  // namespace ficon::emulator
