/** Host data: requests and replies byte by byte, the bound of a write, the lock around it. */
#include <doctest/doctest.h>

#include "double/scripted_platform.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kVsan = 0x11223344;
constexpr std::uint32_t kRequester = 0x01020304;
constexpr std::size_t kRoom = 16384;

const Bytes kFive = {0xa1, 0xb2, 0xc3, 0xd4, 0xe5};

Bytes get_reply(std::uint32_t status, std::uint32_t vsan, std::uint32_t length, const Bytes& data) {
  return be32(status) + be32(vsan) + be32(length) + data;
}

std::uint32_t get(ScriptedPlatform& platform, Bytes& data, std::uint32_t* length) {
  return ficon_cmi_get_host_data(kRequester, platform.handle(), "VSH", "UNKNOWN", 5, kVsan,
                                 data.data(), length);
}

std::uint32_t set(ScriptedPlatform& platform, std::uint32_t offset, const Bytes& data) {
  return ficon_cmi_set_host_data(kRequester, platform.handle(), "VSH", "UNKNOWN", 5, kVsan, offset,
                                 data.data(), static_cast<std::uint32_t>(data.size()));
}

std::uint32_t send_set(ScriptedPlatform& platform, std::uint32_t offset, std::uint32_t length,
                       mts_msg_ref_t* msg) {
  static const Bytes data(kRoom, 0x5a);
  return ficon_cmi_send_set_host_data_nonblock(kRequester, platform.handle(), "VSH", "UNKNOWN", 5,
                                               kVsan, offset, data.data(), length, msg);
}

}  // namespace

TEST_CASE("host data read: four bytes go out, the data come back") {
  ScriptedPlatform platform;
  platform.expect_send(7875, golden("host_data_get.hex")).reply(get_reply(0, 0x99aabbcc, 5, kFive));
  Bytes data(kRoom, 0x77);
  std::uint32_t length = 0x7777;
  CHECK(get(platform, data, &length) == 0);
  CHECK(length == 5);
  CHECK(difference(kFive + Bytes(kRoom - 5, 0x77), data) == "");
  CHECK(platform.order() == "send 7875, token, drop request, recv, drop reply");
  CHECK(platform.lines({"mts_send"}) ==
        "mts_send node=0xfe000000 sap=101 opcode=7875 length=4 options=1,1\n");
  CHECK(platform.count("ficon_init_cmi_hdr") == 0);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("host data read: the whole block") {
  ScriptedPlatform platform;
  Bytes block(kRoom);
  for (std::size_t i = 0; i < kRoom; ++i) block[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
  platform.expect_send(7875).reply(get_reply(0, kVsan, 16384, block));
  Bytes data(kRoom);
  std::uint32_t length = 0;
  CHECK(get(platform, data, &length) == 0);
  CHECK(length == 16384);
  CHECK(difference(block, data) == "");
  CHECK(platform.finished());
}

TEST_CASE("host data read: the parser hands out the VSAN of the reply") {
  ScriptedPlatform platform;
  Bytes data(kRoom, 0x77);
  std::uint32_t vsan = 0;
  std::uint32_t length = 0;
  CHECK(ficon_cmi_parse_get_host_data(platform.received(get_reply(0, 0x99aabbcc, 5, kFive)), &vsan,
                                      data.data(), &length) == 0);
  CHECK(vsan == 0x99aabbcc);
  CHECK(length == 5);
}

TEST_CASE("host data read: no data leave the buffer untouched") {
  ScriptedPlatform platform;
  Bytes data(kRoom, 0x77);
  std::uint32_t vsan = 0;
  std::uint32_t length = 0x7777;
  CHECK(ficon_cmi_parse_get_host_data(platform.received(get_reply(0, kVsan, 0, {}), 64), &vsan,
                                      data.data(), &length) == 0);
  CHECK(length == 0);
  CHECK(vsan == kVsan);
  CHECK(difference(Bytes(kRoom, 0x77), data) == "");
}

TEST_CASE("host data read: a refusal, an impossible length or no payload write a length of 0") {
  struct Case {
    Bytes reply;
    std::uint32_t status;
  };
  const Case cases[] = {
      {get_reply(0x40890005, 0x99aabbcc, 5, kFive), 0x40890005},
      {get_reply(0, 0x99aabbcc, 16385, Bytes(16385)), 0x40850003},
      {get_reply(0, 0x99aabbcc, 0xffffffff, kFive), 0x40850003},
  };
  for (const Case& c : cases) {
    ScriptedPlatform platform;
    Bytes data(kRoom, 0x77);
    std::uint32_t vsan = 0x7777;
    std::uint32_t length = 0x7777;
    CHECK(ficon_cmi_parse_get_host_data(platform.received(c.reply), &vsan, data.data(), &length) ==
          c.status);
    CHECK(length == 0);
    CHECK(vsan == 0x7777);
    CHECK(difference(Bytes(kRoom, 0x77), data) == "");
    CHECK(platform.printed().empty());
  }
  ScriptedPlatform platform;
  std::uint32_t vsan = 0;
  std::uint32_t length = 0x7777;
  CHECK(ficon_cmi_parse_get_host_data(platform.received_without_payload(), &vsan, nullptr,
                                      &length) == 3);
  CHECK(length == 0);
}

TEST_CASE("host data read: a failed send is told, a failed receive is not") {
  {
    ScriptedPlatform platform;
    platform.expect_send(7875).fails(32);
    Bytes data(kRoom);
    std::uint32_t length = 0;
    CHECK(get(platform, data, &length) == 0xffffffff);
    CHECK(platform.printed() ==
          "ficon_cmi_get_host_data(6329): ficon_cmi_get_host_data_nonblock failed:-1\n");
    CHECK(platform.finished());
  }
  ScriptedPlatform platform;
  platform.expect_send(7875).recv_errors({62});
  Bytes data(kRoom);
  std::uint32_t length = 0;
  CHECK(get(platform, data, &length) == 0x40850043);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("host data write: words, then the bytes, in a buffer of the send's own") {
  ScriptedPlatform platform;
  platform.expect_send(7876, golden("host_data_set.hex"));
  mts_msg_ref_t msg{};
  CHECK(ficon_cmi_send_set_host_data_nonblock(kRequester, platform.handle(), "VSH", "UNKNOWN", 5,
                                              kVsan, 0x2107, kFive.data(), 5, &msg) == 0);
  CHECK(platform.lines({"mtrack_alloc", "mts_send", "free"}) ==
        "mtrack_alloc module=205 type=10 size=17\n"
        "mts_send node=0xfe000000 sap=101 opcode=7876 length=17 options=1,1\n"
        "free block=mtrack_alloc module=205 type=10 size=17\n");
  CHECK(platform.printed().empty());
  mts_drop(platform.handle(), &msg);
  CHECK(platform.finished());
}

TEST_CASE("host data write: up to the end of the block, and not a byte beyond") {
  struct Case {
    std::uint32_t offset;
    std::uint32_t length;
    bool sent;
  };
  for (const Case& c :
       {Case{16000, 384, true}, Case{16000, 385, false}, Case{0, 16384, true},
        Case{0, 16385, false}, Case{16384, 0, true}, Case{16385, 0, false},
        Case{0xffffffff, 1, false}, Case{1, 0xffffffff, false}, Case{0xffffff00, 0x100, false}}) {
    CAPTURE(c.offset);
    CAPTURE(c.length);
    ScriptedPlatform platform;
    if (c.sent) platform.expect_send(7876);
    mts_msg_ref_t msg{};
    CHECK(send_set(platform, c.offset, c.length, &msg) == (c.sent ? 0 : 0x40850003));
    if (c.sent) mts_drop(platform.handle(), &msg);
    if (!c.sent) CHECK(platform.lines().empty());
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("host data write: without memory nothing is sent") {
  ScriptedPlatform platform;
  platform.fail_allocation(1);
  mts_msg_ref_t msg{};
  CHECK(send_set(platform, 0, 100, &msg) == 0x40850010);
  CHECK(platform.printed() ==
        "Warning! Malloc Failure in feature/ficon/cmi/tevrak.cpp[6479] for size 112\n");
  CHECK(platform.count("mts_send") == 0);
  CHECK(platform.finished());
}

TEST_CASE("host data write: under the lock") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({kVsan}).lock_granted();
  platform.expect_send(7876, golden("host_data_set.hex")).reply(be32(0) + be32(kVsan));
  CHECK(set(platform, 0x2107, kFive) == 0);
  const auto locks = platform.sent(7874);
  REQUIRE(locks.size() == 2);
  CHECK(golden("lock_request.hex").difference_to(locks[0]) == "");
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("host data write: without FICON it goes unlocked") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({});
  platform.expect_send(7876, golden("host_data_set.hex")).reply(be32(0x40890005) + be32(kVsan));
  CHECK(set(platform, 0x2107, kFive) == 0x40890005);
  CHECK(platform.sent(7874).empty());
  CHECK(platform.finished());
}

TEST_CASE("host data write: without the lock nothing is sent") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({kVsan}).lock_answers({0x40890029});
  CHECK(set(platform, 0, kFive) == 0x40850012);
  CHECK(platform.sent(7876).empty());
  CHECK(platform.finished());
}

TEST_CASE("host data write: a failed send is told under the get's name, and the lock is freed") {
  {
    ScriptedPlatform platform;
    platform.ficon_enabled_on({kVsan}).lock_granted();
    platform.expect_send(7876).returns(7);
    CHECK(set(platform, 0, kFive) == 7);
    CHECK(platform.printed() ==
          "ficon_cmi_set_host_data(6429): ficon_cmi_get_host_data_nonblock failed:7\n");
    CHECK(platform.finished());
  }
  ScriptedPlatform platform;  // beyond the block: found only once the lock is held
  platform.ficon_enabled_on({kVsan}).lock_granted();
  CHECK(set(platform, 16380, kFive) == 0x40850003);
  CHECK(platform.sent(7874).size() == 2);
  CHECK(platform.printed() ==
        "ficon_cmi_set_host_data(6429): ficon_cmi_get_host_data_nonblock failed:1082458115\n");
  CHECK(platform.finished());
}

TEST_CASE("host data write: the parser stores 4094 unless the write was taken") {
  ScriptedPlatform platform;
  std::uint32_t vsan = 0x7777;
  CHECK(ficon_cmi_parse_set_host_data(platform.received(be32(0) + be32(0x99aabbcc)), &vsan) == 0);
  CHECK(vsan == 0x99aabbcc);
  CHECK(ficon_cmi_parse_set_host_data(platform.received(be32(0x40890005) + be32(kVsan)), &vsan) ==
        0x40890005);
  CHECK(vsan == 4094);
  vsan = 0x7777;
  CHECK(ficon_cmi_parse_set_host_data(platform.received_without_payload(), &vsan) == 3);
  CHECK(vsan == 4094);
}
