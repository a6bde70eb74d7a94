/** Which port number belongs to which interface, and how many ports a module has. */
#include <platform/port_manager.h>

#include "exchange/allocation.h"
#include "exchange/interface_field.h"
#include "ports/number_request.h"
#include "wire/port_numbers.h"

using namespace ficon;

namespace {

constexpr std::uint32_t kPhysicalPort = 1;  // interface type

void print_binding(const wire::PortNumberBinding& answer, int vsan, int port_number) {
  if (answer.status.get() != 0) {
    console("vsan %d portnumber %d is not bound to interface\n", vsan, port_number);
    return;
  }
  char name[100] = "";  // stays empty for an interface that the platform cannot name
  snprintf_if_index(name, sizeof name, answer.if_index.get());
  console("vsan %d portnumber %d is bound to interface %s\n", vsan, port_number, name);
}

/** A port channel that the system created never gets a port number this way. */
Status refuse_auto_created(mts_handle_t handle, if_index_t if_index) {
  std::uint32_t auto_created = 0;
  if (const Status failure = pcm_is_pc_auto_created(handle, if_index, &auto_created)) {
    return failure;
  }
  return auto_created != 0 ? status::kAutoCreatedPortChannel : status::kOk;
}

std::int32_t count_physical(const pm_port_info_brief_t* ports, std::uint32_t count) {
  std::int32_t physical = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    std::uint32_t type = 0;
    if (if_index_get_type(ports[i].if_index, &type) == 0 && type == kPhysicalPort) ++physical;
  }
  return physical;
}

}  // namespace

int32_t ficon_cmi_vsan_portnum_intf(mts_handle_t handle, uint8_t op, uint32_t vsan,
                                    uint32_t port_number, if_index_t if_index, uint32_t wait) {
  wire::PortNumberBinding record{};
  record.vsan.set(vsan);
  record.port_number.set(port_number);
  set_interface(record.if_index, if_index);
  record.operation = op;
  const Status result = exchange_record(
      {0, handle, nullptr, nullptr, wait}, wire::Opcode::kPortNumberBinding,
      wire::TlvType::kPortNumberBinding, record, {"ficon_cmi_vsan_portnum_intf", __LINE__},
      [&](const wire::PortNumberBinding& answer) {
        if (op == wire::kBindingQuery) {
          print_binding(answer, static_cast<int>(vsan), static_cast<int>(port_number));
        }
        return answer.status.get();
      });
  return static_cast<std::int32_t>(result);
}

uint32_t ficon_cmi_set_portnum(mts_handle_t handle, uint8_t op, if_index_t if_index,
                               uint32_t port_number, uint32_t wait) {
  if (op == 0 || op > wire::kLastAssignOperation) return status::kInvalidPayload;
  if (op == wire::kAssignPortNumber) {
    if (const Status refused = refuse_auto_created(handle, if_index)) return refused;
  }
  wire::PortNumberAssignment record{};
  set_interface(record.if_index, if_index);
  record.port_number.set(port_number);
  record.operation = op;
  return exchange_record(
      {0, handle, nullptr, nullptr, wait}, wire::Opcode::kSetPortNumber,
      wire::TlvType::kSetPortNumber, record, {"ficon_cmi_set_portnum", __LINE__},
      [](const wire::PortNumberAssignment& answer) { return answer.status.get(); });
}

int32_t ficon_cmi_fc_port_in_mod(mts_handle_t handle, uint8_t module) {
  const auto bit = static_cast<std::uint8_t>(module - 1);
  mts_msg_ref_t reply{};
  if (const Status failure =
          pm_get_port_info_brief(handle, 1, 1u << (bit & 31), 65535, 255, 255, 0, 0, &reply)) {
    console("unable to get port info of module %d from PM rc = %x\n", bit, failure);
    return 0;
  }
  std::uint32_t count = 0;
  pm_port_info_brief_t* answer = nullptr;
  if (const Status failure = pm_parse_get_port_info_brief(&reply, &count, &answer)) {
    console("unable to parse port info of module %d from PM rc = %x\n", bit, failure);
    mts_drop(handle, &reply);
    return 0;
  }
  const Malloced<pm_port_info_brief_t> ports(answer);
  const std::int32_t physical = count_physical(answer, count);
  mts_drop(handle, &reply);
  return physical;
}
