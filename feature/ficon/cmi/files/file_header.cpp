/** A file's header and the description in it. */
#include <platform/ficon_base.h>

#include <cstring>

#include "core/fcd_lock.h"
#include "exchange/exchange.h"
#include "files/file_name.h"
#include "files/file_request.h"
#include "wire/code_set.h"

using namespace ficon;

namespace {

constexpr std::uint8_t kLongestDescription = 24;

/** The file's name into the record, and the description to EBCDIC in the caller's own header. */
Status prepare_header(const Caller& caller, std::uint32_t codepage, char* file_name,
                      ficon_cmi_file_hdr_t* header, wire::FileRequest* record) {
  const bool ascii = names_are_ascii(caller.requester);
  if (file_name != nullptr) {
    if (const Status refused = prepare_name(ascii, codepage, file_name, &record->file_name)) {
      return refused;
    }
  }
  if (!ascii) return status::kOk;
  return convert_codepage(wire::kAsciiCodeSet, codepage,
                          reinterpret_cast<std::uint8_t*>(header->description),
                          sizeof header->description);
}

}  // namespace

uint32_t ficon_cmi_file_set_file_hdr_nonblock(uint32_t requester, mts_handle_t handle,
                                              const char* word_a, const char* word_b, uint32_t wait,
                                              uint32_t vsan, char* file_name,
                                              const uint32_t* file_key,
                                              ficon_cmi_file_hdr_t* header, mts_msg_ref_t* msg) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  wire::FileRequest record = file_request(caller, wire::FileOperation::kSetHeader, vsan);
  put_key(record.file_key, file_key);
  if (header == nullptr) return status::kInvalidPayload;
  const std::uint32_t codepage = codepage_of(caller, vsan);
  if (codepage == 0) return status::kNotEnabled;
  if (const Status refused = prepare_header(caller, codepage, file_name, header, &record)) {
    return refused;
  }
  return FileChangeTlvs()
      .add(wire::TlvType::kFileRequest, record)
      .add(wire::TlvType::kFileHeader, *header)
      .send(caller, wire::Opcode::kFileChange, msg);
}

uint32_t ficon_cmi_file_set_file_hdr(uint32_t requester, mts_handle_t handle, const char* word_a,
                                     const char* word_b, uint32_t wait, uint32_t vsan,
                                     char* file_name, const uint32_t* file_key,
                                     ficon_cmi_file_hdr_t* header) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  return locked(caller, vsan, [&] {
    return exchange(
        caller,
        [&](mts_msg_ref_t* request) {
          return ficon_cmi_file_set_file_hdr_nonblock(requester, handle, word_a, word_b, wait, vsan,
                                                      file_name, file_key, header, request);
        },
        report_nothing, ficon_cmi_file_parse_set_port_cfg);
  });
}

uint32_t ficon_cmi_file_set_file_desc(uint32_t requester, mts_handle_t handle, const char* word_a,
                                      const char* word_b, uint32_t wait, uint32_t vsan,
                                      char* file_name, const char* description,
                                      uint8_t description_length) {
  if (description_length < 1 || description_length > kLongestDescription) {
    return status::kInvalidPayload;
  }
  if (description == nullptr || file_name == nullptr) return status::kInvalidPayload;
  ficon_cmi_file_hdr_t header{};
  std::memset(header.description, ' ', sizeof header.description);
  std::memcpy(header.description, description, description_length);
  return ficon_cmi_file_set_file_hdr(requester, handle, word_a, word_b, wait, vsan, file_name,
                                     nullptr, &header);
}
