#include "calls.h"

#include <platform/mts.h>

// There where leaks are looked for.
extern "C" {
[[gnu::weak]] void __lsan_disable();
[[gnu::weak]] void __lsan_enable();
}

namespace ficon::fuzz {
namespace {

/** For what is allocated meanwhile: the interface leaves it so, and nobody can release it. */
class MayLeak {
 public:
  MayLeak() {
    if (__lsan_disable != nullptr) __lsan_disable();
  }
  ~MayLeak() {
    if (__lsan_enable != nullptr) __lsan_enable();
  }
  MayLeak(const MayLeak&) = delete;
  MayLeak& operator=(const MayLeak&) = delete;
};

/** Long enough for an emulator; a reply that does not come is found missing at once. */
constexpr std::uint32_t kWait = 5000;
constexpr const char* kWordA = "FUZZ";
constexpr const char* kWordB = "UNKNOWN";

/** The leading parameters, then whatever the function takes besides. */
template <class Function, class... Rest>
std::uint32_t ask(Function function, mts_handle_t handle, const Arguments& args, Rest... rest) {
  return function(args.requester, handle, kWordA, kWordB, kWait, rest...);
}

/** Sends, receives and parses by hand, as users of a sender do. */
template <class Send, class Parse>
void converse(mts_handle_t handle, Send send, Parse parse) {
  mts_msg_ref_t request{};
  if (send(&request) != 0) return;
  const mts_recv_opts_t options{{1, 0, kWait, mts_rr_token_get(&request)}};
  mts_drop(handle, &request);
  mts_msg_ref_t reply{};
  if (ficon_cmi_mts_recv(handle, &reply, &options) != 0) return;
  parse(&reply);
  mts_drop(handle, &reply);
}

std::uint8_t low(std::uint32_t value) {
  return static_cast<std::uint8_t>(value);
}

std::uint16_t half(std::uint32_t value) {
  return static_cast<std::uint16_t>(value);
}

// The lock and the settings of a VSAN.

void lock(mts_handle_t h, Arguments& x) {
  ficon_get_fcd_lock(h, x.vsan, x.requester, kWait);
  ficon_fcd_lock_rec_t record{};
  ficon_get_fcd_lock_status(h, x.vsan, 0, kWait, &record);
  ficon_reset_fcd_lock(h, x.vsan, x.requester, kWait);
  ficon_free_fcd_lock(h, x.vsan, x.requester, kWait);
}

void set_mode(mts_handle_t h, Arguments& x) {
  const std::uint8_t modes[6] = {low(x.a), low(x.a >> 8), low(x.a >> 16), low(x.b), 0, 1};
  ask(ficon_cmi_set_mode, h, x, std::uint32_t{x.vsan}, modes);
}

template <auto Setter>
void set_byte(mts_handle_t h, Arguments& x) {
  ask(Setter, h, x, std::uint32_t{x.vsan}, low(x.a));
}

void set_codepage(mts_handle_t h, Arguments& x) {
  ask(ficon_cmi_set_codepage, h, x, std::uint32_t{x.vsan}, x.a);
}

void set_clock(mts_handle_t h, Arguments& x) {
  ask(ficon_cmi_set_tstmp_clock, h, x, std::uint32_t{x.vsan}, x.a, x.b);
  ask(ficon_cmi_clear_tstmp_clock, h, x, std::uint32_t{x.vsan});
}

void key_counter(mts_handle_t h, Arguments& x) {
  ask(ficon_cmi_inc_key_counter, h, x, std::uint32_t{x.vsan});
  ask(ficon_cmi_test_inc_key_counter, h, x, x.a, std::uint32_t{x.vsan});
}

void vsan_info(mts_handle_t h, Arguments& x) {
  ficon_cmi_vsan_cfg_t record{};
  ask(ficon_cmi_get_vsan_info, h, x, x.a, std::uint32_t{x.vsan}, &record);
  ask(ficon_cmi_get_codepage, h, x, std::uint32_t{x.vsan});
  std::uint32_t vsan = x.vsan;
  ask(ficon_cmi_getnext_codepage, h, x, &vsan);
}

void active_saved(mts_handle_t h, Arguments&) {
  std::uint8_t flag = 0;
  ficon_is_active_saved_enabled(h, kWait, &flag);
}

void box_status(mts_handle_t h, Arguments& x) {
  converse(
      h, [&](mts_msg_ref_t* request) { return ask(ficon_cmi_get_box_status, h, x, request); },
      [](mts_msg_ref_t* reply) {
        ficon_cmi_box_status_t* status = nullptr;
        ficon_cmi_parse_box_status(reply, &status);
        mtrack_free(status);
      });
}

// Host data, history, limits.

void get_host_data(mts_handle_t h, Arguments& x) {
  std::vector<std::uint8_t> data(16384);
  std::uint32_t length = 0;
  ask(ficon_cmi_get_host_data, h, x, std::uint32_t{x.vsan}, data.data(), &length);
  require(length <= data.size(), "host data has at most 16384 bytes");
}

void set_host_data(mts_handle_t h, Arguments& x) {
  const Bytes data(x.b % 512, low(x.c));
  ask(ficon_cmi_set_host_data, h, x, std::uint32_t{x.vsan}, x.a, data.data(),
      static_cast<std::uint32_t>(data.size()));
}

void pib(mts_handle_t h, Arguments& x) {
  converse(
      h,
      [&](mts_msg_ref_t* request) {
        return ask(ficon_cmi_send_get_pib, h, x, x.a, low(x.b), low(x.c), request);
      },
      [](mts_msg_ref_t* reply) {
        ficon_cmi_pib_rec_t* records = nullptr;
        ficon_cmi_parse_getpib(reply, 0, nullptr, nullptr, &records);
        mtrack_free(records);
      });
}

void history(mts_handle_t h, Arguments& x) {
  std::uint32_t key = x.b;
  std::uint32_t count = 0;
  std::uint32_t word = 0;
  ficon_cmi_hist_entry_t* entries = nullptr;
  ask(ficon_cmi_get_history_summary, h, x, x.a, &key, x.c, 0U, 0U, &count, &word, &entries);
  mtrack_free(entries);
}

void limits(mts_handle_t h, Arguments& x) {
  std::uint32_t type = 0;
  ask(ficon_cmi_get_getnext_type, h, x, &type);
  ask(ficon_cmi_set_getnext_type, h, x, x.a);
  ask(ficon_cmi_set_max_ports, h, x, x.b);
}

void mih_timeout(mts_handle_t h, Arguments& x) {
  ficon_cmi_mihpto_rec_t record{};
  ask(ficon_cmi_mihpto, h, x, low(x.a), std::uint32_t{x.vsan}, x.b, &record);
}

// Ports.

void portmap_entry(mts_handle_t h, Arguments& x) {
  ficon_cmi_portmap_entry_t entries[36] = {};
  std::uint32_t count = 0;
  ficon_cmi_get_portmap_entry(h, kWordA, kWordB, kWait, x.a, x.b, static_cast<std::int32_t>(x.c),
                              entries, &count);
}

void portmap_full(mts_handle_t h, Arguments& x) {
  const std::uint32_t first = x.a % 1280;
  const std::uint32_t last = first + x.b % 300;
  std::vector<ficon_cmi_portmap_full_entry_t> entries(last - first + 1);
  ficon_cmi_get_portmap_full(h, kWordA, kWordB, kWait, first, last, entries.data());
}

void portmap_step(mts_handle_t h, Arguments& x) {
  if_index_t if_index = x.b;
  std::uint16_t number = half(x.c);
  std::uint16_t address = half(x.c >> 16);
  ficon_send_get_portmap(h, kWordA, kWordB, kWait, x.a, 0, &if_index, &number, &address);
}

void portmap_fcid(mts_handle_t h, Arguments& x) {
  converse(
      h,
      [&](mts_msg_ref_t* request) {
        return ficon_send_get_portmap_fcid_nonblock(h, kWordA, kWordB, x.a, 0, x.b, x.c, 512, 512,
                                                    request);
      },
      [](mts_msg_ref_t* reply) {
        ficon_parse_get_portmap_fcid(reply, nullptr, nullptr, nullptr, nullptr, nullptr);
      });
}

void port_config(mts_handle_t h, Arguments& x) {
  const std::vector<ficon_cmi_ifindex_rng_t> ranges(x.b % 600, {x.a, x.a});
  std::uint32_t count = 0;
  pm_cmi_port_config_t* records = nullptr;
  ficon_pm_cmi_get_port_config(h, 1, static_cast<std::uint32_t>(ranges.size()), ranges.data(),
                               &count, &records, kWait);
  mtrack_free(records);
}

void port_number(mts_handle_t h, Arguments& x) {
  ficon_cmi_vsan_portnum_intf(h, low(x.a), x.vsan, x.b, x.c, kWait);
  ficon_cmi_set_portnum(h, low(x.a), x.c, x.b, kWait);
}

void reserve(mts_handle_t h, Arguments& x) {
  std::uint32_t result = 0;
  auto count = static_cast<std::int32_t>(x.c % 65);
  std::uint32_t firsts[64] = {x.b};
  std::uint32_t lasts[64] = {x.b + 3};
  char text[257] = {};
  ask(ficon_cmi_reserve_portnum, h, x, low(x.a), std::uint32_t{x.vsan}, 0U, &result, &count, firsts,
      lasts, text);
  require(count >= 0 && count <= 64, "at most 64 ranges");
  require(std::memchr(text, 0, sizeof text) != nullptr, "the reason is terminated");
  ficon_cmi_fc_port_in_mod(h, low(x.vsan));
}

void bind_address(mts_handle_t h, Arguments& x) {
  ask(ficon_cmi_set_pa_if, h, x, half(x.a), x.b);
  ask(ficon_cmi_set_pa_pn, h, x, half(x.a), half(x.c));
}

void swap_ports(mts_handle_t h, Arguments& x) {
  ficon_cmi_swap_reply_t* record = nullptr;
  ask(ficon_cmi_swap_port, h, x, x.a, x.b, &record);
  mtrack_free(record);
  record = nullptr;
  ask(ficon_cmi_swap_intf, h, x, x.b, x.c, &record);
  mtrack_free(record);
}

void prohibit_lists(mts_handle_t h, Arguments& x) {
  std::uint32_t value = 0;
  ask(ficon_cmi_get_port_prohibit_acl_not_fcid, h, x, &value);
  ask(ficon_cmi_get_port_default_prohibit, h, x, &value);
  ask(ficon_cmi_set_port_prohibit_acl_not_fcid, h, x, x.a);
  ask(ficon_cmi_set_port_default_prohibit, h, x, x.b);
  ask(ficon_cmi_set_acl_type_downgrade, h, x);
}

// Files.

void file_ops(mts_handle_t h, Arguments& x) {
  std::uint32_t key = x.b;
  std::uint32_t status = 0;
  std::uint8_t flag = 0;
  ask(ficon_cmi_file_ops, h, x, std::uint32_t{x.vsan}, x.a, x.name, &key, &flag, &status);
}

void file_copy(mts_handle_t h, Arguments& x) {
  char other[9] = "COPY";
  ask(ficon_cmi_file_copy, h, x, std::uint32_t{x.vsan}, x.name, other);
}

void file_header(mts_handle_t h, Arguments& x) {
  ficon_cmi_file_hdr_t header{};
  std::memset(header.description, ' ', sizeof header.description);
  ask(ficon_cmi_file_set_file_hdr, h, x, std::uint32_t{x.vsan}, x.name,
      static_cast<const std::uint32_t*>(nullptr), &header);
  ask(ficon_cmi_file_set_file_desc, h, x, std::uint32_t{x.vsan}, x.name, "PAYROLL",
      std::uint8_t{7});
}

void port_blocked(mts_handle_t h, Arguments& x) {
  const ficon_cmi_port_blocked_entry_t entries[2] = {{half(x.a), low(x.b)}, {half(x.c), 1}};
  std::uint32_t status = 0;
  ask(ficon_cmi_file_set_port_blocked_portaddr, h, x, std::uint32_t{x.vsan}, x.name,
      static_cast<std::uint32_t*>(nullptr), entries, 2U, &status);
}

void port_name(mts_handle_t h, Arguments& x) {
  ficon_cmi_port_name_entry_t entry{x.a, "HOST A"};
  std::uint32_t status = 0;
  ask(ficon_cmi_file_set_port_name_portaddr, h, x, std::uint32_t{x.vsan}, x.name,
      static_cast<std::uint32_t*>(nullptr), static_cast<const ficon_cmi_port_name_entry_t*>(&entry),
      1U, &status);
}

void prohibit(mts_handle_t h, Arguments& x) {
  ficon_cmi_prohibit_entry_t entry{x.a, 1, {}};
  std::memcpy(entry.bitset, &x.b, sizeof x.b);
  std::uint32_t status = 0;
  ask(ficon_cmi_file_set_prohibit_bitset, h, x, std::uint32_t{x.vsan}, x.name,
      static_cast<std::uint32_t*>(nullptr), static_cast<const ficon_cmi_prohibit_entry_t*>(&entry),
      1U, &status);
}

template <auto Query>
void port_info(mts_handle_t h, Arguments& x) {
  std::uint32_t vsan = x.vsan;
  ficon_cmi_port_info_t* list = nullptr;
  std::uint32_t count = 0;
  ask(Query, h, x, x.a, 0U, &vsan, x.name, static_cast<const std::uint32_t*>(nullptr), x.b, x.c,
      &list, &count);
  mtrack_free(list);
}

void file_info(mts_handle_t h, Arguments& x) {
  ficon_cmi_file_info_t* list = nullptr;
  std::uint32_t count = 0;
  ask(ficon_cmi_file_info, h, x, x.b, x.a, std::uint32_t{x.vsan}, x.name, &list, &count);
  mtrack_free(list);
}

void saved_file(mts_handle_t h, Arguments& x) {
  std::uint8_t contents[256] = {};
  std::uint32_t copied = 0;
  ask(ficon_cmi_get_saved_file, h, x, std::uint32_t{x.vsan}, x.name,
      static_cast<const std::uint32_t*>(nullptr), static_cast<std::int32_t>(x.a), contents,
      static_cast<std::int32_t>(x.b % sizeof contents), &copied);
  const MayLeak buffer_of_a_refused_write;
  ask(ficon_cmi_set_saved_file, h, x, std::uint32_t{x.vsan}, x.name,
      static_cast<const std::uint32_t*>(nullptr), static_cast<std::int32_t>(x.a),
      static_cast<const std::uint8_t*>(contents), std::uint32_t{sizeof contents});
}

constexpr Call kCalls[] = {
    {"ficon state", set_byte<ficon_cmi_set_ficon_state>},
    {"lock", lock},
    {"modes", set_mode},
    {"clock alert mode", set_byte<ficon_cmi_clock_alert_mode>},
    {"switch offline", set_byte<ficon_cmi_switch_offline>},
    {"FCID last byte", set_byte<ficon_cmi_set_fcid_last_byte>},
    {"code page", set_codepage},
    {"clock", set_clock},
    {"key counter", key_counter},
    {"VSAN information", vsan_info},
    {"active equals saved", active_saved},
    {"box status", box_status},
    {"reading host data", get_host_data},
    {"writing host data", set_host_data},
    {"identification", pib},
    {"history", history},
    {"limits", limits},
    {"MIH time-out", mih_timeout},
    {"port map of a module", portmap_entry},
    {"full port map", portmap_full},
    {"step of the port map", portmap_step},
    {"port map by FCID", portmap_fcid},
    {"port configuration", port_config},
    {"port number", port_number},
    {"reservation", reserve},
    {"port address", bind_address},
    {"swap", swap_ports},
    {"prohibit lists", prohibit_lists},
    {"file operation", file_ops},
    {"file copy", file_copy},
    {"file header", file_header},
    {"blocked ports", port_blocked},
    {"port names", port_name},
    {"prohibited ports", prohibit},
    {"ports by interface", port_info<ficon_cmi_file_get_port_info_intf>},
    {"ports by address", port_info<ficon_cmi_file_get_port_info_portaddr>},
    {"file information", file_info},
    {"saved file", saved_file},
};

}  // namespace

Arguments Arguments::from(Input& input) {
  Arguments args;
  args.vsan = input.u16();
  args.requester = input.u8();
  args.a = input.u32();
  args.b = input.u32();
  args.c = input.u32();
  std::ranges::copy(input.take(sizeof args.name - 1), args.name);
  return args;
}

Bytes Arguments::to_bytes() const {
  Bytes bytes;
  const auto put = [&](const auto& value, std::size_t size) {
    const auto* from = reinterpret_cast<const std::uint8_t*>(&value);
    bytes.insert(bytes.end(), from, from + size);
  };
  put(vsan, sizeof vsan);
  put(requester, sizeof requester);
  put(a, sizeof a);
  put(b, sizeof b);
  put(c, sizeof c);
  put(name, sizeof name - 1);
  return bytes;
}

std::span<const Call> calls() {
  return kCalls;
}

}  // namespace ficon::fuzz
