#include "files/installed_port.h"

#include <platform/diagnostics.h>
#include <platform/mts.h>
#include <platform/port_manager.h>

#include "exchange/console.h"
#include "exchange/trace.h"

namespace ficon {
namespace {

// Interface types that are looked at closely; a port of any other type is taken at once.
constexpr std::uint32_t kPhysical = 1;
constexpr std::uint32_t kPortChannel = 4;
constexpr std::uint32_t kTunnel = 10;

/** The trunk mode of an interface that carries several VSANs. */
constexpr std::uint8_t kTrunking = 8;
constexpr std::uint32_t kPortManagerKind = 1;
constexpr Status kAskTransport = 0xffffffff;

enum class Verdict : std::uint8_t { kTake, kPassOver, kFail };

struct Judgement {
  Verdict verdict;
  Status failure = status::kOk;
};
constexpr Judgement kTaken{Verdict::kTake};
constexpr Judgement kPassedOver{Verdict::kPassOver};
Judgement failed(Status why) {
  return {Verdict::kFail, why};
}

ficon_cmi_ifindex_rng_t only(if_index_t if_index) {
  return {if_index, if_index};
}

/** Whether the VSAN is one of those that a trunking interface carries. */
Judgement judge_trunk(const Caller& caller, if_index_t if_index, std::uint32_t vsan) {
  std::uint8_t bitmaps[4][512] = {};
  if (const Status failure =
          pm_cmi_get_trunk_vsan_info(caller.handle, kPortManagerKind, if_index, bitmaps[0],
                                     bitmaps[1], bitmaps[2], bitmaps[3], caller.wait)) {
    trace("CMI_ERROR: pm_cmi_get_trunk_vsan_info failed 0x%08x\n", failure);
    return failed(failure);
  }
  const std::uint32_t byte = vsan / 8;
  if (byte < sizeof bitmaps[0] && (bitmaps[0][byte] & (0x80 >> (vsan % 8))) != 0) return kTaken;
  trace("CMI_ERROR: vsan not in prt-vsan failed vsan:%d, 0x%08x\n", static_cast<int>(vsan), 0U);
  return kPassedOver;
}

Judgement judge_membership(const Caller& caller, if_index_t if_index, std::uint32_t vsan,
                           const pm_cmi_port_config_t& config) {
  if (config.trunk_mode == kTrunking) return judge_trunk(caller, if_index, vsan);
  return config.port_vsan == vsan ? kTaken : kPassedOver;
}

/** Asks the port manager for the interface; null with a judgement when it has nothing usable. */
pm_cmi_port_config_t* read_config(const Caller& caller, if_index_t if_index, Judgement* without) {
  const ficon_cmi_ifindex_rng_t range = only(if_index);
  std::uint32_t count = 0;
  pm_cmi_port_config_t* config = nullptr;
  const Status result = pm_cmi_get_port_config(caller.handle, kPortManagerKind, 1, &range, &count,
                                               &config, caller.wait);
  if (result == kAskTransport) {
    const auto error = static_cast<Status>(mts_errno_get(caller.handle));
    trace("CMI_ERROR: pm get port config failed 0x%08x\n", error);
    if (config != nullptr) mtrack_free(config);
    *without = failed(error);
    return nullptr;
  }
  if (result != 0) {
    const Status swapped = __builtin_bswap32(result);
    console("error: %s [0x%08x]\n", syserr2str(swapped), swapped);
    trace("CMI_ERROR: pm get port config %s[0x%0x]\n", syserr2str(swapped), swapped);
    if (config != nullptr) mtrack_free(config);
    *without = kPassedOver;
    return nullptr;
  }
  if (config == nullptr) {
    trace("CMI_ERROR: pm_cmi_get_port_config failed 0x%08x\n", 0U);
    *without = kPassedOver;
  }
  return config;
}

/** A physical port without a working transceiver is not usable. */
Judgement judge_transceiver(const Caller& caller, if_index_t if_index) {
  const ficon_cmi_ifindex_rng_t range = only(if_index);
  std::uint32_t count = 0;
  pm_fcot_info_t* record = nullptr;
  if (const Status failure = pm_cmi_get_fcot_info(caller.handle, kPortManagerKind, 1, &range,
                                                  &count, &record, caller.wait)) {
    trace("CMI_ERROR: pm_cmi_get_fcot_info failed 0x%08x\n", failure);
    std::free(record);
    return failed(failure);
  }
  const Malloced<pm_fcot_info_t> transceiver(record);
  if (!transceiver) return kPassedOver;
  if (transceiver->status == 0) return kTaken;
  trace("CMI_ERROR: fcot_status failed 0x%08x\n", std::uint32_t{transceiver->status});
  return kPassedOver;
}

Judgement judge_member(const Caller& caller, std::uint32_t vsan, if_index_t if_index,
                       std::uint32_t type) {
  Judgement judgement = kPassedOver;
  pm_cmi_port_config_t* config = read_config(caller, if_index, &judgement);
  if (config == nullptr) return judgement;
  judgement = judge_membership(caller, if_index, vsan, *config);
  if (judgement.verdict != Verdict::kTake) {
    mtrack_free(config);
    return judgement;
  }
  std::free(config);  // plain on this way alone: intended
  return type == kPhysical ? judge_transceiver(caller, if_index) : kTaken;
}

Judgement judge(const Caller& caller, std::uint32_t vsan, const ficon_cmi_port_info_t& port) {
  const if_index_t if_index = port.if_index;
  if (if_index == 0) {
    trace("CMI_ERROR: Continuing ifindex is 0\n");
    return kPassedOver;
  }
  std::uint32_t type = 0;
  if (const Status failure = if_index_get_type(if_index, &type)) {
    trace("CMI_ERROR: failed to get if type for if_index:%#x (%d)\n", if_index,
          static_cast<int>(failure));
    return failed(failure);
  }
  if (type != kPhysical && type != kPortChannel && type != kTunnel) return kTaken;
  return judge_member(caller, vsan, if_index, type);
}

}  // namespace

Status pick_installed_port(const Caller& caller, std::uint32_t vsan, std::uint32_t start,
                           const ficon_cmi_port_info_t* ports, std::uint32_t port_count,
                           ficon_cmi_port_info_t** picked, std::uint32_t* count) {
  Tracked<ficon_cmi_port_info_t> output(
      allocate(TEVRAK_MEM_portinfo, sizeof(ficon_cmi_port_info_t), __LINE__));
  *picked = nullptr;
  *count = 0;
  trace("CMI_ERROR: Entering loop start %d num_ports %d\n", static_cast<int>(start),
        static_cast<int>(port_count));
  for (std::uint32_t i = 0; i < port_count; ++i) {
    if (!output) return status::kAllocationFailed;
    trace("CMI_ERROR: Loop i %d\n", static_cast<int>(start + i));
    *output.get() = ports[i];
    const Judgement judgement = judge(caller, vsan, ports[i]);
    if (judgement.verdict == Verdict::kFail) return judgement.failure;
    if (judgement.verdict == Verdict::kTake) {
      *picked = output.release();
      *count = 1;
      return status::kOk;
    }
  }
  return status::kOk;
}

}  // namespace ficon
