/** The port map of any range of port numbers. */
#include <alloca.h>
#include <platform/ficon_base.h>

#include "exchange/exchange.h"
#include "ports/port_map_reply.h"
#include "ports/port_states.h"
#include "wire/port_map.h"

using namespace ficon;

namespace {

constexpr std::uint16_t kNoAddress = 0xffff;

/** What fcd tells of all port numbers, by port number. */
struct PortTables {
  std::uint32_t rows;
  std::uint32_t* interfaces;
  std::uint16_t* addresses;  // kNoAddress for none
};

/**
 * Turns the map from port addresses to port numbers around. A port number's own address comes
 * first, else the lowest one that holds it.
 */
Status take_addresses(const Tlv& tlv, PortTables& tables) {
  if (tlv.length != tables.rows * sizeof(wire::AddressMapRow)) return status::kInvalidPayload;
  const auto* map = static_cast<const wire::AddressMapRow*>(tlv.value);
  for (std::uint32_t row = 0; row < tables.rows; ++row) tables.addresses[row] = kNoAddress;
  for (std::uint32_t address = tables.rows; address-- > 0;) {
    const std::uint16_t port_number = map[address].get();
    if (port_number < tables.rows && tables.addresses[port_number] != port_number) {
      tables.addresses[port_number] = static_cast<std::uint16_t>(address);
    }
  }
  return status::kOk;
}

/** The tables as they are when fcd leaves them out: rows of zeros. */
void clear_tables(PortTables& tables) {
  for (std::uint32_t row = 0; row < tables.rows; ++row) {
    tables.interfaces[row] = 0;
    tables.addresses[row] = row == 0 ? 0 : kNoAddress;
  }
}

Status read_tables(const Caller& caller, PortTables& tables) {
  const auto send = [&](mts_msg_ref_t* request) -> Sent {
    return PortMapTlvs()
        .add(wire::TlvType::kPortInfoRequest,
             port_map_request(caller, wire::PortSelector::kEveryPortNumber))
        .send(caller, wire::Opcode::kPortInfo, request);
  };
  const auto read = [&](const Tlv& tlv) {
    if (tlv.is(wire::TlvType::kAddressToNumberMap)) return take_addresses(tlv, tables);
    if (tlv.is(wire::TlvType::kNumberToInterfaceMap)) {
      return take_table(tlv, tables.interfaces, tables.rows * sizeof *tables.interfaces);
    }
    return status::kOk;
  };
  return exchange(caller, send, report_nothing, [&](mts_msg_ref_t* reply) {
    return parse_port_map(reply, wire::TlvType::kAddressToNumberMap,
                          wire::TlvType::kNumberToInterfaceMap, tables.rows, read);
  });
}

/** Looks a port up; a port without address or interface keeps the caller's bytes in that field. */
bool fill_entry(const PortTables& tables, std::uint32_t port_number,
                ficon_cmi_portmap_full_entry_t& entry) {
  if (tables.addresses[port_number] == kNoAddress) return false;
  entry.port_address = static_cast<std::uint8_t>(tables.addresses[port_number]);
  if_index_t if_index = entry.if_index;
  const Status failure =
      ficon_pmap_get_pn_to_phyif(port_number, &if_index, tables.rows, tables.interfaces);
  entry.if_index = if_index;
  return failure == 0 && if_index != 0;
}

/** Fills the entries; forgets the addresses of ports without an interface and counts the rest. */
std::uint32_t fill_entries(PortTables& tables, std::uint32_t first, std::uint32_t last,
                           ficon_cmi_portmap_full_entry_t* entries) {
  std::uint32_t found = 0;
  for (std::size_t i = 0; i <= last - first; ++i) {
    entries[i].state = static_cast<std::uint8_t>(wire::PortState::kUnknown);
    const std::size_t port_number = first + i;
    if (port_number >= tables.rows) continue;
    if (fill_entry(tables, static_cast<std::uint32_t>(port_number), entries[i])) {
      ++found;
    } else {
      tables.addresses[port_number] = kNoAddress;
    }
  }
  return found;
}

}  // namespace

uint32_t ficon_cmi_get_portmap_full(mts_handle_t handle, const char* word_a, const char* word_b,
                                    uint32_t wait, uint32_t first, uint32_t last,
                                    ficon_cmi_portmap_full_entry_t* entries) {
  const Caller caller{0, handle, word_a, word_b, wait};
  if (first > last) {
    __builtin_memset(static_cast<void*>(entries), 0, 4);
    return status::kOk;
  }
  PortTables tables{};
  tables.rows = map_rows(ficon_cmi_get_max_portnumber());
  tables.interfaces = static_cast<std::uint32_t*>(alloca((tables.rows + 1) * sizeof(if_index_t)));
  tables.addresses = static_cast<std::uint16_t*>(alloca((tables.rows + 1) * sizeof(std::uint16_t)));
  clear_tables(tables);
  if (const Status failure = read_tables(caller, tables)) return failure;

  __builtin_memset(static_cast<void*>(entries), 0, 4);
  const std::uint32_t found = fill_entries(tables, first, last, entries);
  if (found == 0) return status::kOk;
  InterfaceRanges ranges(found, __LINE__);
  if (!ranges) return status::kAllocationFailed;
  const std::uint32_t end = last < tables.rows ? last + 1 : tables.rows;
  for (std::uint32_t port_number = first; port_number < end; ++port_number) {
    if (tables.addresses[port_number] != kNoAddress) {
      ranges.append(entries[port_number - first].if_index);
    }
  }

  using Index = InterfaceIndex<ficon_cmi_portmap_full_entry_t>;
  const std::uint32_t count = end - first;
  auto* slots =
      static_cast<std::uint16_t*>(alloca(Index::slots_for(count) * sizeof(std::uint16_t)));
  const Index index(entries, count, slots);
  return read_port_states(caller, ranges, index);  // interfaces stay in host order: intended
}
