#include "config_apply.h"

#include <platform/feature_services.h>

#include <algorithm>

#include "configuration/configuration.h"
#include "mapped_ports.h"
#include "mih_timeout.h"
#include "port_change.h"

namespace ficon::ctl {
namespace {

void enable_feature(Session& session) {
  constexpr std::uint32_t kAlreadyOn = 0x40aa0005;
  const std::uint32_t status =
      fm_cmi_set_feature_wait(session.handle(), "ficon", Session::word_a(), Session::word_b(), 3);
  if (status != 0 && status != kAlreadyOn) {
    throw session.failure(status, "cannot enable the feature");
  }
}

void set_ficon(Session& session, std::uint32_t vsan, bool on) {
  session.require(
      "cannot " + std::string(on ? "enable" : "disable") + " FICON on VSAN " + std::to_string(vsan),
      ficon_cmi_set_ficon_state, vsan, std::uint8_t{on});
}

void change_vsans(Session& session, const std::set<std::uint32_t>& from,
                  const std::set<std::uint32_t>& to) {
  for (const std::uint32_t vsan : from) {
    if (!to.contains(vsan)) set_ficon(session, vsan, false);
  }
  for (const std::uint32_t vsan : to) {
    if (!from.contains(vsan)) set_ficon(session, vsan, true);
  }
}

void set_logging_level(Session& session, std::uint32_t level) {
  if (const auto status = platform::set_logging_level(session.handle(), session.wait(), level)) {
    throw session.failure(status, "cannot set the logging level");
  }
}

void change(Session& session, const ConfigState& from, const ConfigState& to) {
  if (to.feature && !from.feature) enable_feature(session);
  change_ports(session, from.ports, to.ports);
  change_vsans(session, from.vsans, to.vsans);
  if (to.default_prohibit != from.default_prohibit) {
    session.require("cannot set the ports' default state", ficon_cmi_set_port_default_prohibit,
                    std::uint32_t{to.default_prohibit});
  }
  if (to.mih_timeout != from.mih_timeout) {
    set_mih_timeout(session, std::nullopt, encode_mih_timeout(to.mih_timeout));
  }
  if (to.logging_level && to.logging_level != from.logging_level) {
    set_logging_level(session, *to.logging_level);
  }
}

}  // namespace

void bring_about(Session& session, const ConfigState& from, const ConfigState& to) {
  try {
    change(session, from, to);
  } catch (const Failure& failure) {
    try {
      change(session, read_state(session), from);
    } catch (const Failure& second) {
      throw Failure(failure.status(), failure.name(),
                    std::string(failure.what()) +
                        "; and what was changed before could not be taken back: " + second.what(),
                    "look at ficonctl config running");
    }
    throw;
  }
}

}  // namespace ficon::ctl
