#include "handlers/saved_file.h"

#include <algorithm>

#include "handlers/file_request.h"
#include "model/file_contents.h"

namespace ficon::emulator {
namespace {

/** What one TLV holds. A read without a key gives the first slice, key k the one k slices on. */
constexpr std::size_t kSlice = 65535;

}  // namespace

Answer handle_get_saved_file(const Request& request, Switch& model) {
  const auto message = TlvMessage::parse(request.payload);
  if (!message) return Malformed{"reading a saved file is no TLV array"};
  const auto* asked = message->record<wire::FileRequest>(wire::TlvType::kFileRequest);
  if (asked == nullptr) return Malformed{"reading a saved file without its request record"};
  const std::uint32_t vsan = asked->vsan.get();
  if (const FcdStatus status = model.check_vsan(vsan); status != FcdStatus::kDone) return status;
  const ConfigurationFile* file = FileOperations(model).find(
      vsan, request.asker(asked->requester.get()), {.name = file_name(asked->file_name)});
  if (file == nullptr) return FcdStatus::kNoSuchFile;
  const std::vector<std::uint8_t> contents = to_contents(*file);
  const std::size_t begin = std::min(contents.size(), asked->file_key.get() * kSlice);
  const ByteView slice =
      ByteView(contents).subspan(begin, std::min(kSlice, contents.size() - begin));
  return TlvReply()
      .add(wire::TlvType::kFileData, slice)
      .add(wire::TlvType::kFileRequest, reply_to(*asked, FcdStatus::kDone))
      .take();
}

Answer handle_set_saved_file(const Request& request, Switch& model) {
  const auto message = TlvMessage::parse(request.payload);
  if (!message) return Malformed{"writing a saved file is no TLV array"};
  const auto* asked = message->record<wire::FileRequest>(wire::TlvType::kFileRequest);
  const auto* data = message->only(wire::TlvType::kFileData);
  if (asked == nullptr) return Malformed{"writing a saved file without its request record"};
  if (data == nullptr) return Malformed{"writing a saved file without its data"};
  return FileOperations(model).write_contents(
      asked->vsan.get(), request.asker(asked->requester.get()), target_of(*asked),
      asked->data_offset.get(), data->value);
}

}  // namespace ficon::emulator
