/** What fcd holds for a VSAN: the query, the reply, code pages, automatic saving. */
#include <doctest/doctest.h>

#include "double/scripted_platform.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kVsan = 0x11223344;
constexpr std::uint32_t kRequester = 0x01020304;

/** The header's fields in the request: after the array's head and the TLV's. */
constexpr std::size_t kMessageTypeAt = 8;
constexpr std::size_t kVsanAt = 8 + 120;

Golden query(std::uint32_t message_type, std::uint32_t vsan) {
  return golden("vsan_info.hex")
      .with(kMessageTypeAt, be32(message_type), "message type")
      .with(kVsanAt, be32(vsan), "VSAN");
}

/** A record in which every byte counts. */
Record whole_record() {
  Record all = record(1347);
  for (std::size_t i = 0; i < 1347; ++i) all.u8(i, static_cast<std::uint8_t>(i * 5 + i / 256 + 1));
  return all;
}

Record vsan_record(std::uint32_t vsan, std::uint32_t state, std::uint8_t auto_save) {
  return record(1347).be32(0, vsan).host32(4, state).u8(14, auto_save);
}

Tlvs info_reply(const Bytes& vsan_record) {
  return tlvs().header_status(0).add(2, vsan_record);
}

std::uint32_t get_info(ScriptedPlatform& platform, ficon_cmi_vsan_cfg_t* out) {
  return ficon_cmi_get_vsan_info(kRequester, platform.handle(), "VSH", "UNKNOWN", 5, 1, kVsan, out);
}

std::uint32_t codepage(ScriptedPlatform& platform) {
  return ficon_cmi_get_codepage(kRequester, platform.handle(), "VSH", "UNKNOWN", 5, kVsan);
}

std::uint32_t next_codepage(ScriptedPlatform& platform, std::uint32_t* vsan) {
  return ficon_cmi_getnext_codepage(kRequester, platform.handle(), "VSH", "UNKNOWN", 5, vsan);
}

std::uint32_t parse(ScriptedPlatform& platform, const Bytes& reply, ficon_cmi_vsan_cfg_t* out) {
  return ficon_cmi_parse_vsan_info(platform.received(reply), out);
}

const std::string kExchange = "send 7855, token, drop request, recv, drop reply";
const std::string kList =
    "ficon_send_get_enabled_vsans, token, drop request, recv, ficon_parse_get_enabled_vsans, ";

}  // namespace

TEST_CASE("query: the message type is the caller's, the requester is not sent") {
  for (const std::uint32_t message_type : {1u, 2u, 3u, 0x11223344u}) {
    ScriptedPlatform platform;
    platform.expect_send(7855, query(message_type, kVsan));
    mts_msg_ref_t msg{};
    CHECK(ficon_cmi_get_vsan_info_nonblock(kRequester, platform.handle(), "VSH", "UNKNOWN", 5,
                                           message_type, kVsan, &msg) == 0);
    CHECK(platform.count("tlv_aligned_array_add_tlv") == 1);
    CHECK(platform.lines({"tlv_aligned_array_add_tlv", "mts_send"}) ==
          "tlv_aligned_array_add_tlv capacity=2048 type=12 length=128\n"
          "mts_send node=0xfe000000 sap=101 opcode=7855 length=136 options=1,1\n");
    mts_drop(platform.handle(), &msg);
    CHECK(platform.finished());
  }
}

TEST_CASE("query: a TLV that does not fit, and a failed send") {
  ScriptedPlatform platform;
  platform.fail_call(1);
  mts_msg_ref_t msg{};
  CHECK(ficon_cmi_get_vsan_info_nonblock(1, platform.handle(), "A", "B", 5, 1, kVsan, &msg) ==
        kInjected);
  CHECK(platform.count("mts_send") == 0);
  platform.expect_send(7855).fails(32);
  CHECK(ficon_cmi_get_vsan_info_nonblock(1, platform.handle(), "A", "B", 5, 1, kVsan, &msg) ==
        0xffffffff);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("query, blocking: the record whole, with neither check nor lock") {
  ScriptedPlatform platform;
  platform.expect_send(7855, query(1, kVsan)).reply(info_reply(whole_record()));
  ficon_cmi_vsan_cfg_t out{};
  CHECK(get_info(platform, &out) == 0);
  CHECK(difference(whole_record(), bytes_of(out)) == "");
  CHECK(platform.order() == kExchange);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("query, blocking: what fails is the result, without a word") {
  struct Case {
    void (*script)(Expectation&);
    std::uint32_t status;
  };
  const Case cases[] = {
      {[](Expectation& e) { e.fails(32); }, 0xffffffff},
      {[](Expectation& e) { e.recv_errors({62}); }, 0x40850043},
      {[](Expectation& e) { e.recv_errors({5}); }, 0x40850000},
      {[](Expectation& e) { e.reply(tlvs().header_status(0x40890077)); }, 0x40890077},
  };
  for (const Case& c : cases) {
    ScriptedPlatform platform;
    c.script(platform.expect_send(7855));
    ficon_cmi_vsan_cfg_t out{};
    CHECK(get_info(platform, &out) == c.status);
    CHECK(difference(zeros(1347), bytes_of(out)) == "");
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("reply: the daemon's status is the result, wherever the record stands") {
  ScriptedPlatform platform;
  ficon_cmi_vsan_cfg_t out{};
  CHECK(parse(platform, tlvs().header_status(0x11223344).add(2, whole_record()), &out) ==
        0x11223344);
  CHECK(parse(platform, tlvs().add(2, whole_record()).header_status(0x11223344), &out) ==
        0x11223344);
  CHECK(parse(platform, info_reply(whole_record()).header_status(7), &out) == 7);
  CHECK(difference(zeros(1347), bytes_of(out)) == "");
  CHECK(platform.printed().empty());
}

TEST_CASE("reply: the record before the header counts, and the first of two") {
  ScriptedPlatform platform;
  ficon_cmi_vsan_cfg_t out{};
  CHECK(parse(platform, tlvs().add(2, whole_record()).header_status(0), &out) == 0);
  CHECK(difference(whole_record(), bytes_of(out)) == "");
  CHECK(parse(platform, info_reply(record(1347).u8(8, 1)).add(2, whole_record()), &out) == 0);
  CHECK(difference(record(1347).u8(8, 1), bytes_of(out)) == "");
}

TEST_CASE("reply: a header without a record, untold") {
  ScriptedPlatform platform;
  ficon_cmi_vsan_cfg_t out{};
  CHECK(parse(platform, tlvs().header_status(0), &out) == 0x40850003);
  CHECK(parse(platform, tlvs().header_status(0).add(3, zeros(1347)), &out) == 0x40850003);
  CHECK(platform.printed().empty());
}

TEST_CASE("reply: TLVs without a header are told") {
  ScriptedPlatform platform;
  ficon_cmi_vsan_cfg_t out{};
  CHECK(parse(platform, tlvs().add(2, whole_record()), &out) == 0x40850003);
  CHECK(platform.printed() == "Unrecognised response for the request\n");
  CHECK(difference(zeros(1347), bytes_of(out)) == "");
}

TEST_CASE("reply: no TLVs, or no payload, is told") {
  ScriptedPlatform platform;
  ficon_cmi_vsan_cfg_t out{};
  CHECK(parse(platform, tlvs(), &out) == 0x40850003);
  CHECK(ficon_cmi_parse_vsan_info(platform.received_without_payload(), &out) == 0x40850003);
  CHECK(platform.printed() ==
        "invalid cmi payload: no tlvs present\ninvalid cmi payload: no tlvs present\n");
}

TEST_CASE("reply: the walk's error is the result, in either pass") {
  const Bytes reply = info_reply(whole_record());
  for (int call = 3; call <= 6; ++call) {  // payload, count, two TLVs, and both again
    CAPTURE(call);
    ScriptedPlatform platform;
    platform.fail_call(call);
    ficon_cmi_vsan_cfg_t out{};
    CHECK(parse(platform, reply, &out) == kInjected);
    CHECK(difference(zeros(1347), bytes_of(out)) == "");
    CHECK(platform.printed().empty());
  }
}

TEST_CASE("reply: the whole record is copied, whatever length its TLV claims") {
  ScriptedPlatform platform;
  const Bytes reply = tlvs().header_status(0).add(2, {0x11, 0x22, 0x33, 0x44});
  ficon_cmi_vsan_cfg_t out;
  CHECK(ficon_cmi_parse_vsan_info(platform.received(reply, 2048), &out) == 0);
  CHECK(difference(record(1347).put(0, {0x11, 0x22, 0x33, 0x44}), bytes_of(out)) == "");
}

TEST_CASE("code page: the four bytes at 20 as they stand") {
  ScriptedPlatform platform;
  platform.expect_send(7855, query(1, kVsan))
      .reply(info_reply(record(1347).host32(20, 0x55667788)));
  CHECK(codepage(platform) == 0x55667788);
  CHECK(platform.order() == kExchange);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("code page: 0 for every failure, untold, and for a code page of 0") {
  const auto with = [](void (*script)(Expectation&)) {
    ScriptedPlatform platform;
    script(platform.expect_send(7855));
    CHECK(codepage(platform) == 0);
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  };
  with([](Expectation& e) { e.fails(32); });
  with([](Expectation& e) { e.recv_errors({62}); });
  with([](Expectation& e) {
    e.reply(tlvs().header_status(0x40890077).add(2, record(1347).host32(20, 37)));
  });
  with([](Expectation& e) { e.reply(info_reply(record(1347))); });
}

TEST_CASE("next code page: always from VSAN 0, the VSAN swapped and the code page not") {
  ScriptedPlatform platform;
  platform.expect_send(7855, query(2, 0))
      .reply(info_reply(record(1347).be32(0, 0x0a0b0c0d).host32(20, 0x55667788)));
  std::uint32_t vsan = 0x7777;
  CHECK(next_codepage(platform, &vsan) == 0x55667788);
  CHECK(vsan == 0x0a0b0c0d);
  CHECK(platform.order() == kExchange);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("next code page: without a place for the VSAN") {
  ScriptedPlatform platform;
  platform.expect_send(7855, query(2, 0))
      .reply(info_reply(record(1347).be32(0, 10).host32(20, 37)));
  CHECK(next_codepage(platform, nullptr) == 37);
  CHECK(platform.finished());
}

TEST_CASE("next code page: a failure is told, with 0 for its status, and writes nothing") {
  const auto with = [](void (*script)(Expectation&)) {
    ScriptedPlatform platform;
    script(platform.expect_send(7855));
    std::uint32_t vsan = 0x7777;
    CHECK(next_codepage(platform, &vsan) == 0);
    CHECK(vsan == 0x7777);
    CHECK(platform.printed() == "ficon_cmi_getnext_codepage(849):get_vsan_info failed:0\n");
    CHECK(platform.finished());
  };
  with([](Expectation& e) { e.fails(32); });
  with([](Expectation& e) { e.recv_errors({62}); });
  with([](Expectation& e) { e.reply(tlvs().header_status(0x40890077)); });
}

TEST_CASE("automatic saving: the VSANs in order, until one has it") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({0x0a0b0c0d, kVsan, 30});
  platform.expect_send(7855, query(1, 0x0a0b0c0d)).reply(info_reply(vsan_record(1, 2, 0)));
  platform.expect_send(7855, query(1, kVsan)).reply(info_reply(vsan_record(2, 2, 0x80)));
  std::uint8_t flag = 0x77;
  CHECK(ficon_is_active_saved_enabled(platform.handle(), 5, &flag) == 0);
  CHECK(flag == 1);
  CHECK(platform.order() == kList + kExchange + ", " + kExchange + ", free, drop reply");
  CHECK(platform.lines({"ficon_init_cmi_hdr"}) ==
        "ficon_init_cmi_hdr 1 \"VSH\" \"UNKNOWN\" 16\n"
        "ficon_init_cmi_hdr 1 \"VSH\" \"UNKNOWN\" 16\n");
  CHECK(platform.lines({"mts_recv"}) ==
        "mts_recv options=1,0,5,28673\n"
        "mts_recv options=1,0,5,28675\n"
        "mts_recv options=1,0,5,28677\n");
  CHECK(platform.lines({"free"}) == "free block=malloc size=20\n");
  CHECK(platform.count("mtrack_free") == 0);
  CHECK(platform.finished());
}

TEST_CASE("automatic saving: a VSAN that is not up does not count") {
  for (const std::uint32_t state : {0u, 1u, 3u, 0x02000000u}) {
    ScriptedPlatform platform;
    platform.ficon_enabled_on({kVsan});
    platform.expect_send(7855).reply(info_reply(vsan_record(kVsan, state, 1)));
    std::uint8_t flag = 0x77;
    CHECK(ficon_is_active_saved_enabled(platform.handle(), 5, &flag) == 0);
    CHECK(flag == 0);
    CHECK(platform.finished());
  }
}

TEST_CASE("automatic saving: a VSAN whose query fails is passed over") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({10, 20, 30, 40});
  platform.expect_send(7855).fails(32);
  platform.expect_send(7855).recv_errors({62});
  platform.expect_send(7855).reply(tlvs().header_status(0x40890005));
  platform.expect_send(7855, query(1, 40)).reply(info_reply(vsan_record(40, 2, 1)));
  std::uint8_t flag = 0;
  CHECK(ficon_is_active_saved_enabled(platform.handle(), 5, &flag) == 0);
  CHECK(flag == 1);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("automatic saving: no VSANs, or a count of none") {
  const auto with = [](void (*script)(ScriptedPlatform&)) {
    ScriptedPlatform platform;
    script(platform);
    std::uint8_t flag = 0x77;
    CHECK(ficon_is_active_saved_enabled(platform.handle(), 5, &flag) == 0);
    CHECK(flag == 0);
    CHECK(platform.order() == kList + "free, drop reply");
    CHECK(platform.finished());
  };
  with([](ScriptedPlatform& p) { p.ficon_enabled_on({}); });
  with([](ScriptedPlatform& p) { p.ficon_enabled_on({kVsan}).enabled_vsans_count(0); });
  with([](ScriptedPlatform& p) { p.ficon_enabled_on({kVsan}).enabled_vsans_count(-1); });
}

TEST_CASE("automatic saving: what fails before the VSANs are known is the result") {
  struct Case {
    void (*script)(ScriptedPlatform&);
    std::uint32_t status;
    std::string order;
  };
  const std::string sent = "ficon_send_get_enabled_vsans";
  const std::string awaited = sent + ", token, drop request, recv";
  const Case cases[] = {
      {[](ScriptedPlatform& p) { p.enabled_vsans_send_fails(32); }, 32, sent},
      {[](ScriptedPlatform& p) { p.enabled_vsans_send_fails(0x40aa0033); }, 0x40aa0033, sent},
      {[](ScriptedPlatform& p) { p.enabled_vsans_recv_fails(62); }, 0x40850043, awaited},
      {[](ScriptedPlatform& p) { p.enabled_vsans_parse_fails(0x40aa0044); }, 0x40aa0044,
       awaited + ", ficon_parse_get_enabled_vsans, drop reply"},
      {[](ScriptedPlatform& p) { p.ficon_enabled_on({kVsan}).enabled_vsans_status(0x40aa0055); },
       0x40aa0055, kList + "free, drop reply"},
  };
  for (const Case& c : cases) {
    ScriptedPlatform platform;
    c.script(platform);
    std::uint8_t flag = 0x77;
    CHECK(ficon_is_active_saved_enabled(platform.handle(), 5, &flag) == c.status);
    CHECK(flag == 0);
    CHECK(platform.order() == c.order);
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}
