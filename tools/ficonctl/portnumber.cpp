/** `ficonctl portnumber`: numbers reserved for modules and logical ports, and assigned. */
#include "command.h"
#include "mapped_ports.h"
#include "parse.h"
#include "port_requests.h"
#include "wire/port_plan.h"

namespace ficon::ctl {
namespace {

struct Arguments {
  std::string module;
  bool logical = false;
  std::string ranges;
  std::string interface;
  std::string number;
};

NumberOwner owner_in(const Arguments& arguments) {
  if (arguments.logical) return kLogicalPorts;
  if (arguments.module.empty()) throw UsageError("say --module or --logical");
  return parse_number(arguments.module, 1, kLastModule, "module");
}

std::string ranges_text(const Reservation& ranges) {
  std::string text;
  for (std::size_t i = 0; i < static_cast<std::size_t>(ranges.count); ++i) {
    if (i != 0) text += ',';
    text += std::to_string(ranges.firsts[i]);
    if (ranges.lasts[i] != ranges.firsts[i]) text += '-' + std::to_string(ranges.lasts[i]);
  }
  return text.empty() ? "none" : text;
}

void show(Context& context) {
  Json json = Json::array();
  Table table({"RESERVED FOR", "PORT NUMBERS", "COUNT"});
  for (NumberOwner module = 0; module <= kLastModule; ++module) {
    Reservation ranges;
    ask(context.session, kQuery, module, ranges, "cannot read the reserved port numbers");
    if (ranges.result == 0) continue;
    table.add({name_of(module), ranges_text(ranges), std::to_string(ranges.result)});
    json.push_back({{"module", module == 0 ? Json() : Json(module)},
                    {"port-numbers", ranges_text(ranges)},
                    {"count", ranges.result}});
  }
  context.output.show(json, table);
}

void change(Context& context, const Arguments& arguments, const ReservationOperation& operation,
            const char* verb) {
  const NumberOwner module = owner_in(arguments);
  Reservation ranges;
  if (!arguments.ranges.empty()) {
    const auto parse_one = [&](const std::string& part) {
      return parse_port_number(context.session, part);
    };
    ranges = Reservation(parse_ranges(arguments.ranges, "ranges", parse_one));
  }
  const bool all = ranges.count == 0;
  const std::string what = all ? "all port numbers" : "port numbers " + arguments.ranges;
  ask(context.session, operation, module, ranges, what + " cannot be " + verb);
  context.output.show(
      {{"module", module == 0 ? Json() : Json(module)}, {verb, all ? "all" : arguments.ranges}},
      name_of(module) + ": " + what + " " + verb);
}

void assign(Context& context, const Arguments& arguments) {
  Session& session = context.session;
  const bool none = arguments.number == "none";
  const std::uint32_t number = none ? wire::kNoPort : parse_port_number(session, arguments.number);
  assign_number(session, parse_interface_name(arguments.interface), number);
  context.output.show(
      {{"interface", arguments.interface}, {"port-number", none ? Json() : Json(number)}},
      arguments.interface + ": port number " + arguments.number);
}

}  // namespace

void register_portnumber(CLI::App& app, Context& context) {
  CLI::App& object = add_object(app, "portnumber", "The plan of port numbers");
  auto arguments = keep<Arguments>();
  add_action(object, "show", "List the port numbers reserved for modules and logical ports",
             [&context] { show(context); });
  const auto add_owner = [&](CLI::App& action) -> CLI::App& {
    auto* module = action.add_option("--module", arguments->module, "Module, from 1");
    module->excludes(action.add_flag("--logical", arguments->logical, "The logical ports"));
    return action;
  };
  add_owner(
      add_action(object, "reserve", "Reserve port numbers, in place of those reserved",
                 [&context, arguments] { change(context, *arguments, kReserve, "reserved"); }))
      .add_option("RANGES", arguments->ranges, "Port numbers: 0-47, 0-15,32-47")
      ->required();
  add_owner(add_action(object, "release", "Release reserved port numbers", [&context, arguments] {
    change(context, *arguments, kRelease, "released");
  })).add_option("RANGES", arguments->ranges, "Port numbers (default: all)");
  CLI::App& to_interface = add_action(object, "assign", "Assign a port number to an interface",
                                      [&context, arguments] { assign(context, *arguments); });
  to_interface.add_option("INTERFACE", arguments->interface, "fc2/17, port-channel12")->required();
  to_interface.add_option("NUMBER", arguments->number, "Port number, or none")->required();
}

}  // namespace ficon::ctl
