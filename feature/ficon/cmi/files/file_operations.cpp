/** Operations on whole files, and the copy of one file to another. */
#include <platform/mts.h>

#include <cctype>
#include <cstring>

#include "core/fcd_lock.h"
#include "exchange/console.h"
#include "exchange/exchange.h"
#include "exchange/tlv_reader.h"
#include "files/file_name.h"
#include "files/file_request.h"

using namespace ficon;

namespace {

/**
 * A name for operation 2 is upper-cased and loses its trailing white space in the caller's own
 * buffer. IPL is reserved.
 */
Status normalise_name(char* name) {
  for (char* c = name; *c != '\0'; ++c) {
    *c = static_cast<char>(std::toupper(static_cast<unsigned char>(*c)));
  }
  for (std::size_t length = std::strlen(name);
       length > 0 && std::isspace(static_cast<unsigned char>(name[length - 1])) != 0; --length) {
    name[length - 1] = '\0';
  }
  return std::strcmp(name, "IPL") == 0 ? status::kReservedName : status::kOk;
}

}  // namespace

uint32_t ficon_cmi_file_ops_nonblock(uint32_t requester, mts_handle_t handle, const char* word_a,
                                     const char* word_b, uint32_t wait, uint32_t vsan, uint32_t op,
                                     char* file_name, const uint32_t* file_key, uint32_t convert,
                                     uint32_t codepage, mts_msg_ref_t* msg) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  const auto operation = static_cast<wire::FileOperation>(op);
  wire::FileRequest record = file_request(caller, operation, vsan);
  put_key(record.file_key, file_key);
  if (file_name != nullptr) {
    if (operation == wire::FileOperation::kDelete) {
      if (const Status refused = normalise_name(file_name)) return refused;
    }
    if (const Status refused =
            prepare_name(convert == kConvert, codepage, file_name, &record.file_name)) {
      return refused;
    }
  }
  return RequestTlvs()
      .add(wire::TlvType::kFileRequest, record)
      .send(caller, wire::Opcode::kFileOperation, msg);
}

uint32_t ficon_cmi_parse_file_ops(mts_msg_ref_t* reply, uint32_t* file_key, uint8_t* reply_flag,
                                  uint32_t* status) {
  TlvReader reader(mts_payload_get(reply));
  if (reader.empty()) {
    console(kNoTlvs);
    return status::kInvalidPayload;
  }
  // A reply without the record counts as success and leaves the outputs untouched: intended.
  return for_each_tlv(reader, [&](const Tlv& tlv) {
    if (!tlv.is(wire::TlvType::kFileRequest)) return status::kOk;
    const auto record = tlv.read<wire::FileRequest>();
    if (file_key != nullptr) *file_key = record.file_key.get();
    if (status != nullptr) *status = record.status.get();
    if (reply_flag != nullptr) *reply_flag = record.reply_flag;
    return record.status.get();
  });
}

uint32_t ficon_cmi_file_ops(uint32_t requester, mts_handle_t handle, const char* word_a,
                            const char* word_b, uint32_t wait, uint32_t vsan, uint32_t op,
                            char* file_name, uint32_t* file_key, uint8_t* reply_flag,
                            uint32_t* status) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  return locked(caller, vsan, [&]() -> Status {
    const std::uint32_t codepage = codepage_of(caller, vsan);
    if (codepage == 0) return status::kNotEnabled;
    return exchange(
        caller,
        [&](mts_msg_ref_t* request) {
          return ficon_cmi_file_ops_nonblock(requester, handle, word_a, word_b, wait, vsan, op,
                                             file_name, file_key, kConvert, codepage, request);
        },
        report_nothing,
        [&](mts_msg_ref_t* reply) {
          return ficon_cmi_parse_file_ops(reply, file_key, reply_flag, status);
        });
  });
}

uint32_t ficon_cmi_file_copy_nonblock(uint32_t requester, mts_handle_t handle, const char* word_a,
                                      const char* word_b, uint32_t wait, uint32_t vsan,
                                      char* source_name, char* destination_name,
                                      mts_msg_ref_t* msg) {
  if (source_name == nullptr || destination_name == nullptr) return status::kInvalidPayload;
  const Caller caller{requester, handle, word_a, word_b, wait};
  wire::FileRequest record = file_request(caller, wire::FileOperation::kCopy, vsan);
  const std::uint32_t codepage = codepage_of(caller, vsan);
  if (codepage == 0) return status::kNotEnabled;  // raw names do without it, but fail as well
  const bool ascii = names_are_ascii(requester);
  if (const Status refused = prepare_name(ascii, codepage, source_name, &record.file_name)) {
    return refused;
  }
  if (const Status refused = prepare_name(ascii, codepage, destination_name, &record.file_name2)) {
    return refused;
  }
  return FileChangeTlvs()
      .add(wire::TlvType::kFileRequest, record)
      .send(caller, wire::Opcode::kFileChange, msg);
}

uint32_t ficon_cmi_file_copy(uint32_t requester, mts_handle_t handle, const char* word_a,
                             const char* word_b, uint32_t wait, uint32_t vsan, char* source_name,
                             char* destination_name) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  return locked(caller, vsan, [&] {
    return exchange(
        caller,
        [&](mts_msg_ref_t* request) {
          return ficon_cmi_file_copy_nonblock(requester, handle, word_a, word_b, wait, vsan,
                                              source_name, destination_name, request);
        },
        report_nothing, ficon_cmi_file_parse_set_port_cfg);
  });
}
