/** `ficonctl config`: the configuration as command lines. */
#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "command.h"
#include "config_apply.h"
#include "config_text.h"
#include "configuration/configuration.h"
#include "interface_index/interface_index.h"
#include "parse.h"

namespace ficon::ctl {
namespace {

struct ConfigArguments {
  std::string vsans;
  std::string interfaces;
  std::string path;
  bool dry_run = false;
};

std::vector<if_index_t> parse_interfaces(const std::string& text) {
  std::vector<if_index_t> interfaces;
  std::istringstream stream(text);
  for (std::string name; std::getline(stream, name, ',');) {
    const auto found = platform::parse_interface(name);
    if (!found) throw UsageError("there is no interface \"" + name + "\"; write fc2/17, fcip 3");
    interfaces.push_back(*found);
  }
  return interfaces;
}

TextScope scope_of(Context& context, const ConfigArguments& arguments) {
  context.session.handle();  // the interfaces are those of its chassis
  TextScope scope;
  if (!arguments.vsans.empty()) {
    scope.vsans = expand(parse_ranges(arguments.vsans, "VSANs", parse_vsan));
  }
  if (!arguments.interfaces.empty()) scope.interfaces = parse_interfaces(arguments.interfaces);
  return scope;
}

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

void show(Context& context, const std::string& text, const char* which) {
  const std::string shown = text.empty() ? "(the " + std::string(which) + " is empty)" : text;
  context.output.show(Json{{which, lines_of(text)}}, shown);
}

/** Lines of one text and not the other, an interface's with their heading. */
std::vector<std::string> only_in(const std::string& text, const std::string& other) {
  std::vector<std::string> known;
  for (const ConfigLine& line : parse_config(other)) known.push_back(line.text());
  std::vector<std::string> lines;
  for (const ConfigLine& line : parse_config(text)) {
    if (std::ranges::find(known, line.text()) == known.end()) lines.push_back(line.text());
  }
  return lines;
}

void diff(Context& context) {
  const TextScope all;
  context.session.handle();
  const std::string running = running_text(context.session, all);
  const std::string startup = startup_text(context.session, all);
  const auto added = only_in(running, startup);
  const auto removed = only_in(startup, running);
  std::string text;
  for (const std::string& line : removed) text += "- " + line + "\n";
  for (const std::string& line : added) text += "+ " + line + "\n";
  context.output.show(Json{{"only-startup", removed}, {"only-running", added}},
                      text.empty() ? "running and startup configuration are the same" : text);
}

void save(Context& context) {
  Session& session = context.session;
  if (const auto status = platform::save_startup(session.handle(), session.wait())) {
    throw session.failure(status, "cannot save the configuration");
  }
  context.output.show(Json{{"saved", true}},
                      "the running configuration is the startup configuration now");
}

std::string read_text(const std::string& path) {
  if (path == "-") return {std::istreambuf_iterator<char>(std::cin), {}};
  std::ifstream in(path);
  if (!in) throw Failure(0, "not-read", "cannot read " + path, "see whether it is there");
  return {std::istreambuf_iterator<char>(in), {}};
}

void apply(Context& context, const ConfigArguments& arguments) {
  const auto wanted = parse_config(read_text(arguments.path));
  context.session.handle();
  const auto plan = plan_config(context.session, wanted);
  if (!arguments.dry_run) carry_out(context.session, plan);
  std::vector<std::string> lines;
  std::string text = arguments.dry_run ? "would apply:\n" : "applied:\n";
  for (const ConfigLine& line : plan) {
    lines.push_back(line.text());
    text += "  " + line.text() + "\n";
  }
  if (lines.empty()) text = "the running configuration is so already: nothing was changed";
  context.output.show(Json{{"dry-run", arguments.dry_run}, {"applied", lines}}, text);
}

}  // namespace

void register_config(CLI::App& app, Context& context) {
  CLI::App& object = add_object(app, "config", "The configuration as command lines");
  auto arguments = keep<ConfigArguments>();
  const auto add_scope = [&](CLI::App& action) {
    action.add_option("--vsan", arguments->vsans, "VSANs: 10,20-23 (default: all)");
    action.add_option("--interface", arguments->interfaces, "Interfaces: fc2/17,fcip3");
  };
  add_scope(add_action(object, "running", "Print the running configuration", [&context, arguments] {
    const TextScope scope = scope_of(context, *arguments);
    show(context, running_text(context.session, scope), "running");
  }));
  add_scope(add_action(object, "startup", "Print the startup configuration", [&context, arguments] {
    const TextScope scope = scope_of(context, *arguments);
    show(context, startup_text(context.session, scope), "startup");
  }));
  add_action(object, "diff", "Show how running and startup configuration differ",
             [&context] { diff(context); });
  add_action(object, "save", "Make the running configuration the startup configuration",
             [&context] { save(context); });
  CLI::App& action = add_action(object, "apply", "Apply lines: all are checked before the first",
                                [&context, arguments] { apply(context, *arguments); });
  action.add_option("FILE", arguments->path, "A file, or - for standard input")->required();
  action.add_flag("--dry-run", arguments->dry_run, "Show what would be applied");
}

}  // namespace ficon::ctl
