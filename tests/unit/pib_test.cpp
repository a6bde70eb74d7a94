/** The product identification block: its request, and what becomes of well-formed and other
 * replies. */
#include <doctest/doctest.h>

#include "double/scripted_platform.h"

using namespace ficon::test;

namespace {

Record head(std::uint32_t status, std::uint8_t first, std::uint8_t last) {
  return record(122).be32(112, 0x55667788).host32(116, status).u8(120, first).u8(121, last);
}

Bytes records(std::size_t count) {
  Bytes all(count * 50);
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<std::uint8_t>(i * 3 + i / 50);
  return all;
}

struct Parsed {
  std::uint32_t status = 0;
  std::uint8_t first = 0x77;
  std::uint8_t last = 0x77;
  ficon_cmi_pib_rec_t* records = nullptr;
};

Parsed parse(ScriptedPlatform& platform, const Bytes& reply) {
  Parsed out;
  out.status = ficon_cmi_parse_getpib(platform.received(reply), 0x11223344, &out.first, &out.last,
                                      &out.records);
  return out;
}

Bytes taken(Parsed& out, std::size_t count) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(out.records);
  const Bytes copy(bytes, bytes + count * 50);
  mtrack_free(out.records);
  return copy;
}

}  // namespace

TEST_CASE("identification block: the request") {
  ScriptedPlatform platform;
  platform.expect_send(7877, golden("pib.hex"));
  mts_msg_ref_t msg{};
  CHECK(ficon_cmi_send_get_pib(0x01020304, platform.handle(), "VSH", "UNKNOWN", 5, 0x11223344, 3,
                               200, &msg) == 0);
  CHECK(platform.lines() ==
        "ficon_init_cmi_hdr 1 \"VSH\" \"UNKNOWN\" 10\n"
        "tlv_aligned_array_add_tlv capacity=2048 type=20 length=122\n"
        "tlv_aligned_array_size_get\n"
        "mts_send node=0xfe000000 sap=101 opcode=7877 length=130 options=1,1\n");
  CHECK(platform.printed().empty());
  mts_drop(platform.handle(), &msg);
  CHECK(platform.finished());
}

TEST_CASE("identification block: what fails before or in the send is the result") {
  {
    ScriptedPlatform platform;
    platform.expect_send(7877).fails(32);
    mts_msg_ref_t msg{};
    CHECK(ficon_cmi_send_get_pib(1, platform.handle(), "VSH", "UNKNOWN", 5, 1, 0, 0, &msg) ==
          0xffffffff);
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
  ScriptedPlatform platform;
  platform.fail_call(1);
  mts_msg_ref_t msg{};
  CHECK(ficon_cmi_send_get_pib(1, platform.handle(), "VSH", "UNKNOWN", 5, 1, 0, 0, &msg) ==
        kInjected);
  CHECK(platform.count("mts_send") == 0);
}

TEST_CASE("identification block: the range and the records of a reply, in either order") {
  for (const bool records_first : {false, true}) {
    ScriptedPlatform platform;
    Tlvs reply;
    if (records_first) reply.add(21, records(3));
    reply.add(20, head(0, 253, 255));
    if (!records_first) reply.add(21, records(3));
    Parsed out = parse(platform, reply);
    CHECK(out.status == 0);
    CHECK(out.first == 253);
    CHECK(out.last == 255);
    CHECK(platform.lines({"mtrack_alloc"}) == "mtrack_alloc module=205 type=11 size=150\n");
    CHECK(difference(records(3), taken(out, 3)) == "");
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("identification block: all 256 records, and places for the range left out") {
  ScriptedPlatform platform;
  Parsed out;
  CHECK(ficon_cmi_parse_getpib(
            platform.received(tlvs().add(20, head(0, 0, 255)).add(21, records(256))), 0, nullptr,
            nullptr, &out.records) == 0);
  CHECK(difference(records(256), taken(out, 256)) == "");
  CHECK(platform.finished());
}

TEST_CASE("identification block: the first record TLV of two counts, the last head") {
  ScriptedPlatform platform;
  Parsed out = parse(
      platform,
      tlvs().add(20, head(0, 9, 1)).add(21, records(2)).add(21, zeros(100)).add(20, head(0, 4, 5)));
  CHECK(out.status == 0);
  CHECK(out.first == 4);
  CHECK(difference(records(2), taken(out, 2)) == "");
  CHECK(platform.finished());
}

TEST_CASE("identification block: a refusal still tells its range") {
  ScriptedPlatform platform;
  const Parsed out = parse(platform, tlvs().add(20, head(0x408900c1, 5, 4)).add(21, records(1)));
  CHECK(out.status == 0x408900c1);
  CHECK(out.first == 5);
  CHECK(out.last == 4);
  CHECK(out.records == nullptr);
  CHECK(platform.printed().empty());
  CHECK(platform.count("mtrack_alloc") == 0);
}

TEST_CASE("identification block: a range that runs backwards is told") {
  ScriptedPlatform platform;
  const Parsed out = parse(platform, tlvs().add(20, head(0, 5, 4)).add(21, records(1)));
  CHECK(out.status == 0x40850003);
  CHECK(out.first == 5);
  CHECK(platform.printed() == "Invalid number of records\n");
  CHECK(out.records == nullptr);
}

TEST_CASE("identification block: no TLVs, no payload, no head are told") {
  ScriptedPlatform platform;
  CHECK(parse(platform, tlvs()).status == 0x40850003);
  Parsed out;
  CHECK(ficon_cmi_parse_getpib(platform.received_without_payload(), 0, &out.first, &out.last,
                               &out.records) == 0x40850003);
  CHECK(parse(platform, tlvs().add(21, records(1))).status == 0x40850003);
  CHECK(platform.printed() ==
        "invalid cmi payload: no tlvs present\n"
        "invalid cmi payload: no tlvs present\n"
        "Unrecognised response for the request\n");
  CHECK(out.first == 0x77);
  CHECK(out.records == nullptr);
}

TEST_CASE("identification block: records that do not fill the range stay the caller's to free") {
  struct Case {
    Tlvs reply;
    const char* printed;
  };
  const char* told = "(ficon_cmi_parse_getpib):Invalid length of returned data\n";
  const Bytes two = records(2);
  const Case cases[] = {
      {tlvs().add(20, head(0, 1, 2)).add(21, Bytes(two.begin(), two.end() - 1)), told},
      {tlvs().add(20, head(0, 1, 2)).add(21, records(2) + zeros(1)), told},
      {tlvs().add(20, head(0, 1, 2)).add(21, {}), told},
      {tlvs().add(20, head(0, 1, 2)), ""},
      {tlvs().add(20, head(0, 1, 2)).add(22, records(2)), ""},
  };
  for (const Case& c : cases) {
    ScriptedPlatform platform;
    const Parsed out = parse(platform, c.reply);
    CHECK(out.status == 0x40850003);
    CHECK(platform.printed() == c.printed);
    REQUIRE(out.records != nullptr);
    mtrack_free(out.records);
    CHECK(platform.finished());
  }
}

TEST_CASE("identification block: without memory") {
  ScriptedPlatform platform;
  platform.fail_allocation(1);
  const Parsed out = parse(platform, tlvs().add(20, head(0, 1, 2)).add(21, records(2)));
  CHECK(out.status == 0x40850010);
  CHECK(out.records == nullptr);
  CHECK(platform.printed() ==
        "Warning! Malloc Failure in feature/ficon/cmi/tevrak.cpp[6611] for size 100\n");
}

TEST_CASE("identification block: the walk's error is the result, in either pass") {
  for (int call = 3; call <= 6; ++call) {  // payload, count, two TLVs, and both again
    CAPTURE(call);
    ScriptedPlatform platform;
    platform.fail_call(call < 5 ? call : call + 1);  // the allocation stands between the passes
    const Parsed out = parse(platform, tlvs().add(20, head(0, 1, 2)).add(21, records(2)));
    CHECK(out.status == kInjected);
    CHECK(platform.printed().empty());
    CHECK((out.records != nullptr) == (call >= 5));
    if (out.records != nullptr) mtrack_free(out.records);
    CHECK(platform.finished());
  }
}
