#include "interface_index/interface_index.h"

#include <arpa/inet.h>
#include <platform/port_manager.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>

namespace ficon::platform {
namespace {

struct LogicalName {
  InterfaceType type;
  std::string_view name;
};
constexpr std::array kLogicalNames = {LogicalName{InterfaceType::kPortChannel, "port-channel"},
                                      LogicalName{InterfaceType::kTunnel, "fcip"}};

/** A number from 1 without sign or leading zero, taken off the text. */
std::optional<std::uint32_t> take_number(std::string_view& text) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || text.front() == '0') return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

std::optional<if_index_t> checked(const Interface& interface) {
  const if_index_t if_index = interface_index(interface);
  if (if_index == 0) return std::nullopt;
  return if_index;
}

std::optional<if_index_t> parse_fibre_channel(std::string_view rest) {
  const auto slot = take_number(rest);
  if (!slot || !rest.starts_with('/')) return std::nullopt;
  rest.remove_prefix(1);
  const auto port = take_number(rest);
  if (!port || !rest.empty()) return std::nullopt;
  return checked(fibre_channel_port(*slot - 1, *port - 1));
}

std::optional<if_index_t> parse_logical(InterfaceType type, std::string_view rest) {
  while (rest.starts_with(' ')) rest.remove_prefix(1);
  const auto number = take_number(rest);
  if (!number || !rest.empty()) return std::nullopt;
  return checked({type, 0, *number});
}

}  // namespace

if_index_t interface_index(const Interface& interface) {
  const auto type = static_cast<std::uint32_t>(interface.type) << 24;
  if (interface.type == InterfaceType::kFibreChannel) {
    if (interface.slot >= kSlots || interface.number >= kPortsPerSlot) return 0;
    return type | interface.slot << 12 | interface.number;
  }
  if (interface.number == 0 || interface.number > kLogicalNumbers) return 0;
  return type | interface.number;
}

std::optional<Interface> interface_of(if_index_t if_index) {
  Interface interface {};
  interface.type = static_cast<InterfaceType>(if_index >> 24);
  switch (interface.type) {
    case InterfaceType::kFibreChannel:
      interface.slot = if_index >> 12 & 0xfff;
      interface.number = if_index & 0xfff;
      break;
    case InterfaceType::kPortChannel:
    case InterfaceType::kTunnel:
      interface.number = if_index & 0xffffff;
      break;
    default:
      return std::nullopt;
  }
  if (interface_index(interface) != if_index) return std::nullopt;
  return interface;
}

std::string interface_name(if_index_t if_index) {
  const auto interface = interface_of(if_index);
  if (!interface) {
    char text[32];
    std::snprintf(text, sizeof text, "interface 0x%08x", if_index);
    return text;
  }
  for (const LogicalName& logical : kLogicalNames) {
    if (logical.type == interface->type) {
      return std::string(logical.name) + ' ' + std::to_string(interface->number);
    }
  }
  return "fc" + std::to_string(interface->slot + 1) + '/' + std::to_string(interface->number + 1);
}

std::optional<if_index_t> parse_interface(std::string_view name) {
  for (const LogicalName& logical : kLogicalNames) {
    if (name.starts_with(logical.name)) {
      return parse_logical(logical.type, name.substr(logical.name.size()));
    }
  }
  if (name.starts_with("fc")) return parse_fibre_channel(name.substr(2));
  return std::nullopt;
}

}  // namespace ficon::platform

using namespace ficon::platform;

uint32_t if_index_get_type(if_index_t if_index, uint32_t* type) {
  const auto interface = interface_of(if_index);
  if (!interface) return EINVAL;
  *type = static_cast<std::uint32_t>(interface->type);
  return 0;
}

uint32_t if_index_phy_fc_port_init(if_index_t* if_index, uint8_t slot, uint8_t port,
                                   uint32_t /*arg4*/) {
  const if_index_t made = interface_index(fibre_channel_port(slot, port));
  if (made == 0) return EINVAL;
  *if_index = made;
  return 0;
}

if_index_t hton_if_index(if_index_t if_index) {
  return htonl(if_index);
}

if_index_t ntoh_if_index(if_index_t if_index) {
  return ntohl(if_index);
}

int32_t snprintf_if_index(char* text, uint32_t size, if_index_t if_index) {
  return std::snprintf(text, size, "%s", interface_name(if_index).c_str());
}
