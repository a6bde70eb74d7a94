/** `ficonctl config`: the configuration as command lines. */
#include <algorithm>
#include <iostream>
#include <iterator>
#include <set>
#include <sstream>

#include "chassis/current_chassis.h"
#include "command.h"
#include "config_apply.h"
#include "config_text.h"
#include "configuration/configuration.h"
#include "mapped_ports.h"
#include "parse.h"
#include "whole_file.h"

namespace ficon::ctl {
namespace {

constexpr const char* kRunning = "running";
constexpr const char* kStartup = "startup";

struct ConfigArguments {
  std::string vsans;
  std::string interfaces;
  std::string first = kRunning;
  std::string second = kStartup;
  std::string path;
  bool dry_run = false;
};

/** Of this switch: a name that is no port of it would silently give no line. */
std::vector<if_index_t> parse_interfaces(const std::string& text) {
  std::vector<if_index_t> interfaces;
  std::istringstream stream(text);
  for (std::string name; std::getline(stream, name, ',');) {
    const if_index_t if_index = parse_interface_name(name);
    if (platform::current_chassis()->port(if_index) == nullptr) {
      throw UsageError("this switch has no interface \"" + name + "\"");
    }
    interfaces.push_back(if_index);
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

std::string store_of(Session& session, const std::string& which) {
  return which == kRunning ? running_store(session) : startup_store(session);
}

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

void show(Context& context, const ConfigArguments& arguments, const char* which) {
  const TextScope scope = scope_of(context, arguments);
  const std::string text = generate_text(context.session, store_of(context.session, which), scope);
  context.output.show(
      Json{{which, lines_of(text)}},
      // A comment, so that what is printed can be applied.
      text.empty() ? "! the " + std::string(which) + " configuration is empty" : text);
}

/** Lines that mean the same wherever they stand: an interface's begin with its heading. */
std::vector<std::string> settled_lines(Session& session, const std::string& which) {
  std::vector<std::string> lines;
  std::string heading;
  for (const std::string& line : lines_of(generate_text(session, store_of(session, which), {}))) {
    const bool below = line.starts_with(' ');
    if (!below) heading = line.starts_with("interface ") ? line + ": " : "";
    if (below) {
      lines.push_back(heading + line.substr(line.find_first_not_of(' ')));
    } else if (heading.empty()) {
      lines.push_back(line);
    }
  }
  return lines;
}

std::vector<std::string> only_in(const std::vector<std::string>& lines,
                                 const std::vector<std::string>& other) {
  std::vector<std::string> result;
  const std::set<std::string> known(other.begin(), other.end());
  std::ranges::copy_if(lines, std::back_inserter(result),
                       [&](const std::string& line) { return !known.contains(line); });
  return result;
}

void diff(Context& context, const ConfigArguments& arguments) {
  context.session.handle();
  const auto first = settled_lines(context.session, arguments.first);
  const auto second = settled_lines(context.session, arguments.second);
  const auto removed = only_in(first, second);
  const auto added = only_in(second, first);
  std::string text = "--- " + arguments.first + "\n+++ " + arguments.second + "\n";
  for (const std::string& line : removed) text += "- " + line + "\n";
  for (const std::string& line : added) text += "+ " + line + "\n";
  if (removed.empty() && added.empty()) {
    text = arguments.first + " and " + arguments.second + " configuration are the same";
  }
  context.output.show(
      Json{{"only-" + arguments.first, removed}, {"only-" + arguments.second, added}}, text);
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
  return read_file(path);
}

/** The lines that are not so yet, each once. */
std::vector<std::string> missing_lines(const std::vector<ConfigLine>& lines,
                                       const ConfigState& state) {
  std::vector<std::string> missing;
  for (const ConfigLine& line : lines) {
    if (holds(line, state)) continue;
    const std::string text = line.text();
    if (std::ranges::find(missing, text) == missing.end()) missing.push_back(text);
  }
  return missing;
}

void apply(Context& context, const ConfigArguments& arguments) {
  const std::string text = read_text(arguments.path);
  Session& session = context.session;
  const auto lines = parse_config(text, largest_port_number(session));
  const ConfigState now = read_state(session);
  const ConfigState wanted = with_lines(now, lines);
  const auto missing = wanted == now ? std::vector<std::string>{} : missing_lines(lines, now);
  if (!arguments.dry_run) bring_about(session, now, wanted);
  std::string shown = arguments.dry_run ? "would apply:\n" : "applied:\n";
  for (const std::string& line : missing) shown += "  " + line + "\n";
  if (missing.empty()) shown = "the running configuration is so already: nothing was changed";
  context.output.show(Json{{"dry-run", arguments.dry_run}, {"applied", missing}}, shown);
}

}  // namespace

void register_config(CLI::App& app, Context& context) {
  CLI::App& object = add_object(app, "config", "The configuration as command lines");
  auto arguments = keep<ConfigArguments>();
  const auto add_scope = [&](CLI::App& action) {
    action.add_option("--vsan", arguments->vsans, "VSANs: 10,20-23 (default: all)");
    action.add_option("--interface", arguments->interfaces, "Interfaces: fc2/17,fcip3");
  };
  add_scope(add_action(object, kRunning, "Print the running configuration",
                       [&context, arguments] { show(context, *arguments, kRunning); }));
  add_scope(add_action(object, kStartup, "Print the startup configuration",
                       [&context, arguments] { show(context, *arguments, kStartup); }));
  CLI::App& compare = add_action(object, "diff", "Show the lines in which two differ",
                                 [&context, arguments] { diff(context, *arguments); });
  const auto add_side = [&](const char* name, std::string& side) {
    compare.add_option(name, side, "running or startup")
        ->check([](const std::string& typed) {
          if (typed == kRunning || typed == kStartup) return std::string();
          return "\"" + typed + "\" is not running or startup";
        })
        ->capture_default_str();
  };
  add_side("FIRST", arguments->first);
  add_side("SECOND", arguments->second);
  add_action(object, "save", "Make the running configuration the startup configuration",
             [&context] { save(context); });
  CLI::App& action = add_action(object, "apply", "Apply lines: all are checked before the first",
                                [&context, arguments] { apply(context, *arguments); });
  action.add_option("FILE", arguments->path, "A file, or - for standard input")->required();
  action.add_flag("--dry-run", arguments->dry_run, "Show what would be applied");
}

}  // namespace ficon::ctl
