#include "confirm.h"

#include <unistd.h>

#include <cstdio>

#include "vsan_record.h"

namespace ficon::ctl {
namespace {

/** A VSAN that cannot be read has no alert modes: the action itself will say what is wrong. */
ficon_cmi_vsan_cfg_t modes_of(Context& context, std::uint32_t vsan) {
  ficon_cmi_vsan_cfg_t record{};
  if (context.session.ask(ficon_cmi_get_vsan_info, kGet, vsan, &record) != 0) return {};
  return record;
}

bool answered_yes() {
  char answer[16] = "";
  return std::fgets(answer, sizeof answer, stdin) != nullptr &&
         (answer[0] == 'y' || answer[0] == 'Y');
}

}  // namespace

void add_yes_flag(CLI::App& action, Context& context) {
  action.add_flag("--yes", context.yes, "Do not ask, also in user alert mode");
}

void confirm_disruption(Context& context, std::uint32_t vsan, const std::string& what) {
  if (context.yes || modes_of(context, vsan).user_alert_mode == 0) return;
  const std::string warning =
      "VSAN " + std::to_string(vsan) + " is in user alert mode: " + what + " may disrupt traffic";
  if (isatty(STDIN_FILENO) != 0) {
    std::fprintf(stderr, "%s. Go on? [y/N] ", warning.c_str());
    if (answered_yes()) return;
  }
  throw Failure(0, "not-confirmed", warning, "repeat the command with --yes");
}

void warn_of_clock(Context& context, std::uint32_t vsan) {
  if (modes_of(context, vsan).clock_alert_mode == 0) return;
  std::fprintf(
      stderr, "ficonctl: VSAN %u is in clock alert mode: the host normally owns its clock\n", vsan);
}

}  // namespace ficon::ctl
