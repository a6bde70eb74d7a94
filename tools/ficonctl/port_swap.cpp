/** `ficonctl port find`, `port swap` and `port bind`: which port is behind a port address. */
#include "command.h"
#include "confirm.h"
#include "mapped_ports.h"
#include "parse.h"
#include "port_table.h"
#include "wire/fcd_status.h"
#include "wire/port_plan.h"

namespace ficon::ctl {
namespace {

struct Arguments {
  std::string first;
  std::string second;
  std::string interface;
  std::string number;
  std::string address;
  std::string fcid;
  bool dry_run = false;
};

/** The keys that are known, 0 and wire::kNoPort for the others. */
struct Keys {
  if_index_t if_index = 0;
  std::uint16_t number = wire::kNoPort;
  std::uint16_t address = wire::kNoPort;
};

void find(Context& context, const Arguments& arguments) {
  Session& session = context.session;
  Keys keys;
  std::uint32_t fcid = 0;
  if (!arguments.interface.empty()) keys.if_index = parse_interface_name(arguments.interface);
  if (!arguments.number.empty()) {
    keys.number = static_cast<std::uint16_t>(parse_port_number(session, arguments.number));
  }
  if (!arguments.address.empty()) {
    keys.address =
        static_cast<std::uint16_t>(parse_hex(arguments.address, kLastPortAddress, "port address"));
  }
  if (!arguments.fcid.empty()) fcid = parse_hex(arguments.fcid, 0xffffff, "FCID");
  if (keys.if_index == 0 && keys.number == wire::kNoPort && keys.address == wire::kNoPort &&
      fcid == 0) {
    throw UsageError("say what is known of the port: --if, --number, --address or --fcid");
  }
  constexpr std::uint32_t kGet = 1;
  mts_msg_ref_t request{};
  const std::uint32_t sent = ficon_send_get_portmap_fcid_nonblock(
      session.handle(), Session::word_a(), Session::word_b(), kGet, 0, fcid, keys.if_index,
      keys.number, keys.address, &request);
  if (sent != 0) throw session.failure(session.transport_error(), "cannot ask for the port");
  mts_msg_ref_t reply = receive_reply(session, &request, "cannot ask for the port");
  const MessageDrop drop(session.handle(), &reply);
  std::uint8_t state = 5;
  const std::uint32_t status = ficon_parse_get_portmap_fcid(&reply, &keys.if_index, &keys.number,
                                                            &keys.address, &fcid, &state);
  if (status != 0) throw session.failure(status, "cannot find the port");
  const MappedPort port{std::nullopt, key_or_none(keys.number), key_or_none(keys.address),
                        keys.if_index, state};
  Json json = to_json(port);
  json["fcid"] = fcid == 0 ? Json() : Json(hex(fcid, 6));
  context.output.show(
      json, interface_text(port.if_index) + ": port number " + number_text(port.port_number) +
                ", port address " + port_address_text(port.port_address) + ", FCID " +
                (fcid == 0 ? "-" : hex(fcid, 6)) + ", " + state_name(port.state).name);
}

/** A port of a swap, by number or interface name; as much of it as there is. */
MappedPort read_port(Session& session, const std::string& text) {
  if (text.find_first_not_of("0123456789") == std::string::npos) {
    return look_up(session, 0, static_cast<std::uint16_t>(parse_port_number(session, text)));
  }
  return look_up(session, parse_interface_name(text), wire::kNoPort);
}

std::string move_text(const MappedPort& from, const MappedPort& to, const char* verb) {
  return "port address " + port_address_text(from.port_address) + " " + verb + " from " +
         interface_text(from.if_index) + " (port number " + number_text(from.port_number) +
         ") to " + interface_text(to.if_index) + " (port number " + number_text(to.port_number) +
         ")";
}

FcdStatus check_swappable(const MappedPort& port) {
  if (port.port_number == wire::kControlUnitPort) return FcdStatus::kControlUnitPort;
  if (port.if_index == 0 || !port.port_number) return FcdStatus::kPortNotInstalled;
  return port.port_address ? FcdStatus::kDone : FcdStatus::kPortWithoutAddress;
}

/** Refuses what the daemon would, so that a dry run says no where the swap itself does. */
void require_swappable(Session& session, const Arguments& arguments, const MappedPort& first,
                       const MappedPort& second) {
  if (first.port_number == second.port_number && first.if_index == second.if_index) {
    throw session.failure(status::kSamePort, "cannot swap the ports");
  }
  for (const MappedPort* port : {&first, &second}) {
    const std::string& text = port == &first ? arguments.first : arguments.second;
    const auto status = static_cast<std::uint32_t>(check_swappable(*port));
    if (status != 0) throw session.failure(status, "cannot swap port " + text);
  }
}

void swap_ports(Context& context, const Arguments& arguments) {
  Session& session = context.session;
  const MappedPort first = read_port(session, arguments.first);
  const MappedPort second = read_port(session, arguments.second);
  require_swappable(session, arguments, first, second);
  if (!arguments.dry_run) {
    ficon_cmi_swap_reply_t* record = nullptr;
    session.require("cannot swap the ports", ficon_cmi_swap_port,
                    first.port_number.value_or(wire::kNoPort),
                    second.port_number.value_or(wire::kNoPort), &record);
    mtrack_free(record);
    const MappedPort now = read_port(session, arguments.first);
    if (now.port_address != second.port_address) {
      throw Failure(0, "not-as-asked", "the port map does not show the swap",
                    "somebody else may have changed it meanwhile: look at it");
    }
  }
  const char* verb = arguments.dry_run ? "would move" : "moved";
  context.output.show(
      {{"dry-run", arguments.dry_run}, {"first", to_json(first)}, {"second", to_json(second)}},
      move_text(first, second, verb) + "\n" + move_text(second, first, verb) +
          "\nthe settings of every configuration file go with the addresses");
}

void bind(Context& context, const Arguments& arguments) {
  Session& session = context.session;
  const auto address =
      static_cast<std::uint16_t>(parse_hex(arguments.address, kLastPortAddress, "port address"));
  const std::string text = address_text(address);
  if (arguments.interface.empty() && arguments.number.empty()) {
    throw UsageError("say what to bind the port address to: --if or --number");
  }
  if (!arguments.interface.empty()) {
    session.require("cannot bind port address " + text, ficon_cmi_set_pa_if, address,
                    parse_interface_name(arguments.interface));
  } else {
    const std::uint32_t number =
        arguments.number == "none" ? wire::kNoPort : parse_port_number(session, arguments.number);
    session.require("cannot bind port address " + text, ficon_cmi_set_pa_pn, address,
                    static_cast<std::uint16_t>(number));
  }
  const std::string to =
      arguments.interface.empty() ? "port number " + arguments.number : arguments.interface;
  context.output.show({{"port-address", address}, {"bound-to", to}},
                      "port address " + text + ": " + to);
}

}  // namespace

void register_port_swap(CLI::App& app, Context& context) {
  CLI::App& object = add_object(app, "port", "The ports of a VSAN");
  auto arguments = keep<Arguments>();
  CLI::App& seek = add_action(object, "find", "Find a port by what is known of it",
                              [&context, arguments] { find(context, *arguments); });
  seek.add_option("--if", arguments->interface, "Interface: fc2/17");
  seek.add_option("--number", arguments->number, "Port number");
  seek.add_option("--address", arguments->address, "Port address, 00 to fd");
  seek.add_option("--fcid", arguments->fcid, "FCID, in hexadecimal");

  CLI::App& exchange =
      add_action(object, "swap", "Exchange the port addresses of two ports, and their settings",
                 [&context, arguments] { swap_ports(context, *arguments); });
  exchange.add_option("FIRST", arguments->first, "Port number or interface")->required();
  exchange.add_option("SECOND", arguments->second, "Port number or interface")->required();
  exchange.add_flag("--dry-run", arguments->dry_run, "Show what would move, and change nothing");

  CLI::App& binding =
      add_action(object, "bind", "Bind a port address to an interface or a port number",
                 [&context, arguments] { bind(context, *arguments); });
  binding.add_option("ADDRESS", arguments->address, "Port address, 00 to fd")->required();
  auto* to_interface = binding.add_option("--if", arguments->interface, "Interface: fc2/17");
  auto* to_number =
      binding.add_option("--number", arguments->number, "Port number, or none to free the address");
  to_interface->excludes(to_number);
}

}  // namespace ficon::ctl
