/** `ficonctl prohibit-default` and `ficonctl acl`: how ports are prohibited, switch-wide. */
#include "command.h"
#include "parse.h"

namespace ficon::ctl {
namespace {

using Get = decltype(&ficon_cmi_get_port_default_prohibit);
using Set = decltype(&ficon_cmi_set_port_default_prohibit);

struct Setting {
  const char* object;
  const char* help;
  const char* name;
  Get get;
  Set set;
};

constexpr Setting kDefaultProhibit{
    "prohibit-default", "Whether new configuration files prohibit every pair of ports",
    "default prohibit", ficon_cmi_get_port_default_prohibit, ficon_cmi_set_port_default_prohibit};
constexpr Setting kAclNotFcid{
    "acl", "Whether access lists name every port address, not only those with an FCID",
    "acl-not-fcid", ficon_cmi_get_port_prohibit_acl_not_fcid,
    ficon_cmi_set_port_prohibit_acl_not_fcid};

void show(Context& context, const Setting& setting, bool on) {
  context.output.show({{setting.name, on}}, std::string(setting.name) + ": " + (on ? "on" : "off"));
}

void get(Context& context, const Setting& setting) {
  std::uint32_t value = 0;
  context.session.require(std::string("cannot read ") + setting.name, setting.get, &value);
  show(context, setting, value != 0);
}

void set(Context& context, const Setting& setting, const std::string& text) {
  const bool on = parse_switch(text, setting.name);
  context.session.require(std::string("cannot set ") + setting.name, setting.set, on ? 1U : 0U);
  show(context, setting, on);
}

CLI::App& add_setting(CLI::App& app, Context& context, const Setting& setting) {
  CLI::App& object = add_object(app, setting.object, setting.help);
  auto value = keep<std::string>();
  add_action(object, "get", "Print it", [&context, setting] { get(context, setting); });
  add_action(object, "set", "Set it", [&context, setting, value] { set(context, setting, *value); })
      .add_option("VALUE", *value, "on or off")
      ->required();
  return object;
}

}  // namespace

void register_prohibit_settings(CLI::App& app, Context& context) {
  add_setting(app, context, kDefaultProhibit);
  CLI::App& acl = add_setting(app, context, kAclNotFcid);
  add_action(acl, "downgrade", "Take the access lists back to lists by FCID", [&context] {
    context.session.require("cannot downgrade the access lists", ficon_cmi_set_acl_type_downgrade);
    get(context, kAclNotFcid);
  });
}

}  // namespace ficon::ctl
