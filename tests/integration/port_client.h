/** A client of the port map through the library. */
#pragma once

#include <doctest/doctest.h>
#include <ficon_cmi.h>

#include <array>
#include <string>
#include <vector>

#include "client.h"
#include "own_process.h"
#include "wire/fcd_status.h"

namespace ficon::test {

inline constexpr std::uint32_t kPortWait = 20'000;
inline constexpr std::uint32_t kSpan = 36;
inline constexpr std::uint16_t kNone = 512;

inline std::uint32_t code(FcdStatus status) {
  return static_cast<std::uint32_t>(status);
}

/** The index of a Fibre Channel port; slot and port from 1. */
constexpr if_index_t fc(std::uint32_t slot, std::uint32_t port) {
  return 0x01000000 | (slot - 1) << 12 | (port - 1);
}

/** The records of the library, of which references may be taken. */
struct PlacedPort {
  std::uint32_t state;
  std::uint32_t port_address;
  if_index_t if_index;
  std::uint32_t port_number;
};
struct NumberedPort {
  std::uint32_t state;
  std::uint32_t port_address;
  if_index_t if_index;
};

struct Span {
  std::uint32_t status;
  std::vector<PlacedPort> ports;
};

struct Keys {
  std::uint32_t status;
  if_index_t if_index;
  std::uint16_t port_number;
  std::uint16_t port_address;
};

struct Reserved {
  std::uint32_t status;
  std::vector<std::uint32_t> numbers;  // first and last of each range
  std::uint32_t result;
  std::string text;
};

class PortClient {
 public:
  explicit PortClient(const std::string& socket) : own_(socket) {}

  mts_handle_t handle() const { return own_.get(); }

  template <class Function, class... Arguments>
  std::uint32_t call(Function function, Arguments... arguments) const {
    return function(1, handle(), "TEST", "PORTS", kPortWait, arguments...);
  }

  /** Interface indexes as they came: in network order. */
  Span span(std::uint32_t module, std::uint32_t start, bool logical = false) const {
    std::array<ficon_cmi_portmap_entry_t, kSpan> entries{};
    std::uint32_t count = 0;
    const std::uint32_t status =
        ficon_cmi_get_portmap_entry(handle(), "TEST", "PORTS", kPortWait, module, start,
                                    logical ? 1 : 0, entries.data(), &count);
    Span span{status, {}};
    if (status != 0 || count > kSpan) return span;
    for (std::uint32_t i = 0; i < count; ++i) {
      const auto& entry = entries[i];
      span.ports.push_back({entry.state, entry.port_address, entry.if_index, entry.port_number});
    }
    return span;
  }

  std::vector<NumberedPort> numbers(std::uint32_t first, std::uint32_t last) const {
    std::vector<ficon_cmi_portmap_full_entry_t> entries(last - first + 1, {0, 0xff, 0});
    REQUIRE(ficon_cmi_get_portmap_full(handle(), "TEST", "PORTS", kPortWait, first, last,
                                       entries.data()) == 0);
    std::vector<NumberedPort> ports;
    for (const auto& entry : entries) {
      ports.push_back({entry.state, entry.port_address, entry.if_index});
    }
    return ports;
  }

  Keys walk(std::uint32_t type, if_index_t if_index, std::uint16_t number,
            std::uint16_t address) const {
    Keys keys{0, if_index, number, address};
    keys.status = ficon_send_get_portmap(handle(), "TEST", "PORTS", kPortWait, type, 0,
                                         &keys.if_index, &keys.port_number, &keys.port_address);
    return keys;
  }

  Reserved reserve(std::uint8_t op, std::uint32_t module,
                   const std::vector<std::uint32_t>& numbers = {}) const {
    std::array<std::uint32_t, 64> firsts{};
    std::array<std::uint32_t, 64> lasts{};
    auto count = static_cast<std::int32_t>(numbers.size() / 2);
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      (i % 2 == 0 ? firsts : lasts)[i / 2] = numbers[i];
    }
    std::array<char, 257> text{};
    Reserved reply{};
    reply.status = call(ficon_cmi_reserve_portnum, op, module, 0U, &reply.result, &count,
                        firsts.data(), lasts.data(), text.data());
    for (std::int32_t i = 0; i < count; ++i) {
      const auto row = static_cast<std::size_t>(i);
      reply.numbers.insert(reply.numbers.end(), {firsts[row], lasts[row]});
    }
    reply.text = text.data();
    return reply;
  }

  std::uint32_t set_number(std::uint8_t op, if_index_t if_index, std::uint32_t number) const {
    return ficon_cmi_set_portnum(handle(), op, if_index, number, kPortWait);
  }

  /** The interfaces of the port addresses 00 to fd, 0 where there is none. */
  std::vector<if_index_t> interfaces_by_address(std::uint32_t numbers_up_to) const {
    std::vector<if_index_t> interfaces(254);
    for (const auto& entry : numbers(0, numbers_up_to)) {
      if (entry.port_address != 0xff) interfaces.at(entry.port_address) = entry.if_index;
    }
    return interfaces;
  }

 private:
  Connected own_;
};

/** What a cable, a laser or an operator does to a port: 0 up, 1 offline, 2 shut down, 3 failed. */
inline bool set_condition(Client& client, if_index_t if_index, std::uint32_t condition) {
  constexpr std::uint32_t kSetCondition = 6;
  constexpr std::uint32_t kPortManager = 202;
  const auto reply = client.call(kSetCondition, be32(if_index) + be32(condition), kPortManager);
  return reply && be32_at(*reply, 0) == 0;
}

}  // namespace ficon::test
