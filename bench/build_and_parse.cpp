/**
 * Building the request that changes a setting of a VSAN and parsing the reply to it, without a
 * transport, beside the bare memory operations and beside libmnl doing the same attributes.
 */
#include <libmnl/libmnl.h>
#include <linux/netlink.h>
#include <platform/ficon_base.h>
#include <platform/mts.h>

#include <cstring>

#include "measure.h"
#include "wire/cmi_header.h"
#include "wire/vsan_config.h"

using namespace ficon;

namespace {

constexpr std::size_t kCapacity = 2048;

alignas(nlmsghdr) std::uint8_t sent[kCapacity];

}  // namespace

// The transport's place: a request is taken as it is, and is its own reply.
int32_t mts_send(mts_handle_t, uint32_t, uint32_t, uint32_t, const void* payload, uint32_t length,
                 mts_msg_ref_t* msg, uint32_t, const mts_send_opts_t*) {
  std::memcpy(sent, payload, length);
  msg->impl = sent;
  return 0;
}
int32_t mts_recv(mts_handle_t, mts_msg_ref_t*, const mts_recv_opts_t*) {
  return -1;
}
int32_t mts_drop(mts_handle_t, mts_msg_ref_t*) {
  return 0;
}
void* mts_payload_get(mts_msg_ref_t* msg) {
  return msg->impl;
}
uint32_t mts_rr_token_get(mts_msg_ref_t*) {
  return 1;
}
int32_t mts_errno_get(mts_handle_t) {
  return 0;
}

namespace {

wire::CmiHeader header;
std::uint32_t result;

void library() {
  mts_msg_ref_t message{};
  ficon_cmi_user_alert_mode_nonblock(1, nullptr, "VSH", "UNKNOWN", 0, 10, 1, &message);
  result = ficon_cmi_parse_vsan_cfg(&message);
  bench::keep(&result);
}

/** Zero the records and the buffer, copy both in, hand the bytes over, copy the header out. */
void memory() {
  wire::CmiHeader built;
  std::memset(&built, 0, sizeof built);
  wire::VsanConfig change;
  std::memset(&change, 0, sizeof change);
  std::uint8_t buffer[kCapacity];
  std::memset(buffer, 0, sizeof buffer);
  bench::keep(buffer);
  std::memcpy(buffer + 8, &built, sizeof built);
  std::memcpy(buffer + 12 + sizeof built, &change, sizeof change);
  bench::keep(buffer);
  std::memcpy(sent, buffer, 12 + sizeof built + sizeof change);
  bench::keep(sent);
  std::memcpy(&header, sent + 8, sizeof header);
  bench::keep(&header);
}

int copy_header(const nlattr* attribute, void* data) {
  if (mnl_attr_get_type(attribute) == 12 &&
      mnl_attr_get_payload_len(attribute) >= sizeof(wire::CmiHeader)) {
    std::memcpy(data, mnl_attr_get_payload(attribute), sizeof(wire::CmiHeader));
  }
  return MNL_CB_OK;
}

/** The same two attributes with the same contents, checked room, and a checked walk. */
void libmnl() {
  wire::CmiHeader built;
  std::memset(&built, 0, sizeof built);
  ficon_init_cmi_hdr(&built, static_cast<std::uint32_t>(wire::MessageType::kSet), "VSH", "UNKNOWN",
                     static_cast<std::uint32_t>(wire::Subtype::kVsan));
  built.requester.set(1);
  built.operation.set(static_cast<std::uint32_t>(wire::VsanOperation::kUserAlertMode));
  built.vsan.set(10);
  wire::VsanConfig change;
  std::memset(&change, 0, sizeof change);
  change.vsan.set(10);
  change.user_alert_mode = 1;
  alignas(nlmsghdr) std::uint8_t buffer[kCapacity];
  std::memset(buffer, 0, sizeof buffer);
  nlmsghdr* message = mnl_nlmsg_put_header(buffer);
  mnl_attr_put_check(message, sizeof buffer, 12, sizeof built, &built);
  mnl_attr_put_check(message, sizeof buffer, 2, sizeof change, &change);
  std::memcpy(sent, buffer, message->nlmsg_len);
  bench::keep(sent);
  mnl_attr_parse(reinterpret_cast<const nlmsghdr*>(sent), 0, copy_header, &header);
  result = header.status.get();
  bench::keep(&result);
}

/** Where the buffers lie decides as much as what is done with them: so they lie here and there. */
template <class Work>
[[gnu::noinline]] void at_depth(std::size_t depth, const Work& work) {
  bench::keep(__builtin_alloca(depth + 16));
  work();
}

}  // namespace

int main() {
  std::puts("build and parse of a VSAN setting: 1487 bytes in two TLVs");
  std::vector<bench::Contender> contenders = {{"memset and memcpy of the same bytes", memory, {}},
                                              {"ficon_cmi", library, {}},
                                              {"libmnl", libmnl, {}}};
  for (std::size_t depth = 0; depth < 4096; depth += 272) {
    at_depth(depth, [&] { bench::measure(contenders, 25, 2000); });
  }
  bench::print(contenders);
  return result == 0 ? 0 : 1;
}
