/** One step of a walk over the port map, asked of the FICON base service. */
#include <platform/ficon_base.h>
#include <platform/mts.h>
#include <platform/port_manager.h>

#include <cerrno>

#include "protocol/port_map.h"
#include "transport/message.h"
#include "wire/address.h"

using namespace ficon;
using namespace ficon::platform;

uint32_t ficon_send_get_portmap_nonblock(mts_handle_t handle, const char* /*word_a*/,
                                         const char* /*word_b*/, uint32_t type, uint8_t selector,
                                         if_index_t if_index, uint16_t key1, uint16_t key2,
                                         mts_msg_ref_t* msg) {
  PortmapRequest request{};
  request.type.set(type);
  request.selector = selector;
  request.if_index.set(if_index);
  request.port_number.set(key1);
  request.port_address.set(key2);
  const mts_send_opts_t options{{1, 1}};
  if (mts_send(handle, wire::kFcdNode, static_cast<std::uint32_t>(ServiceSap::kFiconBase),
               static_cast<std::uint32_t>(FiconBaseOpcode::kPortmap), &request, sizeof request, msg,
               0, &options) == 0) {
    return 0;
  }
  return static_cast<std::uint32_t>(mts_errno_get(handle));
}

uint32_t ficon_parse_get_portmap(mts_msg_ref_t* reply, if_index_t* if_index, uint16_t* key1,
                                 uint16_t* key2) {
  const void* payload = mts_payload_get(reply);
  if (payload == nullptr) return ENOSYS;
  if (received_length(payload) != sizeof(PortmapReply)) return EBADMSG;
  const auto* answer = static_cast<const PortmapReply*>(payload);
  if (const std::uint32_t refusal = answer->status.get()) return refusal;
  *if_index = answer->if_index.get();
  *key1 = answer->port_number.get();
  *key2 = answer->port_address.get();
  return 0;
}
