/** What fcd holds for one VSAN, and the questions that its record answers. */
#include <platform/ficon_base.h>

#include "core/fcd_lock.h"
#include "exchange/console.h"
#include "exchange/exchange.h"
#include "exchange/header.h"
#include "exchange/tlv_reader.h"
#include "exchange/tlv_writer.h"
#include "wire/cmi_header.h"
#include "wire/vsan_config.h"

using namespace ficon;

namespace {

constexpr auto kGet = static_cast<std::uint32_t>(wire::MessageType::kGet);
constexpr auto kGetNext = static_cast<std::uint32_t>(wire::MessageType::kGetNext);

/** The VSAN state in which automatic saving counts. */
constexpr std::uint32_t kVsanUp = 2;

/** First pass: refuses what fcd refused, and replies without a header. */
Status judge_vsan_info(TlvReader& reader) {
  bool seen = false;
  const Status failure = for_each_tlv(reader, [&](const Tlv& tlv) {
    if (!tlv.is(wire::TlvType::kHeader)) return status::kOk;
    seen = true;
    return tlv.read<wire::CmiHeader>().status.get();
  });
  if (failure != 0 || seen) return failure;
  console("Unrecognised response for the request\n");
  return status::kInvalidPayload;
}

bool saves_automatically(mts_handle_t handle, std::uint32_t wait, std::uint32_t vsan) {
  ficon_cmi_vsan_cfg_t record{};
  return ficon_cmi_get_vsan_info(1, handle, "VSH", "UNKNOWN", wait, kGet, vsan, &record) == 0 &&
         record.state == kVsanUp && record.auto_save != 0;
}

}  // namespace

uint32_t ficon_cmi_get_vsan_info_nonblock(uint32_t requester, mts_handle_t handle,
                                          const char* word_a, const char* word_b, uint32_t wait,
                                          uint32_t msgtype, uint32_t vsan, mts_msg_ref_t* msg) {
  const Caller caller{requester, handle, word_a, word_b, wait};
  auto header = request_header<wire::CmiHeader>(caller, msgtype, wire::Subtype::kVsan);
  header.vsan.set(vsan);  // the requester is not sent
  return RequestTlvs()
      .add(wire::TlvType::kHeader, header)
      .send(caller, wire::Opcode::kVsanInfo, msg);
}

uint32_t ficon_cmi_parse_vsan_info(mts_msg_ref_t* reply, ficon_cmi_vsan_cfg_t* record) {
  TlvReader reader(mts_payload_get(reply));
  if (reader.empty()) {
    console(kNoTlvs);
    return status::kInvalidPayload;
  }
  if (const Status failure = judge_vsan_info(reader)) return failure;
  reader.rewind();
  Tlv tlv{};
  if (!reader.find(wire::TlvType::kVsanConfig, tlv)) {
    return reader.status() != 0 ? reader.status() : status::kInvalidPayload;
  }
  // the whole record, whatever length its TLV claims: intended
  __builtin_memcpy(record, tlv.value, sizeof *record);
  return status::kOk;
}

uint32_t ficon_cmi_get_vsan_info(uint32_t requester, mts_handle_t handle, const char* word_a,
                                 const char* word_b, uint32_t wait, uint32_t msgtype, uint32_t vsan,
                                 ficon_cmi_vsan_cfg_t* record) {
  return exchange(
      {requester, handle, word_a, word_b, wait},
      [&](mts_msg_ref_t* request) {
        return ficon_cmi_get_vsan_info_nonblock(requester, handle, word_a, word_b, wait, msgtype,
                                                vsan, request);
      },
      report_nothing,
      [&](mts_msg_ref_t* reply) { return ficon_cmi_parse_vsan_info(reply, record); });
}

uint32_t ficon_cmi_get_codepage(uint32_t requester, mts_handle_t handle, const char* word_a,
                                const char* word_b, uint32_t wait, uint32_t vsan) {
  ficon_cmi_vsan_cfg_t record{};
  const Status failure =
      ficon_cmi_get_vsan_info(requester, handle, word_a, word_b, wait, kGet, vsan, &record);
  return failure != 0 ? 0 : record.codepage;  // as the four bytes stand: intended
}

uint32_t ficon_cmi_getnext_codepage(uint32_t requester, mts_handle_t handle, const char* word_a,
                                    const char* word_b, uint32_t wait, uint32_t* vsan) {
  ficon_cmi_vsan_cfg_t record{};
  if (ficon_cmi_get_vsan_info(requester, handle, word_a, word_b, wait, kGetNext, 0, &record) != 0) {
    // always 0 where one would look for the status: intended
    console("%s(%d):get_vsan_info failed:%d\n", "ficon_cmi_getnext_codepage", 849, 0);
    return 0;
  }
  if (vsan != nullptr) {
    wire::VsanConfig config;
    __builtin_memcpy(&config, &record, sizeof config);
    *vsan = config.vsan.get();
  }
  return record.codepage;
}

uint32_t ficon_is_active_saved_enabled(mts_handle_t handle, uint32_t wait, uint8_t* flag) {
  *flag = 0;
  return exchange(
      {0, handle, nullptr, nullptr, wait},
      [&](mts_msg_ref_t* request) { return ficon_send_get_enabled_vsans(handle, request); },
      report_nothing,
      [&](mts_msg_ref_t* reply) -> Status {
        std::uint32_t* words = nullptr;
        if (const Status failure = ficon_parse_get_enabled_vsans(reply, &words)) return failure;
        const EnabledVsans enabled(words);
        if (enabled.status() != 0) return enabled.status();
        for (std::int32_t i = 0; i < enabled.count() && *flag == 0; ++i) {
          if (saves_automatically(handle, wait, enabled.vsan(i))) *flag = 1;
        }
        return status::kOk;
      });
}
