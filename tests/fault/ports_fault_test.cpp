/** Port map, port numbers, swap and prohibit settings with each platform call failing in turn. */
#include <doctest/doctest.h>

#include "double/fault_sweep.h"
#include "unit/port_map_world.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kReceive = 0x40850000;
constexpr std::uint32_t kInvalid = 0x40850003;
constexpr std::uint32_t kSendError = 5;  // the transport's number, where that is the status

/** The calls of an exchange of one TLV each way. */
std::vector<FaultCase> one_record(std::uint32_t send) {
  return {{"tlv_aligned_array_add_tlv", kInjected},
          {"mts_send", send},
          {"mts_recv", kReceive},
          {"mts_payload_get", kInvalid},
          {"tlv_aligned_array_get_num_tlvs", kInvalid},
          {"tlv_aligned_array_get_next_tlv", kInjected}};
}

using ficon::test::operator+;
std::vector<FaultCase> operator+(std::vector<FaultCase> rows, const std::vector<FaultCase>& more) {
  rows.insert(rows.end(), more.begin(), more.end());
  return rows;
}

std::vector<FaultCase> walks(int steps) {
  return std::vector<FaultCase>(static_cast<std::size_t>(steps),
                                {"tlv_aligned_array_get_next_tlv", kInjected});
}

/** Physical ports 62 and 63 of module 1: one device port and one between switches. */
void two_ports(ScriptedPlatform& platform) {
  auto& on = platform.on;
  on.ficon_cmi_get_max_portnumber = [] { return 1279U; };
  on.ficonm_platform_lc_to_slot_b0 = [](std::uint8_t, std::uint8_t* slot) {
    *slot = 0;
    return 0U;
  };
  on.if_index_phy_fc_port_init = [](if_index_t* out, std::uint8_t slot, std::uint8_t port,
                                    std::uint32_t) {
    *out = physical(slot, port);
    return 0U;
  };
  on.if_index_get_type = [](if_index_t, std::uint32_t* type) {
    *type = 1;
    return 0U;
  };
  on.pm_get_port_info_brief = [&platform](auto&&... arguments) {
    platform.deliver(std::get<sizeof...(arguments) - 1>(std::tuple(arguments...)), zeros(4));
    return 0U;
  };
  on.pm_parse_get_port_info_brief = [](mts_msg_ref_t*, std::uint32_t* count,
                                       pm_port_info_brief_t** records) {
    *count = 64;
    *records = handed_out(std::vector<pm_port_info_brief_t>(64));
    return 0U;
  };
  on.pm_cmi_get_port_config = [](mts_handle_t, std::uint32_t, std::uint32_t n,
                                 const ficon_cmi_ifindex_rng_t* ranges, std::uint32_t* count,
                                 pm_cmi_port_config_t** records, std::uint32_t) {
    *count = n;
    *records = handed_out_records(
        {port_record(ranges[0].first_if, {4, 1, 0}), port_record(ranges[1].first_if, {2, 1, 0})});
    return 0U;
  };
  platform.expect_send(7856).reply(
      tlvs().add(13, map_header()).add(31, port_row(1, 1) + port_row(2, 2)));
}

std::uint32_t read_two_ports(ScriptedPlatform& platform) {
  ficon_cmi_portmap_entry_t entries[36] = {};
  std::uint32_t count = 0;
  return ficon_cmi_get_portmap_entry(platform.handle(), "VSH", "UNKNOWN", 5, 1, 62, 0, entries,
                                     &count);
}

}  // namespace

TEST_CASE("faults: port map") {
  std::vector<FaultCase> rows = {{"tlv_aligned_array_add_tlv", kInjected},
                                 {"tlv_aligned_array_add_tlv", kInjected},
                                 {"mts_send", 0xffffffff},
                                 {"mts_recv", kReceive},
                                 {"mts_payload_get", kInvalid},
                                 {"tlv_aligned_array_get_num_tlvs", kInvalid}};
  rows = rows + walks(4) +  // two TLVs, two passes
         std::vector<FaultCase>{{"ficonm_platform_lc_to_slot_b0", kInjected},
                                {"pm_get_port_info_brief", 0},  // a module without ports
                                {"pm_parse_get_port_info_brief", 0}};
  for (int port = 0; port < 64; ++port) rows.push_back({"if_index_get_type", 0});
  rows = rows +
         std::vector<FaultCase>{{"mtrack_alloc", 0x40850010},
                                {"if_index_phy_fc_port_init", 0},
                                {"if_index_phy_fc_port_init", 0},
                                {"mtrack_alloc", 1},
                                {"pm_cmi_get_port_config", kInjected}} +
         one_record(0xffffffff);
  for (std::size_t n = 0; n <= rows.size(); ++n) {
    ScriptedPlatform platform;
    two_ports(platform);
    platform.expect_send(7869).reply(tlvs().add(15, interface_row(physical(0, 62), 0x40, 0)));
    platform.fail_call(static_cast<int>(n) + 1);
    const std::uint32_t status = read_two_ports(platform);
    CAPTURE(platform.fault());
    REQUIRE(platform.fault_was_hit() == (n < rows.size()));
    CHECK(platform.leaks().empty());
    // the last answer stays undropped when its walk fails, and only then
    CHECK(platform.messages_dropped() == (n + 1 != rows.size()));
    if (n == rows.size()) {
      CHECK(status == 0);
      CHECK(platform.finished());
    } else {
      CHECK(platform.fault().find(rows[n].call) == 0);
      CHECK(status == rows[n].status);
    }
  }
}

TEST_CASE("faults: full port map, up to the answer that may stay undropped") {
  fault_sweep(
      [](ScriptedPlatform& platform) {
        ficon_cmi_portmap_full_entry_t entries[2] = {};
        return ficon_cmi_get_portmap_full(platform.handle(), "VSH", "UNKNOWN", 5, 0, 1, entries);
      },
      [](ScriptedPlatform& platform) {
        platform.on.ficon_cmi_get_max_portnumber = [] { return 1U; };
        platform.on.ficon_pmap_get_pn_to_phyif = [](std::uint32_t port_number, if_index_t* out,
                                                    std::uint32_t, const std::uint32_t*) {
          *out = physical(0, port_number);
          return 0U;
        };
        platform.on.pm_cmi_get_port_config =
            [](mts_handle_t, std::uint32_t, std::uint32_t n, const ficon_cmi_ifindex_rng_t*,
               std::uint32_t* count, pm_cmi_port_config_t** records, std::uint32_t) {
              *count = n;
              *records = handed_out_records(std::vector<Bytes>(n, port_record(1, {2, 1, 0})));
              return 0U;
            };
        platform.expect_send(7856).reply(tlvs().add(26, {0, 0, 0, 1}).add(27, zeros(8)));
      },
      std::vector<FaultCase>{{"tlv_aligned_array_add_tlv", kInjected},
                             {"mts_send", 0xffffffff},
                             {"mts_recv", kReceive},
                             {"mts_payload_get", kInvalid},
                             {"tlv_aligned_array_get_num_tlvs", kInvalid}} +
          walks(4) +
          std::vector<FaultCase>{{"ficon_pmap_get_pn_to_phyif", 0},  // a port without interface
                                 {"ficon_pmap_get_pn_to_phyif", 0},
                                 {"mtrack_alloc", 0x40850010},
                                 {"mtrack_alloc", 1},
                                 {"pm_cmi_get_port_config", kInjected}});
}

TEST_CASE("faults: port numbers") {
  fault_sweep(
      [](ScriptedPlatform& p) {
        return static_cast<std::uint32_t>(ficon_cmi_vsan_portnum_intf(p.handle(), 1, 10, 7, 9, 5));
      },
      [](ScriptedPlatform& p) { p.expect_send(7892).reply(tlvs().add(29, zeros(17))); },
      one_record(kSendError));
  fault_sweep(
      [](ScriptedPlatform& p) { return ficon_cmi_set_portnum(p.handle(), 1, 9, 7, 5); },
      [](ScriptedPlatform& p) {
        p.on.pcm_is_pc_auto_created = [](mts_handle_t, if_index_t, std::uint32_t* out) {
          *out = 0;
          return 0U;
        };
        p.expect_send(7868).reply(tlvs().add(14, zeros(13)));
      },
      std::vector<FaultCase>{{"pcm_is_pc_auto_created", kInjected}} + one_record(kSendError));
  fault_sweep(
      [](ScriptedPlatform& p) {
        std::uint32_t result = 0, firsts[64] = {}, lasts[64] = {};
        std::int32_t count = 1;
        char text[257];
        return ficon_cmi_reserve_portnum(1, p.handle(), "A", "B", 5, 4, 0, 0, &result, &count,
                                         firsts, lasts, text);
      },
      [](ScriptedPlatform& p) { p.expect_send(7890).reply(tlvs().add(28, zeros(793))); },
      one_record(kSendError));
}

TEST_CASE("faults: fixed records, where a reply without payload is success") {
  const auto rows = [](std::uint32_t send, std::uint32_t empty) {
    return std::vector<FaultCase>{
        {"mts_send", send}, {"mts_recv", kReceive}, {"mts_payload_get", empty}};
  };
  fault_sweep(
      [](ScriptedPlatform& p) { return ficon_cmi_set_pa_if(1, p.handle(), "A", "B", 5, 1, 2); },
      [](ScriptedPlatform& p) { p.expect_send(7893).reply(zeros(12)); }, rows(kSendError, 0));
  fault_sweep(
      [](ScriptedPlatform& p) { return ficon_cmi_set_pa_pn(1, p.handle(), "A", "B", 5, 1, 2); },
      [](ScriptedPlatform& p) { p.expect_send(7884).reply(zeros(10)); }, rows(kSendError, 0));
  fault_sweep(
      [](ScriptedPlatform& p) {
        return ficon_cmi_set_port_default_prohibit(1, p.handle(), "A", "B", 5, 1);
      },
      [](ScriptedPlatform& p) { p.expect_send(7895).options(1, 0).reply(zeros(120)); },
      rows(kSendError, 0));
  fault_sweep(
      [](ScriptedPlatform& p) {
        return ficon_cmi_set_acl_type_downgrade(1, p.handle(), "A", "B", 5);
      },
      [](ScriptedPlatform& p) { p.expect_send(7896).options(1, 0).reply(zeros(12)); },
      rows(kSendError, 0));
  fault_sweep(
      [](ScriptedPlatform& p) {
        ficon_cmi_swap_reply_t* record = nullptr;
        const auto status = ficon_cmi_swap_port(1, p.handle(), "A", "B", 5, 1, 2, &record);
        CHECK((record == nullptr) == (status != 0));
        mtrack_free(record);
        return status;
      },
      [](ScriptedPlatform& p) { p.expect_send(7867).reply(zeros(128)); },
      rows(0xffffffff, 3) + std::vector<FaultCase>{{"mtrack_alloc", 0x40850010}});
}
