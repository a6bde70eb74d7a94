/** The port manager's client. */
#include <platform/mts.h>
#include <platform/port_manager.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "protocol/port_manager.h"
#include "transport/message.h"
#include "transport/service_call.h"

using namespace ficon;
using namespace ficon::platform;

namespace {

constexpr std::uint32_t kPatienceMs = 5000;  // for questions that come without a wait argument

template <class Record>
std::span<const std::uint8_t> as_bytes(const Record* records, std::size_t count = 1) {
  return {reinterpret_cast<const std::uint8_t*>(records), count * sizeof(Record)};
}

/** An answer of the port manager: dropped at the end. */
class Answer {
 public:
  explicit Answer(mts_handle_t handle) : handle_(handle) {}
  Answer(const Answer&) = delete;
  Answer& operator=(const Answer&) = delete;
  ~Answer() {
    if (received_) mts_drop(handle_, &reply_);
  }

  /** 0xffffffff where the transport failed: `mts_errno_get` has the reason. */
  std::uint32_t ask(PortManagerOpcode opcode, std::span<const std::uint8_t> request,
                    std::uint32_t wait) {
    if (call_service(handle_, ServiceSap::kPortManager, opcode, request, wait, &reply_) != 0) {
      return 0xffffffff;
    }
    received_ = true;
    return 0;
  }

  mts_msg_ref_t* reply() { return &reply_; }

  /** For the caller to drop. */
  mts_msg_ref_t release() {
    received_ = false;
    return reply_;
  }

 private:
  mts_handle_t handle_;
  mts_msg_ref_t reply_{};
  bool received_ = false;
};

/** The records of a reply, whose length must be what its count says. */
template <class Record>
std::uint32_t records_of(mts_msg_ref_t* reply, std::span<const Record>* records) {
  const void* payload = mts_payload_get(reply);
  if (payload == nullptr) return ENOSYS;  // nobody answers this question
  const auto length = static_cast<std::size_t>(received_length(payload));
  const auto* head = static_cast<const PortReplyHead*>(payload);
  if (length < sizeof *head) return EBADMSG;
  if (const std::uint32_t status = head->status.get()) return status;
  if ((length - sizeof *head) / sizeof(Record) != head->count.get() ||
      (length - sizeof *head) % sizeof(Record) != 0) {
    return EBADMSG;
  }
  *records = {reinterpret_cast<const Record*>(head + 1), head->count.get()};
  return 0;
}

/** Allocated for `free`, also when there are none. */
template <class Out, class Record, class Convert>
std::uint32_t hand_out(std::span<const Record> records, Convert convert, std::uint32_t* count,
                       Out** list) {
  auto* out = static_cast<Out*>(std::calloc(records.size() + 1, sizeof(Out)));
  if (out == nullptr) return ENOMEM;
  for (std::size_t i = 0; i < records.size(); ++i) convert(records[i], out[i]);
  *count = static_cast<std::uint32_t>(records.size());
  *list = out;
  return 0;
}

/** Asks about ranges of interfaces and hands out a list of what is answered. */
template <class Record, class Out, class Convert>
std::uint32_t ask_ranges(mts_handle_t handle, PortManagerOpcode opcode, std::uint32_t n,
                         const ficon_cmi_ifindex_rng_t* ranges, std::uint32_t wait, Convert convert,
                         std::uint32_t* count, Out** list) {
  *count = 0;
  *list = nullptr;
  std::vector<InterfaceRange> asked(n);
  for (std::uint32_t i = 0; i < n; ++i) {
    asked[i].first.set(ranges[i].first_if);
    asked[i].last.set(ranges[i].last_if);
  }
  Answer answer(handle);
  if (const auto failure = answer.ask(opcode, as_bytes(asked.data(), n), wait)) return failure;
  std::span<const Record> records;
  if (const auto failure = records_of(answer.reply(), &records)) return failure;
  return hand_out(records, convert, count, list);
}

/** Asks about one interface; the answer is one record. */
template <class Record>
std::uint32_t ask_interface(mts_handle_t handle, PortManagerOpcode opcode, if_index_t if_index,
                            std::uint32_t wait, Record* record) {
  InterfaceNumber asked{};
  asked.if_index.set(if_index);
  Answer answer(handle);
  if (const auto failure = answer.ask(opcode, as_bytes(&asked), wait)) return failure;
  std::span<const Record> records;
  if (const auto failure = records_of(answer.reply(), &records)) return failure;
  if (records.empty()) return ENODEV;
  *record = records[0];
  return 0;
}

}  // namespace

uint32_t pm_cmi_get_port_config(mts_handle_t handle, uint32_t /*kind*/, uint32_t n,
                                const ficon_cmi_ifindex_rng_t* ranges, uint32_t* count,
                                pm_cmi_port_config_t** records, uint32_t wait) {
  const auto convert = [](const PortConfig& from, pm_cmi_port_config_t& to) {
    to.if_index = from.if_index.get();
    to.port_vsan = from.vsan.get();
    to.port_mode = from.mode.get();
    to.trunk_mode = from.trunk_mode;
    to.flags = from.flags;
  };
  return ask_ranges<PortConfig>(handle, PortManagerOpcode::kPortConfig, n, ranges, wait, convert,
                                count, records);
}

uint32_t pm_cmi_get_fcot_info(mts_handle_t handle, uint32_t /*kind*/, uint32_t n,
                              const ficon_cmi_ifindex_rng_t* ranges, uint32_t* count,
                              pm_fcot_info_t** records, uint32_t wait) {
  const auto convert = [](const TransceiverState& from, pm_fcot_info_t& to) {
    to.status = from.status.get();
  };
  return ask_ranges<TransceiverState>(handle, PortManagerOpcode::kTransceivers, n, ranges, wait,
                                      convert, count, records);
}

uint32_t pm_cmi_get_trunk_vsan_info(mts_handle_t handle, uint32_t /*kind*/, if_index_t if_index,
                                    uint8_t* bitmap1, uint8_t* bitmap2, uint8_t* bitmap3,
                                    uint8_t* bitmap4, uint32_t wait) {
  VsanBitmap trunked{};
  if (const auto failure =
          ask_interface(handle, PortManagerOpcode::kTrunkVsans, if_index, wait, &trunked)) {
    return failure;
  }
  // The trunk's VSANs are allowed, and up; none of them is isolated or initialising.
  std::memcpy(bitmap1, trunked.vsans.raw, sizeof trunked.vsans.raw);
  std::memcpy(bitmap2, trunked.vsans.raw, sizeof trunked.vsans.raw);
  std::memset(bitmap3, 0, sizeof trunked.vsans.raw);
  std::memset(bitmap4, 0, sizeof trunked.vsans.raw);
  return 0;
}

uint32_t pm_get_port_info_brief(mts_handle_t handle, uint32_t /*arg2*/, uint32_t module_mask,
                                uint32_t /*arg4*/, uint32_t /*arg5*/, uint32_t /*arg6*/,
                                uint32_t /*arg7*/, uint32_t /*arg8*/, mts_msg_ref_t* reply) {
  ModuleMask asked{};
  asked.mask.set(module_mask);
  Answer answer(handle);
  if (const auto failure =
          answer.ask(PortManagerOpcode::kModulePorts, as_bytes(&asked), kPatienceMs)) {
    return failure;
  }
  *reply = answer.release();
  return 0;
}

uint32_t pm_parse_get_port_info_brief(mts_msg_ref_t* reply, uint32_t* count,
                                      pm_port_info_brief_t** records) {
  std::span<const InterfaceNumber> ports;
  if (const auto failure = records_of(reply, &ports)) return failure;
  const auto convert = [](const InterfaceNumber& from, pm_port_info_brief_t& to) {
    to.if_index = from.if_index.get();
  };
  return hand_out(ports, convert, count, records);
}

uint32_t pcm_is_pc_auto_created(mts_handle_t handle, if_index_t if_index, uint32_t* auto_created) {
  AutoCreated answer{};
  if (const auto failure =
          ask_interface(handle, PortManagerOpcode::kAutoCreated, if_index, kPatienceMs, &answer)) {
    return failure;
  }
  *auto_created = answer.auto_created.get();
  return 0;
}
