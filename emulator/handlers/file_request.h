/** What the handlers of file requests share: reading the file request record and answering it. */
#pragma once

#include <bit>

#include "handlers/tlv_message.h"
#include "model/file_operations.h"
#include "wire/file_request.h"

namespace ficon::emulator {

inline FileName file_name(const wire::FileNameField& field) {
  return std::bit_cast<FileName>(field);
}
inline wire::FileNameField name_field(const FileName& name) {
  return std::bit_cast<wire::FileNameField>(name);
}

inline FileTarget target_of(const wire::FileRequest& request) {
  return {request.file_key.get(), file_name(request.file_name)};
}

/** The request's own record as the beginning of its reply. */
inline wire::FileRequest reply_to(const wire::FileRequest& request, FcdStatus status) {
  wire::FileRequest reply = request;
  reply.status.set(static_cast<Status>(status));
  return reply;
}

}  // namespace ficon::emulator
