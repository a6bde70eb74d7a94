/** The port map one port at a time, and by FCID. */
#include <doctest/doctest.h>

#include "double/scripted_platform.h"

using namespace ficon::test;

namespace {

struct Keys {
  std::uint32_t if_index;
  std::uint16_t key1, key2;
  bool operator==(const Keys&) const = default;
};

/** The base library's port map: what is asked, and one answer after the other. */
struct Walk {
  ScriptedPlatform platform;
  std::vector<Keys> asked;
  std::vector<Keys> answers;
  std::uint32_t parse_status = 0;
  Keys keys{0x11223344, 0x5566, 0x7788};

  explicit Walk(std::vector<Keys> its_answers) : answers(std::move(its_answers)) {
    platform.on.ficon_send_get_portmap_nonblock =
        [this](mts_handle_t, const char* a, const char* b, std::uint32_t, std::uint8_t selector,
               if_index_t if_index, std::uint16_t key1, std::uint16_t key2, mts_msg_ref_t* msg) {
          CHECK(std::string(a) + b == "VSHUNKNOWN");
          CHECK(selector == 0x5e);
          asked.push_back({if_index, key1, key2});
          platform.send_request(msg, "port map", zeros(4));
          return 0U;
        };
    platform.on.ficon_parse_get_portmap = [this](mts_msg_ref_t*, if_index_t* if_index,
                                                 std::uint16_t* key1, std::uint16_t* key2) {
      const Keys& answer = answers.at(asked.size() - 1);
      *if_index = answer.if_index;
      *key1 = answer.key1;
      *key2 = answer.key2;
      return parse_status;
    };
  }

  std::uint32_t run(std::uint32_t type) {
    return ficon_send_get_portmap(platform.handle(), "VSH", "UNKNOWN", 5, type, 0x5e,
                                  &keys.if_index, &keys.key1, &keys.key2);
  }
  void get_next_type(std::uint32_t type) {
    platform.expect_send(7883).reply(record(120).host32(116, type));
  }
};

const Keys kStart{0x11223344, 0x5566, 0x7788};

}  // namespace

TEST_CASE("port map walk: an exact look-up asks once and hands out even an empty port") {
  Walk walk({{0, 0x0102, 0x0304}});
  CHECK(walk.run(1) == 0);
  CHECK(walk.asked == std::vector<Keys>{kStart});
  CHECK(walk.keys == Keys{0, 0x0102, 0x0304});
  CHECK(walk.platform.sent(7883).empty());
  CHECK(walk.platform.finished());
}

TEST_CASE("port map walk: null pointers ask with no interface and no keys") {
  Walk walk({{5, 6, 7}});
  CHECK(ficon_send_get_portmap(walk.platform.handle(), "VSH", "UNKNOWN", 5, 1, 0x5e, nullptr,
                               nullptr, nullptr) == 0);
  CHECK(walk.asked == std::vector<Keys>{{0, 512, 512}});
  CHECK(walk.platform.finished());
}

TEST_CASE("port map walk: get-next over installed ports passes over empty ones") {
  Walk walk({{0, 1, 2}, {0, 3, 4}, {9, 5, 6}});
  walk.get_next_type(2);
  CHECK(walk.run(2) == 0);
  CHECK(walk.asked == std::vector<Keys>{kStart, {0, 1, 2}, {0, 3, 4}});
  CHECK(walk.keys == Keys{9, 5, 6});
  CHECK(walk.platform.finished());
}

TEST_CASE("port map walk: get-next over all ports stops at an empty one") {
  for (const std::uint32_t type : {0U, 1U, 3U}) {
    Walk walk({{0, 1, 2}});
    walk.get_next_type(type);
    CHECK(walk.run(2) == 0);
    CHECK(walk.keys == Keys{0, 1, 2});
    CHECK(walk.platform.finished());
  }
}

TEST_CASE("port map walk: other types hand out installed ports alone") {
  Walk empty({{0, 1, 2}});
  CHECK(empty.run(3) == 0);
  CHECK(empty.keys == kStart);
  CHECK(empty.platform.finished());
}

TEST_CASE(
    "port map walk: a failed drop is the result where no port is handed out, and only there") {
  struct Case {
    std::uint32_t type, if_index, status;
  };
  for (const Case& c : {Case{3, 0, 22}, Case{3, 8, 0}, Case{1, 0, 0}}) {
    Walk walk({{c.if_index, 1, 2}});
    walk.platform.fail_reply_drops(22);
    CHECK(walk.run(c.type) == c.status);
    CHECK(walk.keys == (c.status == 0 ? Keys{c.if_index, 1, 2} : kStart));
    CHECK(walk.platform.finished());
  }
}

TEST_CASE("port map walk: other types hand out what they find") {
  Walk found({{8, 1, 2}});
  CHECK(found.run(3) == 0);
  CHECK(found.keys == Keys{8, 1, 2});
  CHECK(found.platform.finished());
}

TEST_CASE("port map walk: a failed receive reads as success, the keys unchanged") {
  Walk walk({{8, 1, 2}});
  walk.platform.fail_call(2);
  CHECK(walk.run(1) == 0);
  CHECK(walk.platform.fault().find("mts_recv") == 0);
  CHECK(walk.keys == kStart);
  CHECK(walk.platform.messages_dropped());
}

TEST_CASE("port map walk: a refusal leaves the caller's keys") {
  Walk walk({{8, 1, 2}});
  walk.parse_status = 0x1234;
  CHECK(walk.run(1) == 0x1234);
  CHECK(walk.keys == kStart);
  CHECK(walk.platform.finished());
}

TEST_CASE("port map walk: no get-next type, no walk") {
  Walk walk({});
  walk.platform.expect_send(7883).reply(record(120).host32(112, 0x1234));
  CHECK(walk.run(2) == 0x1234);
  CHECK(walk.asked.empty());
  CHECK(walk.platform.history() ==
        std::vector<std::string>{"CMI_ERROR: ficon_cmi_get_getnext_type failed 0x00001234\n"});
  CHECK(walk.platform.finished());
}

TEST_CASE("FCID: the request goes to the other node, without options") {
  ScriptedPlatform platform;
  platform.expect_send(7858, golden("port_map_fcid.hex")).to(0xfe000001, 101).without_options();
  mts_msg_ref_t msg{};
  CHECK(ficon_send_get_portmap_fcid_nonblock(platform.handle(), "VSH", "UNKNOWN", 2, 0x5e,
                                             0x11223344, 0x01020304, 0x0a0b, 0x0c0d, &msg) == 0);
  mts_drop(platform.handle(), &msg);
  CHECK(platform.finished());
}

TEST_CASE("FCID: no handle, failed send, failed TLV") {
  ScriptedPlatform platform;
  mts_msg_ref_t msg{};
  CHECK(ficon_send_get_portmap_fcid_nonblock(nullptr, "A", "B", 1, 0, 0, 0, 0, 0, &msg) ==
        0x40850003);
  CHECK(platform.order() == "");
  platform.expect_send(7858).to(0xfe000001, 101).without_options().returns(7);
  CHECK(ficon_send_get_portmap_fcid_nonblock(platform.handle(), "A", "B", 1, 0, 0, 0, 0, 0, &msg) ==
        7);
  platform.fail_call(1);
  CHECK(ficon_send_get_portmap_fcid_nonblock(platform.handle(), "A", "B", 1, 0, 0, 0, 0, 0, &msg) ==
        kInjected);
}

TEST_CASE("FCID: every field of the answer") {
  ScriptedPlatform platform;
  const Bytes answer = record(130)
                           .fill(0, 112, 0x77)
                           .be32(112, 0x01020304)
                           .be32(116, 0x0a0b0c0d)
                           .host16(120, 0x1122)
                           .host16(122, 0x3344)
                           .u8(124, 0x5e)
                           .u8(125, 0x6f)
                           .host32(126, 0x55667788);
  auto* reply = platform.received(tlvs().add(12, zeros(128)).add(9, answer));
  std::uint32_t if_index = 0, fcid = 0;
  std::uint16_t key1 = 0, key2 = 0;
  std::uint8_t byte = 0;
  CHECK(ficon_parse_get_portmap_fcid(reply, &if_index, &key1, &key2, &fcid, &byte) == 0x0a0b0c0d);
  CHECK(if_index == 0x01020304);
  CHECK(key1 == 0x1122);
  CHECK(key2 == 0x3344);
  CHECK(fcid == 0x55667788);
  CHECK(byte == 0x6f);
  CHECK(ficon_parse_get_portmap_fcid(reply, nullptr, nullptr, nullptr, nullptr, nullptr) ==
        0x0a0b0c0d);
}

TEST_CASE("FCID: answers that are none") {
  ScriptedPlatform platform;
  const auto parse = [](mts_msg_ref_t* reply) {
    return ficon_parse_get_portmap_fcid(reply, nullptr, nullptr, nullptr, nullptr, nullptr);
  };
  CHECK(parse(nullptr) == 0x40850003);
  CHECK(parse(platform.received_without_payload()) == 0x40850008);
  CHECK(parse(platform.received(tlvs())) == 0x40850003);
  CHECK(parse(platform.received(tlvs().add(12, zeros(128)))) == 0x40850003);
  CHECK(platform.printed() == "");
}
