/** The files of a VSAN: their names and descriptions. */
#include <platform/ficon_base.h>
#include <platform/mts.h>

#include <cstring>

#include "exchange/allocation.h"
#include "exchange/console.h"
#include "exchange/exchange.h"
#include "exchange/tlv_reader.h"
#include "files/file_name.h"
#include "files/file_request.h"
#include "wire/code_set.h"

using namespace ficon;

namespace {

constexpr auto kGetNext = static_cast<std::uint32_t>(wire::MessageType::kGetNext);

bool is_empty(const char* name) {
  return name == nullptr || name[0] == '\0';
}

/** First pass: the head judged, the files counted. */
Status judge_files(TlvReader& reader, std::uint32_t* files) {
  bool seen = false;
  const Status failure = for_each_tlv(reader, [&](const Tlv& tlv) {
    if (tlv.is(wire::TlvType::kFileInfo)) ++*files;
    if (!tlv.is(wire::TlvType::kFileRequest)) return status::kOk;
    seen = true;
    return tlv.read<wire::FileRequest>().status.get();
  });
  if (failure != 0 || seen) return failure;
  console("Unrecognised response for the request\n");
  return status::kInvalidPayload;
}

/** Name and description in place; what a conversion cannot do is let pass, as is intended. */
void convert_texts(ficon_cmi_file_info_t* file, std::uint32_t codepage) {
  char name[sizeof file->file_name] = {};
  convert_ebcdic_filename_to_ascii(codepage, reinterpret_cast<const std::uint8_t*>(file->file_name),
                                   name);
  std::memcpy(file->file_name, name, sizeof name);
  convert_codepage(codepage, wire::kAsciiCodeSet,
                   reinterpret_cast<std::uint8_t*>(file->description), sizeof file->description);
}

/** Second pass: the records, back to back. */
Status copy_files(TlvReader& reader, ficon_cmi_file_info_t* list, bool to_ascii,
                  std::uint32_t codepage) {
  reader.rewind();
  return for_each_tlv(reader, [&](const Tlv& tlv) -> Status {
    if (!tlv.is(wire::TlvType::kFileInfo)) return status::kOk;
    if (tlv.length != sizeof *list) {
      console("Invalid size ficon_cmi_port_info_t payload\n");  // the port's type: intended
      return status::kInvalidPayload;
    }
    std::memcpy(list, tlv.value, sizeof *list);
    if (to_ascii) convert_texts(list, codepage);
    ++list;
    return status::kOk;
  });
}

std::uint32_t codepage_for(const Caller& c, std::uint32_t msgtype, std::uint32_t vsan,
                           const char* file_name) {
  if (msgtype == kGetNext && vsan == 0 && is_empty(file_name)) {
    return ficon_cmi_getnext_codepage(c.requester, c.handle, c.word_a, c.word_b, c.wait, nullptr);
  }
  return codepage_of(c, vsan);
}

}  // namespace

uint32_t ficon_cmi_file_info_nonblock(uint32_t requester, mts_handle_t handle, const char* word_a,
                                      const char* word_b, uint32_t wait, uint32_t op,
                                      uint32_t msgtype, uint32_t vsan, const uint8_t* ebcdic_name,
                                      mts_msg_ref_t* msg) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  auto record = request_header<wire::FileRequest>(caller, msgtype, wire::Subtype::kFile);
  record.requester.set(requester);
  __builtin_memcpy(&record.operation, &op, sizeof op);  // as it stands, here alone: intended
  record.vsan.set(vsan);
  if (ebcdic_name != nullptr) {
    const std::size_t length =
        strnlen(reinterpret_cast<const char*>(ebcdic_name), sizeof record.file_name.raw);
    std::memcpy(record.file_name.raw, ebcdic_name, length);
  }
  return RequestTlvs()
      .add(wire::TlvType::kFileRequest, record)
      .send(caller, wire::Opcode::kFileInfo, msg);
}

uint32_t ficon_cmi_parse_file_info(uint32_t /*requester*/, mts_msg_ref_t* reply,
                                   ficon_cmi_file_info_t** list, uint32_t convert,
                                   uint32_t codepage, uint32_t* count) {
  TlvReader reader(mts_payload_get(reply));
  if (reader.empty()) {
    console(kNoTlvs);
    return status::kInvalidPayload;
  }
  std::uint32_t files = 0;
  if (const Status failure = judge_files(reader, &files)) return failure;
  if (count != nullptr) *count = files;
  if (list == nullptr) return status::kOk;
  *list = nullptr;
  if (files == 0) return status::kOk;
  Tracked<ficon_cmi_file_info_t> copy(
      allocate(TEVRAK_MEM_file_info, files * sizeof(ficon_cmi_file_info_t), __LINE__));
  if (!copy) return status::kNoMemory;  // the plain 1: intended
  if (const Status failure = copy_files(reader, copy.get(), convert == kConvert, codepage)) {
    return failure;
  }
  *list = copy.release();
  return status::kOk;
}

uint32_t ficon_cmi_file_info(uint32_t requester, mts_handle_t handle, const char* word_a,
                             const char* word_b, uint32_t wait, uint32_t op, uint32_t msgtype,
                             uint32_t vsan, char* file_name, ficon_cmi_file_info_t** list,
                             uint32_t* count) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  const std::uint32_t codepage = codepage_for(caller, msgtype, vsan, file_name);
  if (codepage == 0) return status::kNotEnabled;
  wire::FileNameField name{};  // zero for an empty name: all files
  if (!is_empty(file_name)) {
    if (const Status refused = prepare_name(true, codepage, file_name, &name)) return refused;
  }
  return exchange(
      caller,
      [&](mts_msg_ref_t* request) {
        return ficon_cmi_file_info_nonblock(requester, handle, word_a, word_b, wait, op, msgtype,
                                            vsan, file_name == nullptr ? nullptr : name.raw,
                                            request);
      },
      [](Status failure) {
        console("%s(%d):ficon_cmi_file_info_nonblock failed:%d\n", "ficon_cmi_file_info", __LINE__,
                static_cast<int>(failure));
      },
      [&](mts_msg_ref_t* reply) {
        return ficon_cmi_parse_file_info(requester, reply, list, kConvert, codepage, count);
      });
}
