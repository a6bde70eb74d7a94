/** The states of port-map entries: from the port manager first, then from fcd for the rest. */
#pragma once

#include "exchange/allocation.h"
#include "exchange/exchange.h"
#include "exchange/interface_field.h"
#include "ports/interface_index.h"
#include "ports/port_map_reply.h"
#include "wire/port_map.h"
#include "wire/port_plan.h"

namespace ficon {

/** Ranges of one interface each, as the port manager is asked for. */
class InterfaceRanges {
 public:
  InterfaceRanges(std::uint32_t room, int line)
      : ranges_(allocate(TEVRAK_MEM_ifindex_rng, room * sizeof(ficon_cmi_ifindex_rng_t), line)) {
    if (ranges_) __builtin_memset(ranges_.get(), 0, room * sizeof(ficon_cmi_ifindex_rng_t));
  }

  explicit operator bool() const { return static_cast<bool>(ranges_); }
  std::uint32_t count() const { return count_; }
  void append(if_index_t if_index) { ranges_[count_++] = {if_index, if_index}; }

  /** Asks the port manager, and releases the ranges whatever it says. */
  Status read_ports(const Caller& caller, std::uint32_t* count, pm_cmi_port_config_t** records) {
    const Status result = ficon_pm_cmi_get_port_config(caller.handle, 1, count_, ranges_.get(),
                                                       count, records, caller.wait);
    mtrack_free(ranges_.release());
    return result;
  }

 private:
  Tracked<ficon_cmi_ifindex_rng_t> ranges_;
  std::uint32_t count_ = 0;
};

/** Port modes of the port manager in which fcd knows more than it: ports towards a device. */
inline constexpr bool is_device_port(std::uint32_t mode) {
  return mode == 32 || mode == 4;
}

/** The state of a port that the port manager flags. */
inline std::uint8_t flagged_state(bool device_port) {
  return static_cast<std::uint8_t>(device_port ? wire::PortState::kOnline
                                               : wire::PortState::kInterSwitch);
}

/** What fcd's record of an interface says. */
wire::PortState state_from(const wire::InterfaceState& record);

/** The query to fcd for a port of the port manager. */
wire::InterfaceState interface_query(const pm_cmi_port_config_t& port);

/** Sets the states that the port manager knows and adds a query to fcd for each device port. */
template <class Entry>
Status apply_port_manager(const Caller& caller, InterfaceRanges& ranges,
                          const InterfaceIndex<Entry>& index, TlvWriter& queries, bool* asks_fcd) {
  std::uint32_t count = 0;
  pm_cmi_port_config_t* answer = nullptr;
  const Status failure = ranges.read_ports(caller, &count, &answer);
  const Tracked<pm_cmi_port_config_t> ports(answer);
  if (failure != 0) return failure;
  for (std::uint32_t i = 0; i < count; ++i) {
    Entry* entry = index.find(ports[i].if_index);
    if (entry == nullptr) continue;
    const bool device_port = is_device_port(ports[i].port_mode);
    if (ports[i].flags != 0) entry->state = flagged_state(device_port);
    if (!device_port) continue;
    queries.add(wire::TlvType::kInterfaceState, interface_query(ports[i]));
    if (queries.status() != 0) return queries.status();
    *asks_fcd = true;
  }
  return status::kOk;
}

/** Sets the states that fcd's answer tells; a failed walk ends it. */
template <class Entry>
Status apply_interface_states(TlvReader& reader, const InterfaceIndex<Entry>& index) {
  if (reader.empty()) {
    trace("CMI_ERROR: invalid cmi payload: no tlvs present\n");
    return status::kInvalidPayload;
  }
  for (Tlv tlv{}; reader.find(wire::TlvType::kInterfaceState, tlv);) {
    const auto record = tlv.read<wire::InterfaceState>();
    if (record.status.get() != 0) continue;
    const if_index_t if_index = hton_if_index(stored_interface(record.if_index));
    if (if_index == 0) continue;
    if (Entry* entry = index.find(if_index)) {
      entry->state = static_cast<std::uint8_t>(state_from(record));
    }
  }
  if (reader.status() != 0) trace("CMI_ERROR: tlv_next_tlv gave error\n");
  return reader.status();
}

/** Asks fcd. Not the usual exchange: an answer whose walk fails is left undropped, as intended. */
template <class Entry>
Status ask_interface_states(const Caller& caller, const TlvWriter& queries,
                            const InterfaceIndex<Entry>& index) {
  mts_msg_ref_t request{};
  if (const Status failure = queries.send(caller, wire::Opcode::kInterfaceState, &request)) {
    return failure;
  }
  mts_msg_ref_t reply{};
  if (const Status failure = await_reply(caller, &request, &reply)) return failure;
  TlvReader reader(mts_payload_get(&reply));
  const Status result = apply_interface_states(reader, index);
  if (reader.status() == 0) mts_drop(caller.handle, &reply);
  return result;
}

/** The states of the ports in `ranges`, into the entries that `index` finds. */
template <class Entry>
Status read_port_states(const Caller& caller, InterfaceRanges& ranges,
                        const InterfaceIndex<Entry>& index) {
  PortMapTlvs queries;
  bool asks_fcd = false;
  const Status failure = apply_port_manager(caller, ranges, index, queries, &asks_fcd);
  if (failure != 0 || !asks_fcd) return failure;
  return ask_interface_states(caller, queries, index);
}

}  // namespace ficon
