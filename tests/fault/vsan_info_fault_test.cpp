/** The VSAN queries with each of their platform calls failing in turn. */
#include <doctest/doctest.h>

#include "double/fault_sweep.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kCodepage = 37;

void script(ScriptedPlatform& platform) {
  platform.expect_send(7855).reply(
      tlvs().header_status(0).add(2, record(1347).be32(0, 10).host32(20, kCodepage)));
}

/** The query's calls and the status of the run in which each fails. */
const std::vector<FaultCase> kQuery = {
    {"tlv_aligned_array_add_tlv", kInjected},
    {"mts_send", 0xffffffff},
    {"mts_recv", 0x40850000},
    {"mts_payload_get", 0x40850003},
    {"tlv_aligned_array_get_num_tlvs", 0x40850003},
    {"tlv_aligned_array_get_next_tlv", kInjected},  // the first pass
    {"tlv_aligned_array_get_next_tlv", kInjected},
    {"tlv_aligned_array_get_next_tlv", kInjected},  // the second
    {"tlv_aligned_array_get_next_tlv", kInjected},
};

std::vector<FaultCase> query_rows(std::uint32_t status) {
  std::vector<FaultCase> rows = kQuery;
  for (FaultCase& row : rows) row.status = status;
  return rows;
}

}  // namespace

TEST_CASE("faults: VSAN information") {
  fault_sweep(
      [](ScriptedPlatform& platform) {
        ficon_cmi_vsan_cfg_t out{};
        const auto status =
            ficon_cmi_get_vsan_info(1, platform.handle(), "VSH", "UNKNOWN", 5, 1, 10, &out);
        if (status != 0) CHECK(difference(zeros(1347), bytes_of(out)) == "");
        return status;
      },
      script, kQuery);
}

TEST_CASE("faults: code pages, where 0 stands for every failure") {
  fault_sweep(
      [](ScriptedPlatform& platform) {
        return ficon_cmi_get_codepage(1, platform.handle(), "VSH", "UNKNOWN", 5, 10);
      },
      script, query_rows(0));
  fault_sweep(
      [](ScriptedPlatform& platform) {
        std::uint32_t vsan = 0x7777;
        const auto codepage =
            ficon_cmi_getnext_codepage(1, platform.handle(), "VSH", "UNKNOWN", 5, &vsan);
        CHECK(vsan == (codepage == 0 ? 0x7777 : 10));
        return codepage;
      },
      script, query_rows(0));
}

TEST_CASE("faults: automatic saving, where a VSAN's own failure passes it over") {
  std::vector<FaultCase> rows = {{"ficon_send_get_enabled_vsans", kInjected},
                                 {"mts_recv", 0x40850000},
                                 {"ficon_parse_get_enabled_vsans", kInjected}};
  for (const FaultCase& row : query_rows(0)) rows.push_back(row);
  fault_sweep(
      [](ScriptedPlatform& platform) {
        std::uint8_t flag = 0x77;
        const auto status = ficon_is_active_saved_enabled(platform.handle(), 5, &flag);
        CHECK(flag == (platform.fault_was_hit() ? 0 : 1));
        return status;
      },
      [](ScriptedPlatform& platform) {
        platform.ficon_enabled_on({10});
        platform.expect_send(7855).reply(
            tlvs().header_status(0).add(2, record(1347).be32(0, 10).host32(4, 2).u8(14, 1)));
      },
      rows);
}
