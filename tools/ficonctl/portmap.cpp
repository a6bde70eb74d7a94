/** `ficonctl portmap`: the port map as a table and as a picture of a module. */
#include "command.h"
#include "mapped_ports.h"
#include "parse.h"

namespace ficon::ctl {
namespace {

constexpr std::uint32_t kModules = 16;

struct Arguments {
  std::string module;
  std::string range;
  bool logical = false;
};

std::uint32_t parse_module(const std::string& text) {
  return parse_number(text, 1, kModules, "module");
}

std::vector<MappedPort> read_range(Session& session, const std::string& text) {
  std::vector<MappedPort> ports;
  for (const NumberRange& range : parse_ranges(text, "range", [&](const std::string& part) {
         return parse_port_number(session, part);
       })) {
    const auto read = read_port_numbers(session, range.first, range.last);
    ports.insert(ports.end(), read.begin(), read.end());
  }
  return ports;
}

void show(Context& context, const Arguments& arguments) {
  Session& session = context.session;
  std::vector<MappedPort> ports;
  if (!arguments.module.empty()) {
    ports = with_interface(read_module(session, parse_module(arguments.module)));
  } else if (arguments.logical) {
    ports = read_logical(session);
    std::erase_if(ports, [](const MappedPort& port) { return !port.port_number; });
  } else if (!arguments.range.empty()) {
    ports = read_range(session, arguments.range);
  } else {
    ports = with_interface(read_port_numbers(session, 0, largest_port_number(session)));
  }
  Json json = Json::array();
  for (const MappedPort& port : ports) json.push_back(to_json(port));
  context.output.show(json, to_table(ports));
}

std::vector<MappedPort> ports_of_module(Context& context, const std::string& text) {
  auto ports = with_interface(read_module(context.session, parse_module(text)));
  if (ports.empty()) {
    throw Failure(0, "no-such-module", "module " + text + " has no ports",
                  "`ficonctl portmap show` lists the ports that there are");
  }
  return ports;
}

void grid(Context& context, const std::string& module) {
  context.output.raw(grid_of(ports_of_module(context, module), context.output.color) + "\n");
}

void svg(Context& context, const std::string& module) {
  context.output.raw(svg_of(ports_of_module(context, module), "Module " + module));
}

}  // namespace

void register_portmap(CLI::App& app, Context& context) {
  CLI::App& object =
      add_object(app, "portmap", "Port positions, port numbers, port addresses and interfaces");
  auto arguments = keep<Arguments>();
  CLI::App& table = add_action(object, "show", "Print the port map",
                               [&context, arguments] { show(context, *arguments); });
  auto* module = table.add_option("--module", arguments->module, "The ports of a module, from 1");
  auto* range = table.add_option("--range", arguments->range, "Port numbers: 0-63, 10,240-249");
  auto* logical = table.add_flag("--logical", arguments->logical, "The logical ports");
  module->excludes(range)->excludes(logical);
  range->excludes(logical);
  add_action(object, "grid", "Draw a module",
             [&context, arguments] { grid(context, arguments->module); })
      .add_option("MODULE", arguments->module, "Module, from 1")
      ->required();
  add_action(object, "svg", "Draw a module as SVG, to standard output",
             [&context, arguments] { svg(context, arguments->module); })
      .add_option("MODULE", arguments->module, "Module, from 1")
      ->required();
}

}  // namespace ficon::ctl
