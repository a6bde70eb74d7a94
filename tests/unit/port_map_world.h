/** A scripted platform whose port manager, chassis and port-number map answer by tables. */
#pragma once

#include <doctest/doctest.h>

#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "double/fakes.h"
#include "double/scripted_platform.h"

namespace ficon::test {

/** A row that the look-up by port number refuses, in a map whose other rows are interfaces. */
inline constexpr std::uint32_t kRefusedRow = 0xdeaddead;
inline constexpr std::uint32_t kRefusal = 0x40880011;

struct PortOfManager {
  std::uint32_t mode = 4;
  std::uint8_t flags = 0;
  std::uint32_t port_vsan = 0x55667788;
};

/** The port manager's record, by its offsets. */
inline Bytes port_record(std::uint32_t if_index, const PortOfManager& port) {
  return record(498)
      .host32(0, if_index)
      .host32(143, port.port_vsan)
      .host32(147, port.mode)
      .u8(211, port.flags);
}

inline pm_cmi_port_config_t* handed_out_records(const std::vector<Bytes>& records) {
  auto* block = static_cast<std::uint8_t*>(std::malloc(records.size() * 498 + 1));
  for (std::size_t i = 0; i < records.size(); ++i) {
    std::copy(records[i].begin(), records[i].end(), block + i * 498);
  }
  return reinterpret_cast<pm_cmi_port_config_t*>(block);
}

/** Interfaces: 0x01000000 + slot * 256 + port for physical ports. */
inline std::uint32_t physical(unsigned slot, unsigned port) {
  return 0x01000000 + slot * 256 + port;
}

class PortMapWorld {
 public:
  explicit PortMapWorld(std::uint32_t max_port_number = 1279) : rows(max_port_number + 1) {
    auto& on = platform.on;
    on.ficon_cmi_get_max_portnumber = [this] { return rows - 1; };
    on.ficonm_platform_lc_to_slot_b0 = [](std::uint8_t lc, std::uint8_t* slot) {
      *slot = static_cast<std::uint8_t>(lc + 1);
      return 0U;
    };
    on.if_index_phy_fc_port_init = [](if_index_t* out, std::uint8_t slot, std::uint8_t port,
                                      std::uint32_t zero) {
      CHECK(zero == 0);
      *out = physical(slot, port);
      return 0U;
    };
    on.if_index_get_type = [](if_index_t if_index, std::uint32_t* type) {
      *type = if_index >> 24;
      return 0U;
    };
    on.ficon_pmap_get_pn_to_phyif = [this](std::uint32_t port_number, if_index_t* out,
                                           std::uint32_t its_rows, const std::uint32_t* map) {
      CHECK(its_rows == rows);
      REQUIRE(port_number < its_rows);
      if (map[port_number] == kRefusedRow) return kRefusal;
      *out = map[port_number];
      return 0U;
    };
    on.pm_get_port_info_brief = [this](mts_handle_t, std::uint32_t, std::uint32_t, std::uint32_t,
                                       std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                                       mts_msg_ref_t* reply) {
      platform.deliver(reply, zeros(4));
      return 0U;
    };
    on.pm_parse_get_port_info_brief = [this](mts_msg_ref_t*, std::uint32_t* count,
                                             pm_port_info_brief_t** records) {
      std::vector<pm_port_info_brief_t> ports(module_ports);
      for (auto& port : ports) port.if_index = physical(1, 0);
      *count = module_ports;
      *records = handed_out(ports);
      return 0U;
    };
    on.pm_cmi_get_port_config = [this](mts_handle_t, std::uint32_t kind, std::uint32_t n,
                                       const ficon_cmi_ifindex_rng_t* ranges, std::uint32_t* count,
                                       pm_cmi_port_config_t** records, std::uint32_t wait) {
      CHECK(kind == 1);
      CHECK(wait == 5);
      std::vector<Bytes> answer;
      for (std::uint32_t i = 0; i < n; ++i) {
        CHECK(ranges[i].first_if == ranges[i].last_if);
        asked.push_back(ranges[i].first_if);
        answer.push_back(port_record(ranges[i].first_if, manager(ranges[i].first_if)));
      }
      *count = n;
      *records = handed_out_records(answer);
      return 0U;
    };
  }

  /** The map of port numbers to interfaces as fcd sends it; rows not named are 0. */
  Bytes interface_map(const std::map<std::uint32_t, std::uint32_t>& named) const {
    Record map(rows * 4);
    for (const auto& [row, if_index] : named) map.host32(row * 4, if_index);
    return map;
  }

  ScriptedPlatform platform;
  std::uint32_t rows;
  std::uint32_t module_ports = 64;
  std::vector<std::uint32_t> asked;  // of the port manager
  std::function<PortOfManager(std::uint32_t)> manager = [](std::uint32_t) {
    return PortOfManager{2, 0};
  };
};

/** fcd's header of a port-map answer. */
inline Bytes map_header(std::uint32_t status = 0) {
  return record(145).host32(141, status);
}

/** One row of the port table. */
inline Bytes port_row(std::uint16_t port_number, std::uint16_t port_address) {
  return record(20).host16(0, port_number).host16(2, port_address).fill(4, 16, 0x5a);
}

/** fcd's record of an interface; `status` 0 lets it count. */
inline Bytes interface_row(std::uint32_t if_index, std::uint8_t flags, std::uint8_t reason,
                           std::uint32_t status = 0) {
  return record(60).be32(0, if_index).be32(20, status).u8(28, flags).u8(30, reason);
}

}  // namespace ficon::test
