/** `ficonctl limits` and `ficonctl mihpto`: what is limited switch-wide, and the MIH time-out. */
#include <optional>

#include "box_count.h"
#include "command.h"
#include "mih_timeout.h"
#include "parse.h"
#include "wire/saved_config.h"

namespace ficon::ctl {
namespace {

constexpr std::uint32_t kAllPorts = 1;
constexpr std::uint32_t kInstalledPorts = 2;
constexpr std::uint32_t kMostPorts = 1280;
constexpr const char* kGetNextType = "getnext-type";
constexpr const char* kMaxPorts = "max-ports";

std::string type_name(std::uint32_t type) {
  if (type == kAllPorts) return "all";
  return type == kInstalledPorts ? "installed" : std::to_string(type);
}

std::uint32_t parse_type(const std::string& text) {
  if (text == "all") return kAllPorts;
  if (text == "installed") return kInstalledPorts;
  if (text.find_first_not_of("0123456789xX") != std::string::npos) {
    throw UsageError(kGetNextType + (" \"" + text + "\" is not all, installed or a number"));
  }
  return parse_number(text, 0, 0xffffffff, kGetNextType);
}

void show_limits(Context& context) {
  std::uint32_t type = 0;
  context.session.require("cannot read the get-next type", ficon_cmi_get_getnext_type, &type);
  const std::optional<std::uint32_t> ports = box_count(context.session, "maximum ports");
  Table table({"LIMIT", "VALUE"});
  table.add({kGetNextType, type_name(type)});
  table.add({kMaxPorts, ports ? std::to_string(*ports) : "not told by the director"});
  Json json{{kGetNextType, type_name(type)}};
  json[kMaxPorts] = ports ? Json(*ports) : Json();
  context.output.show(json, table);
}

void set_limits(Context& context, const std::vector<std::string>& assignments) {
  std::optional<std::uint32_t> type;
  std::optional<std::uint32_t> ports;
  for (const std::string& text : assignments) {
    const auto [field, value] = parse_assignment(text);
    if (field == kGetNextType) {
      type = parse_type(value);
    } else if (field == kMaxPorts) {
      ports = parse_number(value, 1, kMostPorts, kMaxPorts);
    } else {
      throw UsageError("there is no limit \"" + field + "\": use " + kGetNextType + " or " +
                       kMaxPorts);
    }
  }
  if (type) {
    context.session.require("cannot set the get-next type", ficon_cmi_set_getnext_type, *type);
  }
  if (ports) {
    context.session.require("cannot set the maximum of ports", ficon_cmi_set_max_ports, *ports);
  }
  show_limits(context);
}

void show_timeout(Context& context, std::optional<std::uint32_t> vsan, std::uint32_t encoded) {
  const std::uint32_t seconds = wire::decode_mih_timeout(encoded);
  Json json{{"seconds", seconds}, {"encoded", encoded}};
  if (vsan) json["vsan"] = *vsan;
  context.output.show(json, mih_timeout_name(vsan) + " is " + std::to_string(seconds) +
                                " seconds (" + hex(encoded, 2) + ")");
}

std::optional<std::uint32_t> optional_vsan(const std::string& text) {
  if (text.empty()) return std::nullopt;
  return parse_vsan(text);
}

void set_timeout(Context& context, std::optional<std::uint32_t> vsan, const std::string& text) {
  const bool takes_default = vsan && text == "default";
  const std::uint32_t encoded =
      takes_default ? 0 : encode_mih_timeout(parse_number(text, 1, kLongestTimeout, "time-out"));
  show_timeout(context, vsan, set_mih_timeout(context.session, vsan, encoded));
}

}  // namespace

void register_limits(CLI::App& app, Context& context) {
  CLI::App& limits = add_object(app, "limits", "Get-next type and maximum of ports");
  add_action(limits, "show", "Show the limits", [&context] { show_limits(context); });
  auto assignments = keep<std::vector<std::string>>();
  add_action(limits, "set", "Change limits: all are checked before the first is sent",
             [&context, assignments] { set_limits(context, *assignments); })
      .add_option("FIELD=VALUE", *assignments, "getnext-type=all|installed, max-ports=N")
      ->required();

  CLI::App& mihpto = add_object(app, "mihpto", "The missing-interrupt-handler time-out");
  auto vsan = keep<std::string>();
  auto timeout = keep<std::string>();
  const auto add_vsan = [vsan](CLI::App& action) {
    action.add_option("--vsan", *vsan, "Of this VSAN (default: the switch's default)")
        ->type_name("VSAN");
  };
  add_vsan(add_action(mihpto, "get", "Show the time-out", [&context, vsan] {
    const auto of = optional_vsan(*vsan);
    show_timeout(context, of, read_mih_timeout(context.session, of));
  }));
  CLI::App& set = add_action(
      mihpto, "set", "Change the time-out, and read it back",
      [&context, vsan, timeout] { set_timeout(context, optional_vsan(*vsan), *timeout); });
  set.add_option("SECONDS", *timeout,
                 "1 to 63, times 1, 10, 100 or 1000; of a VSAN also \"default\"")
      ->required();
  add_vsan(set);
}

}  // namespace ficon::ctl
