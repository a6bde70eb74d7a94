/** The port map of a module, or of the logical ports, up to 36 ports at a time. */
#include <alloca.h>
#include <platform/ficon_base.h>
#include <platform/port_manager.h>

#include "exchange/exchange.h"
#include "ports/port_map_reply.h"
#include "ports/port_states.h"
#include "wire/port_info_request.h"
#include "wire/port_map.h"
#include "wire/port_plan.h"

using namespace ficon;

namespace {

constexpr std::uint32_t kSpanPorts = 36;

/** Consecutive port numbers, none beyond their block. */
struct Span {
  std::uint32_t first;
  std::uint32_t last;
  std::uint32_t count;  // a start beyond the block makes it 0 or wrap below 0

  bool empty() const { return count == 0 || count > kSpanPorts; }
};

Span span_of(std::uint32_t block_first, std::uint32_t block_ports, std::uint32_t start) {
  const std::uint32_t first = block_first + start;
  if (start <= block_ports - kSpanPorts) return {first, first + kSpanPorts - 1, kSpanPorts};
  return {first, block_first + block_ports - 1, block_ports - start};
}

/** What fcd tells of a span. */
struct SpanTables {
  std::uint32_t rows;
  std::uint32_t* interfaces;  // by port number
  wire::PortRecord ports[kSpanPorts];
};

Status read_span(const Caller& caller, const Span& span, SpanTables& tables) {
  const auto send = [&](mts_msg_ref_t* request) -> Sent {
    wire::PortRange range{};
    range.first.set(span.first);
    range.last.set(span.last);
    return PortMapTlvs()
        .add(wire::TlvType::kPortInfoRequest,
             port_map_request(caller, wire::PortSelector::kPortNumbers))
        .add(wire::TlvType::kPortNumberRange, range)
        .send(caller, wire::Opcode::kPortInfo, request);
  };
  const auto read = [&](const Tlv& tlv) {
    if (tlv.is(wire::TlvType::kPortRecords) && !span.empty()) {
      return take_table(tlv, tables.ports, span.count * sizeof(wire::PortRecord));
    }
    if (tlv.is(wire::TlvType::kNumberToInterfaceMap)) {
      return take_table(tlv, tables.interfaces, tables.rows * sizeof *tables.interfaces);
    }
    return status::kOk;
  };
  return exchange(caller, send, report_nothing, [&](mts_msg_ref_t* reply) {
    return parse_port_map(reply, wire::TlvType::kNumberToInterfaceMap, wire::TlvType::kPortRecords,
                          tables.rows, read);
  });
}

/** Where a module's interfaces are. */
struct ModulePorts {
  std::uint8_t slot;
  std::uint32_t count;
};

Status find_module(mts_handle_t handle, std::uint32_t module, ModulePorts& ports) {
  const auto lc = static_cast<std::uint8_t>(module - 1);
  if (const Status failure = ficonm_platform_lc_to_slot_b0(lc, &ports.slot)) return failure;
  ports.count = static_cast<std::uint32_t>(
      ficon_cmi_fc_port_in_mod(handle, static_cast<std::uint8_t>(ports.slot + 1)));
  return status::kOk;
}

/** A 16-bit number or address in an entry's byte. */
std::uint8_t port_byte(wire::host16 port) {
  return port.get() == wire::kNoPort ? wire::kNoPortByte : static_cast<std::uint8_t>(port.get());
}

/** Looked up by the byte that the entry holds, not by the whole port number: intended. */
bool logical_interface(std::uint8_t port_number, const SpanTables& tables, if_index_t* if_index) {
  return port_number < tables.rows &&
         ficon_pmap_get_pn_to_phyif(port_number, if_index, tables.rows, tables.interfaces) == 0 &&
         *if_index != 0;
}

bool physical_interface(std::uint32_t port, const ModulePorts& module, if_index_t* if_index) {
  return port < module.count &&
         if_index_phy_fc_port_init(if_index, module.slot, static_cast<std::uint8_t>(port), 0) == 0;
}

/** Fills the entries; one without an interface keeps the caller's bytes in that field. */
template <class FindInterface>
void fill_entries(const SpanTables& tables, const Span& span, FindInterface find_interface,
                  ficon_cmi_portmap_entry_t* entries, InterfaceRanges& ranges) {
  for (std::uint32_t i = 0; i < span.count; ++i) {
    ficon_cmi_portmap_entry_t& entry = entries[i];
    entry.state = static_cast<std::uint8_t>(wire::PortState::kUnknown);
    entry.port_number = port_byte(tables.ports[i].port_number);
    entry.port_address = port_byte(tables.ports[i].port_address);
    if_index_t if_index = 0;
    if (!find_interface(i, entry.port_number, &if_index)) continue;
    entry.if_index = if_index;
    if (if_index != 0) ranges.append(if_index);
  }
}

void to_network_order(ficon_cmi_portmap_entry_t* entries, std::uint32_t count) {
  for (std::uint32_t i = 0; i < count; ++i) {
    wire::be32 network;
    network.set(entries[i].if_index);
    __builtin_memcpy(&entries[i].if_index, network.raw, sizeof network);
  }
}

}  // namespace

uint32_t ficon_cmi_get_portmap_entry(mts_handle_t handle, const char* word_a, const char* word_b,
                                     uint32_t wait, uint32_t module, uint32_t start,
                                     int32_t logical, ficon_cmi_portmap_entry_t* entries,
                                     uint32_t* count) {
  const Caller caller{0, handle, word_a, word_b, wait};
  SpanTables tables{};
  tables.rows = map_rows(ficon_cmi_get_max_portnumber());
  tables.interfaces = static_cast<std::uint32_t*>(alloca((tables.rows + 1) * sizeof(if_index_t)));
  __builtin_memset(tables.interfaces, 0, tables.rows * sizeof(if_index_t));

  const Span span =
      logical != 0 ? span_of(wire::kFirstLogicalPort, wire::kLogicalPorts, start)
                   : span_of((module - 1) * wire::kPortsPerModule, wire::kPortsPerModule, start);
  *count = span.count;
  if (const Status failure = read_span(caller, span, tables)) return failure;

  ModulePorts ports{};
  if (logical == 0) {
    if (const Status failure = find_module(handle, module, ports)) return failure;
  }
  InterfaceRanges ranges(kSpanPorts, __LINE__);
  if (!ranges) return status::kAllocationFailed;
  __builtin_memset(static_cast<void*>(entries), 0, 4);
  if (span.empty()) return status::kOk;

  const auto find_interface = [&](std::uint32_t i, std::uint8_t port_number, if_index_t* if_index) {
    return logical != 0 ? logical_interface(port_number, tables, if_index)
                        : physical_interface(start + i, ports, if_index);
  };
  fill_entries(tables, span, find_interface, entries, ranges);
  if (ranges.count() == 0) return status::kOk;

  using Index = InterfaceIndex<ficon_cmi_portmap_entry_t>;
  std::uint16_t slots[Index::slots_for(kSpanPorts)];
  const Index index(entries, span.count, slots);
  if (const Status failure = read_port_states(caller, ranges, index)) return failure;
  to_network_order(entries, span.count);
  return status::kOk;
}
