/** `ficonctl vsan`: FICON on a VSAN and its settings. */
#include <algorithm>

#include "command.h"
#include "confirm.h"
#include "parse.h"
#include "vsan_record.h"
#include "wire/fcd_status.h"

namespace ficon::ctl {
namespace {

using Setter = std::uint32_t (*)(std::uint32_t, mts_handle_t, const char*, const char*,
                                 std::uint32_t, std::uint32_t, std::uint8_t);

/** A setting that is on or off. */
struct ModeField {
  const char* name;
  Setter set;
  std::uint8_t ficon_cmi_vsan_cfg_t::*byte;
};

constexpr ModeField kModes[] = {
    {"switch-offline", ficon_cmi_switch_offline, &ficon_cmi_vsan_cfg_t::switch_offline},
    {"host-control-switch-offline", ficon_cmi_set_host_control_switch_offline,
     &ficon_cmi_vsan_cfg_t::host_control_switch_offline},
    {"prohibit-host-control", ficon_cmi_set_prohibit_host_control,
     &ficon_cmi_vsan_cfg_t::prohibit_host_control},
    {"clock-alert-mode", ficon_cmi_clock_alert_mode, &ficon_cmi_vsan_cfg_t::clock_alert_mode},
    {"user-alert-mode", ficon_cmi_user_alert_mode, &ficon_cmi_vsan_cfg_t::user_alert_mode},
    {"prohibit-snmp", ficon_cmi_prohibit_snmp, &ficon_cmi_vsan_cfg_t::prohibit_snmp},
    {"auto-save", ficon_cmi_auto_save_config, &ficon_cmi_vsan_cfg_t::auto_save},
    {"host-clock-set-allowed", ficon_cmi_set_host_clock_set_allowed,
     &ficon_cmi_vsan_cfg_t::host_clock_set_allowed},
};

/** The settings that are numbers. */
constexpr const char* kFcidLastByte = "fcid-last-byte";
constexpr const char* kCodepage = "codepage";

const char* state_name(std::uint32_t state) {
  constexpr std::uint32_t kOffline = 1;
  constexpr std::uint32_t kUp = 2;
  return state == kUp ? "up" : state == kOffline ? "offline" : "unknown";
}

std::string clock_text(const ficon_cmi_vsan_cfg_t& record) {
  return hex(record.tstmp_clock1, 8) + ":" + hex(record.tstmp_clock2, 8);
}

Json to_json(const ficon_cmi_vsan_cfg_t& record) {
  Json json{{"vsan", vsan_number(record)}, {"state", state_name(record.state)}};
  for (const ModeField& mode : kModes) json[mode.name] = record.*mode.byte != 0;
  json["key-counter"] = key_counter(record);
  json[kCodepage] = std::uint32_t{record.codepage};
  json["clock"] = clock_text(record);
  json[kFcidLastByte] = record.fcid_last_byte;
  return json;
}

Table to_table(const ficon_cmi_vsan_cfg_t& record) {
  Table table({"VSAN " + std::to_string(vsan_number(record)), state_name(record.state)});
  for (const ModeField& mode : kModes) {
    table.add({mode.name, record.*mode.byte != 0 ? "on" : "off"});
  }
  table.add({"key-counter", std::to_string(key_counter(record))});
  table.add({kCodepage, std::to_string(std::uint32_t{record.codepage})});
  table.add({"clock", clock_text(record)});
  table.add({kFcidLastByte, hex(record.fcid_last_byte, 2)});
  return table;
}

void show_vsan(Context& context, std::uint32_t vsan) {
  const ficon_cmi_vsan_cfg_t record = read_vsan(context.session, vsan);
  context.output.show(to_json(record), to_table(record));
}

void list_vsans(Context& context) {
  Json json = Json::array();
  Table table({"VSAN", "STATE", "CODEPAGE", "AUTO-SAVE", "KEY-COUNTER"});
  std::uint32_t last = 0;
  ficon_cmi_vsan_cfg_t record{};
  std::uint32_t status = 0;
  while ((status = context.session.ask(ficon_cmi_get_vsan_info, kGetNext, last, &record)) == 0) {
    last = vsan_number(record);
    json.push_back(to_json(record));
    table.add({std::to_string(last), state_name(record.state),
               std::to_string(std::uint32_t{record.codepage}), record.auto_save != 0 ? "on" : "off",
               std::to_string(key_counter(record))});
  }
  if (status != static_cast<std::uint32_t>(FcdStatus::kNoNextVsan)) {
    throw context.session.failure(status, "cannot list the VSANs");
  }
  if (json.empty()) {
    context.output.show(json, "FICON is enabled on no VSAN; try: ficonctl vsan enable VSAN");
  } else {
    context.output.show(json, table);
  }
}

void set_state(Context& context, std::uint32_t vsan, bool enable) {
  if (!enable) {
    // The library takes an absent daemon for done, since nothing is left to disable: a person who
    // asks for it would be misled.
    ficon_cmi_vsan_cfg_t record{};
    const std::uint32_t status = context.session.ask(ficon_cmi_get_vsan_info, kGet, vsan, &record);
    if (status == kDaemonGone) throw context.session.failure(status, "cannot disable FICON");
    confirm_disruption(context, vsan, "disabling FICON");
  }
  context.session.require(std::string("cannot ") + (enable ? "enable" : "disable") +
                              " FICON on VSAN " + std::to_string(vsan),
                          ficon_cmi_set_ficon_state, vsan,
                          static_cast<std::uint8_t>(enable ? 1 : 0));
  context.output.show({{"vsan", vsan}, {"ficon", enable}}, std::string("FICON is ") +
                                                               (enable ? "enabled" : "disabled") +
                                                               " on VSAN " + std::to_string(vsan));
}

/** One checked FIELD=VALUE, ready to be sent. */
struct Setting {
  std::string field;
  const ModeField* mode;  // null for the numbers
  std::uint32_t value;
};

Setting parse_setting(const std::string& text) {
  auto [field, value] = parse_assignment(text);
  const auto* mode =
      std::ranges::find_if(kModes, [&name = field](const ModeField& m) { return name == m.name; });
  if (mode != std::end(kModes)) return {field, mode, parse_switch(value, field) ? 1U : 0U};
  if (field == kFcidLastByte) return {field, nullptr, parse_number(value, 0, 255, field)};
  if (field == kCodepage) return {field, nullptr, parse_number(value, 1, 65535, field)};
  std::vector<std::string> known{kFcidLastByte, kCodepage};
  for (const ModeField& each : kModes) known.emplace_back(each.name);
  throw UsageError("a VSAN has no setting \"" + field + "\"" + did_you_mean(field, known));
}

void send_setting(Context& context, std::uint32_t vsan, const Setting& setting) {
  const std::string what = "cannot set " + setting.field + " of VSAN " + std::to_string(vsan);
  Session& session = context.session;
  const auto byte = static_cast<std::uint8_t>(setting.value);
  if (setting.mode != nullptr) {
    session.require(what, setting.mode->set, vsan, byte);
  } else if (setting.field == kCodepage) {
    session.require(what, ficon_cmi_set_codepage, vsan, setting.value);
  } else {
    session.require(what, ficon_cmi_set_fcid_last_byte, vsan, byte);
  }
}

void set_vsan(Context& context, std::uint32_t vsan, const std::vector<std::string>& assignments) {
  std::vector<Setting> settings;
  for (const std::string& text : assignments) settings.push_back(parse_setting(text));
  const bool goes_offline = std::ranges::any_of(settings, [](const Setting& setting) {
    return setting.mode != nullptr && setting.mode->set == ficon_cmi_switch_offline &&
           setting.value != 0;
  });
  if (goes_offline) confirm_disruption(context, vsan, "taking the switch offline");
  for (const Setting& setting : settings) send_setting(context, vsan, setting);
  show_vsan(context, vsan);
}

void show_key_counter(Context& context, std::uint32_t vsan) {
  const std::uint32_t counter = key_counter(read_vsan(context.session, vsan));
  context.output.show({{"vsan", vsan}, {"key-counter", counter}}, std::to_string(counter));
}

struct KeyCounterArguments {
  std::string vsan;
  bool increment = false;
  std::string test;
};

void change_key_counter(Context& context, const KeyCounterArguments& arguments) {
  const std::uint32_t vsan = parse_vsan(arguments.vsan);
  const std::string what = "cannot increment the key counter of VSAN " + arguments.vsan;
  if (!arguments.test.empty()) {
    const std::uint32_t expected = parse_number(arguments.test, 0, 0xffffffff, "key counter");
    context.session.require(what, ficon_cmi_test_inc_key_counter, expected, vsan);
  } else if (arguments.increment) {
    context.session.require(what, ficon_cmi_inc_key_counter, vsan);
  }
  show_key_counter(context, vsan);
}

struct ClockArguments {
  std::string vsan;
  std::string set;
  bool clear = false;
};

void change_clock(Context& context, const ClockArguments& arguments) {
  const std::uint32_t vsan = parse_vsan(arguments.vsan);
  if (!arguments.set.empty() || arguments.clear) warn_of_clock(context, vsan);
  const std::string what = "cannot set the clock of VSAN " + arguments.vsan;
  if (arguments.clear) {
    context.session.require(what, ficon_cmi_clear_tstmp_clock, vsan);
  } else if (!arguments.set.empty()) {
    const std::size_t colon = arguments.set.find(':');
    if (colon == std::string::npos) {
      throw UsageError("clock \"" + arguments.set + "\" is not two hexadecimal words, HI:LO");
    }
    const std::uint32_t first = parse_hex(arguments.set.substr(0, colon), 0xffffffff, "clock word");
    const std::uint32_t second =
        parse_hex(arguments.set.substr(colon + 1), 0xffffffff, "clock word");
    context.session.require(what, ficon_cmi_set_tstmp_clock, vsan, first, second);
  }
  const std::string clock = clock_text(read_vsan(context.session, vsan));
  context.output.show({{"vsan", vsan}, {"clock", clock}}, clock);
}

void change_codepage(Context& context, const std::string& vsan_text, const std::string& page) {
  const std::uint32_t vsan = parse_vsan(vsan_text);
  if (!page.empty()) {
    context.session.require("cannot set the code page of VSAN " + vsan_text, ficon_cmi_set_codepage,
                            vsan, parse_number(page, 1, 65535, "code page"));
  }
  const std::uint32_t codepage = read_vsan(context.session, vsan).codepage;
  context.output.show({{"vsan", vsan}, {kCodepage, codepage}}, std::to_string(codepage));
}

void add_vsan_argument(CLI::App& action, std::string& vsan) {
  action.add_option("VSAN", vsan, "VSAN number, 1 to 4093")->required();
}

}  // namespace

void register_vsan(CLI::App& app, Context& context) {
  CLI::App& object = add_object(app, "vsan", "FICON on a VSAN and its settings");
  add_action(object, "list", "List the VSANs with FICON", [&context] { list_vsans(context); });

  auto vsan = keep<std::string>();
  add_vsan_argument(add_action(object, "show", "Show the settings of a VSAN",
                               [&context, vsan] { show_vsan(context, parse_vsan(*vsan)); }),
                    *vsan);
  add_vsan_argument(add_action(object, "enable", "Enable FICON on a VSAN",
                               [&context, vsan] { set_state(context, parse_vsan(*vsan), true); }),
                    *vsan);
  CLI::App& disable =
      add_action(object, "disable", "Disable FICON on a VSAN and forget its settings",
                 [&context, vsan] { set_state(context, parse_vsan(*vsan), false); });
  add_vsan_argument(disable, *vsan);
  add_yes_flag(disable, context);

  auto assignments = keep<std::vector<std::string>>();
  CLI::App& set = add_action(
      object, "set", "Change settings: all are checked before the first is sent",
      [&context, vsan, assignments] { set_vsan(context, parse_vsan(*vsan), *assignments); });
  add_vsan_argument(set, *vsan);
  set.add_option("FIELD=VALUE", *assignments, "Settings as `vsan show` names them")->required();
  add_yes_flag(set, context);

  auto counter = keep<KeyCounterArguments>();
  CLI::App& key = add_action(object, "key-counter", "Show or increment the key counter",
                             [&context, counter] { change_key_counter(context, *counter); });
  add_vsan_argument(key, counter->vsan);
  auto* increment = key.add_flag("--increment", counter->increment, "Add one");
  key.add_option("--test", counter->test, "Add one if the counter is N")
      ->type_name("N")
      ->excludes(increment);

  auto page = keep<std::string>();
  CLI::App& codepage =
      add_action(object, "codepage", "Show or set the EBCDIC code page of names",
                 [&context, vsan, page] { change_codepage(context, *vsan, *page); });
  add_vsan_argument(codepage, *vsan);
  codepage.add_option("PAGE", *page, "Code page, for example 37 or 1140");

  auto clock_arguments = keep<ClockArguments>();
  CLI::App& clock =
      add_action(object, "clock", "Show, set or clear the time-stamp clock",
                 [&context, clock_arguments] { change_clock(context, *clock_arguments); });
  add_vsan_argument(clock, clock_arguments->vsan);
  auto* clear = clock.add_flag("--clear", clock_arguments->clear, "Set it to zero");
  clock.add_option("--set", clock_arguments->set, "Two hexadecimal words")
      ->type_name("HI:LO")
      ->excludes(clear);
}

}  // namespace ficon::ctl
