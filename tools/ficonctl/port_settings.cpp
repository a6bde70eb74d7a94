/** `ficonctl port`: blocking, naming and prohibiting ports, a batch at a time. */
#include <functional>

#include "command.h"
#include "confirm.h"
#include "file_client.h"

namespace ficon::ctl {
namespace {

struct PortArguments {
  std::string vsan;
  std::string ports;
  std::string with;
  std::string name;
  std::string file;
  bool dry_run = false;

  FileName target() const { return file_or_active(vsan, file); }
};

void show_plan(Context& context, const FileName& file, const std::vector<std::string>& lines,
               bool dry_run) {
  std::string text = file.text() + (dry_run ? " would change:\n" : " changed:\n");
  for (const std::string& line : lines) text += "  " + line + "\n";
  if (lines.empty()) text = file.text() + " is so already";
  context.output.show(
      {{"vsan", file.vsan}, {"file", file.name}, {"dry-run", dry_run}, {"changes", lines}}, text);
}

/** What was asked for must be what the director holds now. */
void verify(Context& context, const FileName& file, const PortTable& wanted) {
  if (differences(read_ports(context.session, file), wanted).empty()) return;
  throw Failure(0, "not-as-asked", file.text() + " does not hold what was asked for",
                "somebody else may have changed it meanwhile: look at it, and try again");
}

PortTable changed(PortTable ports, const std::function<void(PortTable&)>& change) {
  change(ports);
  return ports;
}

/**
 * One edit for the whole batch: all of it, or nothing. What changes is reckoned from the edit's own
 * copy, which nobody else can change meanwhile.
 */
void change_ports(Context& context, const PortArguments& arguments,
                  const std::function<void(PortTable&)>& change) {
  const FileName file = arguments.target();
  PortTable before = read_ports(context.session, file);
  PortTable after = changed(before, change);
  if (!arguments.dry_run && !differences(before, after).empty()) {
    if (file.name.empty()) confirm_disruption(context, file.vsan, "changing active ports");
    FileEdit edit(context.session, file);
    before = read_ports(context.session, file, edit.key());
    after = changed(before, change);
    edit.change(before, after);
    edit.keep();
    verify(context, file, after);
  }
  show_plan(context, file, differences(before, after), arguments.dry_run);
}

void set_blocked(Context& context, const PortArguments& arguments, bool blocked) {
  const auto addresses = parse_port_addresses(arguments.ports);
  change_ports(context, arguments, [&](PortTable& ports) {
    for (const std::uint32_t address : addresses) ports[address].blocked = blocked;
  });
}

void set_prohibited(Context& context, const PortArguments& arguments, bool prohibited) {
  const auto addresses = parse_port_addresses(arguments.ports);
  const auto others = parse_port_addresses(arguments.with);
  change_ports(context, arguments, [&](PortTable& ports) {
    for (const std::uint32_t address : addresses) {
      for (const std::uint32_t other : others) {
        if (address == other) continue;  // within a range each meets itself once
        ports[address].prohibited[other] = prohibited;
        ports[other].prohibited[address] = prohibited;
      }
    }
  });
}

void set_name(Context& context, const PortArguments& arguments) {
  const auto addresses = parse_port_addresses(arguments.ports);
  if (addresses.size() != 1) throw UsageError("a name is for one port address");
  check_port_name(context.session, parse_vsan(arguments.vsan), arguments.name);
  change_ports(context, arguments,
               [&](PortTable& ports) { ports[addresses.front()].name = arguments.name; });
}

}  // namespace

void register_port_settings(CLI::App& app, Context& context) {
  CLI::App& object = add_object(app, "port", "The ports of a VSAN");
  auto arguments = keep<PortArguments>();
  const auto add = [&](const char* name, const char* help,
                       std::function<void(const PortArguments&)> run) -> CLI::App& {
    CLI::App& action =
        add_action(object, name, help, [arguments, run = std::move(run)] { run(*arguments); });
    action.add_option("VSAN", arguments->vsan, "VSAN number")->required();
    action.add_option("PORTS", arguments->ports, "Port addresses: 1a, 10-1f, 1a-2f,40")->required();
    action.add_option("--file", arguments->file,
                      "Configuration file (default: the active configuration)");
    action.add_flag("--dry-run", arguments->dry_run, "Show what would change, and change nothing");
    add_yes_flag(action, context);
    return action;
  };
  add("block", "Block ports",
      [&context](const PortArguments& a) { set_blocked(context, a, true); });
  add("unblock", "Unblock ports",
      [&context](const PortArguments& a) { set_blocked(context, a, false); });
  CLI::App& name = add("name", "Name a port; an empty name takes it away",
                       [&context](const PortArguments& a) { set_name(context, a); });
  context.may_be_empty.insert(
      name.add_option("NAME", arguments->name, "Up to 24 characters of the VSAN's code page")
          ->required());
  add("prohibit", "Forbid pairs of ports to talk",
      [&context](const PortArguments& a) { set_prohibited(context, a, true); })
      .add_option("--with", arguments->with, "The other ports of the pairs")
      ->required();
  add("allow", "Let pairs of ports talk again",
      [&context](const PortArguments& a) { set_prohibited(context, a, false); })
      .add_option("--with", arguments->with, "The other ports of the pairs")
      ->required();
}

}  // namespace ficon::ctl
