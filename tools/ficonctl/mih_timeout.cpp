#include "mih_timeout.h"

#include <cstring>

#include "wire/limits.h"
#include "wire/saved_config.h"

namespace ficon::ctl {

using wire::MihOperation;

std::uint32_t encode_mih_timeout(std::uint32_t seconds) {
  for (std::uint32_t encoded = 0xff; encoded > 0; --encoded) {
    if (wire::decode_mih_timeout(encoded) == seconds && seconds != 0) return encoded;
  }
  throw UsageError("time-out \"" + std::to_string(seconds) +
                   "\" is not 1 to 63 times 1, 10, 100 or 1000 seconds");
}

std::string mih_timeout_name(std::optional<std::uint32_t> vsan) {
  return vsan ? "the MIH time-out of VSAN " + std::to_string(*vsan) : "the default MIH time-out";
}

std::uint32_t read_mih_timeout(Session& session, std::optional<std::uint32_t> vsan) {
  const std::string what = "cannot read " + mih_timeout_name(vsan);
  const auto operation =
      static_cast<std::uint8_t>(vsan ? MihOperation::kGet : MihOperation::kGetDefault);
  ficon_cmi_mihpto_rec_t reply{};
  session.require(what, ficon_cmi_mihpto, operation, vsan.value_or(0), 0U, &reply);
  wire::MihTimeout record;
  std::memcpy(&record, &reply, sizeof record);
  if (record.status.get() != 0) throw session.failure(record.status.get(), what);
  return record.timeout.get();
}

std::uint32_t set_mih_timeout(Session& session, std::optional<std::uint32_t> vsan,
                              std::uint32_t encoded) {
  const auto operation =
      static_cast<std::uint8_t>(vsan ? MihOperation::kSet : MihOperation::kSetDefault);
  session.require("cannot set " + mih_timeout_name(vsan), ficon_cmi_mihpto, operation,
                  vsan.value_or(0), encoded, nullptr);
  const std::uint32_t now = read_mih_timeout(session, vsan);
  const std::uint32_t wanted = encoded == 0 ? read_mih_timeout(session, std::nullopt) : encoded;
  if (now == wanted) return now;
  throw Failure(0, "not-taken",
                mih_timeout_name(vsan) + " was not taken: it is " +
                    std::to_string(wire::decode_mih_timeout(now)) + " seconds",
                "look at the VSAN's lock and at the daemon's log");
}

}  // namespace ficon::ctl
