/** Building the file request record and its array: what the senders of file changes share. */
#pragma once

#include "exchange/header.h"
#include "exchange/tlv_writer.h"
#include "wire/file_request.h"

namespace ficon {

/** A record that names requester, operation and VSAN. */
inline wire::FileRequest file_request(const Caller& caller, wire::FileOperation operation,
                                      std::uint32_t vsan) {
  auto record =
      request_header<wire::FileRequest>(caller, wire::MessageType::kSet, wire::Subtype::kFile);
  record.requester.set(caller.requester);
  record.operation.set(static_cast<std::uint32_t>(operation));
  record.vsan.set(vsan);
  return record;
}

/** The key goes as it stands, where there is one. */
inline void put_key(wire::host32& field, const std::uint32_t* file_key) {
  if (file_key != nullptr) field.set(*file_key);
}

using FileChangeTlvs = TlvArray<10240>;

}  // namespace ficon
