/** The port manager's records of many interfaces, asked for in batches. */
#include <platform/port_manager.h>

#include "exchange/allocation.h"
#include "wire/status.h"

using namespace ficon;

namespace {

constexpr std::uint32_t kBatchRanges = 250;

/** One batch; `records` has room for `n` and `count` says how many were answered. */
Status read_batch(mts_handle_t handle, std::uint32_t kind, std::uint32_t n,
                  const ficon_cmi_ifindex_rng_t* ranges, pm_cmi_port_config_t* records,
                  std::uint32_t* count, std::uint32_t wait) {
  pm_cmi_port_config_t* answer = nullptr;
  const Status failure = pm_cmi_get_port_config(handle, kind, n, ranges, count, &answer, wait);
  const Malloced<pm_cmi_port_config_t> answered(answer);
  if (failure != 0) {
    *count = 0;
    return failure;
  }
  if (!answered) *count = 0;
  if (*count < n) return status::kReceiveFailed;
  *count = n;  // what was not asked for has no room
  __builtin_memcpy(records, answer, n * sizeof *records);
  return status::kOk;
}

}  // namespace

uint32_t ficon_pm_cmi_get_port_config(mts_handle_t handle, uint32_t kind, uint32_t n,
                                      const ficon_cmi_ifindex_rng_t* ranges, uint32_t* out_count,
                                      pm_cmi_port_config_t** out_records, uint32_t wait) {
  *out_count = 0;
  *out_records = nullptr;
  if (n == 0) return status::kOk;
  constexpr std::size_t kRecord = sizeof **out_records;
  std::size_t size = 0;
  if (__builtin_mul_overflow(n, kRecord, &size)) size = SIZE_MAX;  // cannot be had
  void* records = allocate(TEVRAK_MEM_portinfo, size, __LINE__);
  if (records == nullptr) return status::kNoMemory;
  __builtin_memset(records, 0, size);
  *out_records = static_cast<pm_cmi_port_config_t*>(records);  // the caller's, on failure too

  for (std::uint32_t done = 0; done < n; done += kBatchRanges) {
    const std::uint32_t batch = n - done < kBatchRanges ? n - done : kBatchRanges;
    std::uint32_t count = 0;
    const Status failure =
        read_batch(handle, kind, batch, ranges + done, *out_records + done, &count, wait);
    *out_count += count;
    if (failure != 0) return failure;
  }
  return status::kOk;
}
