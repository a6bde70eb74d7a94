/** Host data, identification block, history and limits with each platform call failing in turn. */
#include <doctest/doctest.h>

#include "fault/locked_rows.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kVsan = 10;
const Bytes kData = {0x11, 0x22, 0x33};

std::uint32_t write_data(ScriptedPlatform& platform) {
  return ficon_cmi_set_host_data(1, platform.handle(), "VSH", "UNKNOWN", 5, kVsan, 100,
                                 kData.data(), 3);
}

const std::vector<FaultCase> kWrite = {{"mtrack_alloc", 0x40850010},
                                       {"mts_send", 0xffffffff},
                                       {"mts_recv", 0x40850000},
                                       {"mts_payload_get", 3}};

const std::vector<FaultCase> kLimit = {
    {"mts_send", 0xffffffff}, {"mts_recv", 0x40850000}, {"mts_payload_get", 3}};

}  // namespace

TEST_CASE("faults: host data read") {
  fault_sweep(
      [](ScriptedPlatform& platform) {
        Bytes data(16384, 0x77);
        std::uint32_t length = 0;
        const auto status = ficon_cmi_get_host_data(1, platform.handle(), "VSH", "UNKNOWN", 5,
                                                    kVsan, data.data(), &length);
        if (status != 0) CHECK(difference(Bytes(16384, 0x77), data) == "");
        return status;
      },
      [](ScriptedPlatform& platform) {
        platform.expect_send(7875).reply(be32(0) + be32(kVsan) + be32(3) + kData);
      },
      kLimit);
}

TEST_CASE("faults: host data written under the lock") {
  fault_sweep(
      write_data,
      [](ScriptedPlatform& platform) {
        platform.ficon_enabled_on({kVsan}).lock_granted();
        platform.expect_send(7876).reply(be32(0) + be32(kVsan));
      },
      locked_rows(kWrite));
}

TEST_CASE("faults: host data written where FICON is not enabled") {
  std::vector<FaultCase> rows = {
      {"ficon_send_get_enabled_vsans", 0}, {"mts_recv", 0}, {"ficon_parse_get_enabled_vsans", 0}};
  rows.insert(rows.end(), kWrite.begin(), kWrite.end());
  fault_sweep(
      write_data,
      [](ScriptedPlatform& platform) {
        platform.ficon_enabled_on({});
        platform.expect_send(7876).reply(be32(0) + be32(kVsan));
      },
      rows);
}

TEST_CASE("faults: identification block, whose records are the caller's once allocated") {
  fault_sweep(
      [](ScriptedPlatform& platform) {
        ficon_cmi_pib_rec_t* records = nullptr;
        const auto status = ficon_cmi_parse_getpib(
            platform.received(tlvs().add(20, record(122).u8(121, 1)).add(21, zeros(100))), 0,
            nullptr, nullptr, &records);
        if (status == 0) CHECK(records != nullptr);
        if (records != nullptr) mtrack_free(records);
        return status;
      },
      [](ScriptedPlatform&) {},
      {{"mts_payload_get", 0x40850003},
       {"tlv_aligned_array_get_num_tlvs", 0x40850003},
       {"tlv_aligned_array_get_next_tlv", kInjected},  // the first pass
       {"tlv_aligned_array_get_next_tlv", kInjected},
       {"mtrack_alloc", 0x40850010},
       {"tlv_aligned_array_get_next_tlv", kInjected},  // the second
       {"tlv_aligned_array_get_next_tlv", kInjected}});
}

TEST_CASE("faults: history") {
  fault_sweep(
      [](ScriptedPlatform& platform) {
        std::uint32_t key = 7;
        std::uint32_t count = 0;
        std::uint32_t word = 0;
        ficon_cmi_hist_entry_t* entries = nullptr;
        const auto status = ficon_cmi_get_history_summary(
            1, platform.handle(), "VSH", "UNKNOWN", 5, 1, &key, 0, 0, 0, &count, &word, &entries);
        CHECK((entries != nullptr) == (status == 0));
        if (entries != nullptr) mtrack_free(entries);
        return status;
      },
      [](ScriptedPlatform& platform) {
        platform.expect_send(7864).reply(
            tlvs().add(19, record(132)).add(18, record(12 + 40).be32(0, 1)));
      },
      {{"tlv_aligned_array_add_tlv", kInjected},
       {"mts_send", 0xffffffff},
       {"mts_recv", 0x40850000},
       {"mts_payload_get", 0x40850003},
       {"tlv_aligned_array_get_num_tlvs", 0x40850003},
       {"tlv_aligned_array_get_next_tlv", kInjected},
       {"tlv_aligned_array_get_next_tlv", kInjected},
       {"mtrack_alloc", 0x40850010}});
}

TEST_CASE("faults: limits") {
  fault_sweep(
      [](ScriptedPlatform& platform) {
        std::uint32_t type = 0;
        return ficon_cmi_get_getnext_type(1, platform.handle(), "VSH", "UNKNOWN", 5, &type);
      },
      [](ScriptedPlatform& platform) { platform.expect_send(7883).reply(record(120)); }, kLimit);
  fault_sweep(
      [](ScriptedPlatform& platform) {
        return ficon_cmi_set_getnext_type(1, platform.handle(), "VSH", "UNKNOWN", 5, 1);
      },
      [](ScriptedPlatform& platform) { platform.expect_send(7883).reply(record(120)); }, kLimit);
  fault_sweep(
      [](ScriptedPlatform& platform) {
        return ficon_cmi_set_max_ports(1, platform.handle(), "VSH", "UNKNOWN", 5, 1);
      },
      [](ScriptedPlatform& platform) { platform.expect_send(7878).reply(record(120)); }, kLimit);
}

TEST_CASE("faults: MIH time-out, whose send failure is the transport's number") {
  fault_sweep(
      [](ScriptedPlatform& platform) {
        ficon_cmi_mihpto_rec_t reply{};
        return ficon_cmi_mihpto(1, platform.handle(), "VSH", "UNKNOWN", 5, 2, 0, 0, &reply);
      },
      [](ScriptedPlatform& platform) {
        platform.expect_send(7897).options(1, 0).reply(record(13));
      },
      {{"mts_send", kInjectedError}, {"mts_recv", 0x40850000}, {"mts_payload_get", 3}});
  fault_sweep(
      [](ScriptedPlatform& platform) {
        return ficon_cmi_mihpto(1, platform.handle(), "VSH", "UNKNOWN", 5, 0, 0, 5, nullptr);
      },
      [](ScriptedPlatform& platform) { platform.expect_send(7897).options(1, 0); },
      {{"mts_send", kInjectedError}});
}
