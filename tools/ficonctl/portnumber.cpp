/** `ficonctl portnumber`: numbers reserved for modules and logical ports, and assigned. */
#include <array>

#include "command.h"
#include "parse.h"
#include "port_map.h"
#include "wire/port_numbers.h"

namespace ficon::ctl {
namespace {

constexpr std::uint32_t kModules = 16;
constexpr std::size_t kErrorText = 257;

struct Arguments {
  std::string module;
  bool logical = false;
  std::string ranges;
  std::string interface;
  std::string number;
};

/** What a reservation carries. */
struct Reservation {
  std::int32_t count = 0;
  std::uint32_t result = 0;
  std::array<std::uint32_t, wire::kReservedRanges> firsts{};
  std::array<std::uint32_t, wire::kReservedRanges> lasts{};
};

/** The operations of a module, and those of the logical ports. */
struct Operation {
  std::uint8_t of_module;
  std::uint8_t logical;
};
constexpr Operation kReserve{wire::kReserveForModule, wire::kReserveLogical};
constexpr Operation kRelease{wire::kReleaseOfModule, wire::kReleaseLogical};
constexpr Operation kQuery{wire::kReservedForModule, wire::kReservedLogical};

std::string owner_text(std::uint32_t module) {
  return module == 0 ? "the logical ports" : "module " + std::to_string(module);
}

/** `module` 0: the logical ports. */
void ask(Session& session, const Operation& operation, std::uint32_t module, Reservation& ranges,
         const std::string& what) {
  std::array<char, kErrorText> text{};
  const std::uint32_t status = session.ask(
      ficon_cmi_reserve_portnum, module == 0 ? operation.logical : operation.of_module, module, 0U,
      &ranges.result, &ranges.count, ranges.firsts.data(), ranges.lasts.data(), text.data());
  if (status == 0) return;
  const Failure failure = session.failure(status, what);
  if (text[0] == '\0') throw failure;
  throw Failure(status, failure.name(), what + ": " + text.data(), failure.hint());
}

std::uint32_t owner_in(const Arguments& arguments) {
  if (arguments.logical) return 0;
  if (arguments.module.empty()) throw UsageError("say --module or --logical");
  return parse_number(arguments.module, 1, kModules, "module");
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
  for (std::uint32_t module = 0; module <= kModules; ++module) {
    Reservation ranges;
    ask(context.session, kQuery, module, ranges, "cannot read the reserved port numbers");
    if (ranges.result == 0) continue;
    table.add({owner_text(module), ranges_text(ranges), std::to_string(ranges.result)});
    json.push_back({{"module", module == 0 ? Json() : Json(module)},
                    {"port-numbers", ranges_text(ranges)},
                    {"count", ranges.result}});
  }
  context.output.show(json, table);
}

void change(Context& context, const Arguments& arguments, const Operation& operation,
            const char* verb) {
  const std::uint32_t module = owner_in(arguments);
  Reservation ranges;
  if (!arguments.ranges.empty()) {
    const auto parse_one = [&](const std::string& part) {
      return parse_number(part, 0, largest_port_number(context.session), "port number");
    };
    for (const NumberRange& range : parse_ranges(arguments.ranges, "ranges", parse_one)) {
      const auto at = static_cast<std::size_t>(ranges.count);
      if (at == ranges.firsts.size()) throw UsageError("more than 64 ranges");
      ranges.firsts[at] = range.first;
      ranges.lasts[at] = range.last;
      ++ranges.count;
    }
  }
  const std::string what = ranges.count == 0 ? "all" : arguments.ranges;
  ask(context.session, operation, module, ranges, "port numbers " + what + " cannot be " + verb);
  context.output.show({{"module", module == 0 ? Json() : Json(module)}, {verb, what}},
                      owner_text(module) + ": port numbers " + what + " " + verb);
}

void assign(Context& context, const Arguments& arguments) {
  Session& session = context.session;
  const bool none = arguments.number == "none";
  const std::uint32_t number =
      none ? kNoPortNumber
           : parse_number(arguments.number, 0, largest_port_number(session), "port number");
  const std::uint8_t operation = none ? wire::kReleasePortNumber : wire::kAssignPortNumber;
  const std::uint32_t status =
      ficon_cmi_set_portnum(session.handle(), operation, parse_interface_name(arguments.interface),
                            number, session.wait());
  if (status != 0) throw session.failure(status, "cannot assign the port number");
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
