/** Writing a saved file: a block of contents at an offset. */
#include <platform/mts.h>

#include "core/fcd_lock.h"
#include "exchange/allocation.h"
#include "exchange/console.h"
#include "exchange/exchange.h"
#include "files/file_name.h"
#include "files/file_request.h"

using namespace ficon;

namespace {

/** Room for the request record and the TLVs' own heads beside the data. */
constexpr std::uint32_t kRoomBesideData = 1024;

wire::FileRequest write_request(const Caller& caller, std::uint32_t vsan, std::int32_t data_offset,
                                const std::uint32_t* file_key) {
  auto record =
      request_header<wire::FileRequest>(caller, wire::MessageType::kSet, wire::Subtype::kFile);
  record.vsan.set(vsan);
  record.data_offset.set(static_cast<std::uint32_t>(data_offset));
  record.requester.set(caller.requester);
  put_key(record.file_key, file_key);
  return record;
}

}  // namespace

uint32_t ficon_cmi_set_saved_file_nonblock(uint32_t requester, mts_handle_t handle,
                                           const char* word_a, const char* word_b, uint32_t wait,
                                           uint32_t vsan, char* file_name, const uint32_t* file_key,
                                           int32_t data_offset, const uint8_t* data,
                                           uint32_t data_length, uint32_t convert,
                                           uint32_t codepage, mts_msg_ref_t* msg) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  std::uint32_t capacity = 0;
  const bool wraps = __builtin_add_overflow(data_length, kRoomBesideData, &capacity);
  Malloced<std::uint8_t> buffer(
      allocate(TEVRAK_MEM_savedfilebuff, wraps ? SIZE_MAX : capacity, __LINE__));
  if (!buffer) return status::kAllocationFailed;
  // A refused offset or name leaves the buffer allocated: intended.
  std::uint8_t* array = buffer.release();
  if (data_offset < 0) return status::kInvalidPayload;
  __builtin_memset(array, 0, capacity);
  wire::FileRequest record = write_request(caller, vsan, data_offset, file_key);
  if (const Status refused =
          prepare_name(convert == kConvert, codepage, file_name, &record.file_name)) {
    return refused;
  }
  // Tracked memory, released with plain `free`: intended.
  const Malloced<std::uint8_t> released(array);
  // The data's length is cut to 16 bits, the room for it is not: intended.
  return TlvWriter(array, capacity)
      .add(wire::TlvType::kFileRequest, record)
      .add(wire::TlvType::kFileData, data, static_cast<std::uint16_t>(data_length))
      .send(caller, wire::Opcode::kSetSavedFile, msg);
}

uint32_t ficon_cmi_parse_set_saved_file(mts_msg_ref_t* reply) {
  return ficon_cmi_file_parse_set_port_cfg(reply);  // the same record, and the same answers
}

uint32_t ficon_cmi_set_saved_file(uint32_t requester, mts_handle_t handle, const char* word_a,
                                  const char* word_b, uint32_t wait, uint32_t vsan, char* file_name,
                                  const uint32_t* file_key, int32_t data_offset,
                                  const uint8_t* data, uint32_t data_length) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  FcdLock lock(caller, vsan);
  if (lock.refused()) return status::kLockUnavailable;
  const std::uint32_t codepage = codepage_of(caller, vsan);
  if (codepage == 0) {
    lock.keep();  // the lock stays taken on this way out: intended
    return status::kNotEnabled;
  }
  return exchange(
      caller,
      [&](mts_msg_ref_t* request) {
        return ficon_cmi_set_saved_file_nonblock(requester, handle, word_a, word_b, wait, vsan,
                                                 file_name, file_key, data_offset, data,
                                                 data_length, kConvert, codepage, request);
      },
      [](Status failure) {
        console("%s(%d):ficon_cmi_set_saved_file_nonblock failed:%d\n", "ficon_cmi_set_saved_file",
                __LINE__, static_cast<int>(failure));
      },
      ficon_cmi_parse_set_saved_file);
}
