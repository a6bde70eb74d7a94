/** Reading a saved file: a slice of its stored contents. */
#include <platform/mts.h>

#include <cstring>

#include "exchange/console.h"
#include "exchange/exchange.h"
#include "exchange/tlv_reader.h"
#include "files/file_name.h"
#include "files/file_request.h"

using namespace ficon;

namespace {

/** What a reply says that does not begin with the data: fcd's refusal, or nothing of use. */
Status judge_without_data(const Tlv& tlv) {
  if (tlv.is(wire::TlvType::kFileRequest)) {
    const Status refused = tlv.read<wire::FileRequest>().status.get();
    if (refused != 0) return refused;
  }
  console("invalid cmi payload: file data tlv not found\n");
  return status::kInvalidPayload;
}

}  // namespace

uint32_t ficon_cmi_get_saved_file_nonblock(uint32_t requester, mts_handle_t handle,
                                           const char* word_a, const char* word_b, uint32_t wait,
                                           uint32_t vsan, char* file_name, const uint32_t* file_key,
                                           uint32_t convert, uint32_t codepage,
                                           mts_msg_ref_t* msg) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  auto record =
      request_header<wire::FileRequest>(caller, wire::MessageType::kGet, wire::Subtype::kFile);
  record.vsan.set(vsan);  // the requester is not sent
  put_key(record.file_key, file_key);
  if (const Status refused =
          prepare_name(convert == kConvert, codepage, file_name, &record.file_name)) {
    return refused;
  }
  return RequestTlvs()
      .add(wire::TlvType::kFileRequest, record)
      .send(caller, wire::Opcode::kGetSavedFile, msg);
}

uint32_t ficon_cmi_parse_get_saved_file(mts_msg_ref_t* reply, int32_t offset, uint8_t* buffer,
                                        int32_t buffer_length, uint32_t* copied) {
  if (copied != nullptr) *copied = 0;
  if (offset < 0 || buffer_length < 0) return status::kInvalidPayload;
  TlvReader reader(mts_payload_get(reply));
  if (reader.empty()) {
    console(kNoTlvs);
    return status::kInvalidPayload;
  }
  Tlv data{};
  if (const Status failure = reader.read_next(data)) return failure;
  if (!data.is(wire::TlvType::kFileData)) return judge_without_data(data);
  const auto from = static_cast<std::uint32_t>(offset);
  if (from > data.length) return status::kInvalidPayload;

  Tlv record{};
  if (const Status failure = reader.read_next(record)) return failure;
  if (!record.is(wire::TlvType::kFileRequest)) {
    console("invalid cmi payload: file ops tlv not found\n");
    return status::kInvalidPayload;
  }
  if (const Status refused = record.read<wire::FileRequest>().status.get()) return refused;
  const std::uint32_t there = data.length - from;
  const auto room = static_cast<std::uint32_t>(buffer_length);
  const std::uint32_t length = there < room ? there : room;
  if (length != 0) {
    std::memcpy(buffer, static_cast<const std::uint8_t*>(data.value) + from, length);
  }
  if (copied != nullptr) *copied = length;
  return status::kOk;
}

uint32_t ficon_cmi_get_saved_file(uint32_t requester, mts_handle_t handle, const char* word_a,
                                  const char* word_b, uint32_t wait, uint32_t vsan, char* file_name,
                                  const uint32_t* file_key, int32_t offset, uint8_t* buffer,
                                  int32_t buffer_length, uint32_t* copied) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  const std::uint32_t codepage = codepage_of(caller, vsan);
  if (codepage == 0) return status::kNotEnabled;
  return exchange(
      caller,
      [&](mts_msg_ref_t* request) {
        return ficon_cmi_get_saved_file_nonblock(requester, handle, word_a, word_b, wait, vsan,
                                                 file_name, file_key, kConvert, codepage, request);
      },
      [](Status failure) {
        console("%s(%d):ficon_cmi_get_saved_file_nonblock failed:%d\n", "ficon_cmi_get_saved_file",
                __LINE__, static_cast<int>(failure));
      },
      [&](mts_msg_ref_t* reply) {
        return ficon_cmi_parse_get_saved_file(reply, offset, buffer, buffer_length, copied);
      });
}
