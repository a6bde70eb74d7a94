/** Get-next type, maximum ports and MIH time-out: bytes, results, and which of them wait. */
#include <doctest/doctest.h>

#include <cstring>

#include "double/scripted_platform.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kRequester = 0x01020304;
const std::string kExchange = "token, drop request, recv, drop reply";

Bytes block(std::uint32_t status, std::uint32_t value) {
  return record(120).host32(112, status).host32(116, value);
}

std::uint32_t get_type(ScriptedPlatform& platform, std::uint32_t* type) {
  return ficon_cmi_get_getnext_type(kRequester, platform.handle(), "VSH", "UNKNOWN", 5, type);
}
std::uint32_t set_type(ScriptedPlatform& platform) {
  return ficon_cmi_set_getnext_type(kRequester, platform.handle(), "VSH", "UNKNOWN", 5, 0x11223344);
}
std::uint32_t set_ports(ScriptedPlatform& platform) {
  return ficon_cmi_set_max_ports(kRequester, platform.handle(), "VSH", "UNKNOWN", 5, 0x11223344);
}
std::uint32_t mih(ScriptedPlatform& platform, std::uint8_t operation,
                  ficon_cmi_mihpto_rec_t* reply) {
  return ficon_cmi_mihpto(kRequester, platform.handle(), "VSH", "UNKNOWN", 5, operation, 0x55667788,
                          0x11223344, reply);
}

Golden mih_request(std::uint8_t operation) {
  Golden request = golden("mih_timeout.hex").with(8, {operation}, "operation");
  return operation > 1 ? request.with(0, zeros(4), "no time-out") : request;
}

}  // namespace

TEST_CASE("get-next type: asked for, and handed out as it came") {
  ScriptedPlatform platform;
  platform.expect_send(7883, golden("limit_get.hex")).reply(block(0, 0x55667788));
  std::uint32_t type = 0x7777;
  CHECK(get_type(platform, &type) == 0);
  CHECK(type == 0x55667788);
  CHECK(platform.order() == "send 7883, " + kExchange);
  CHECK(platform.lines({"ficon_init_cmi_hdr", "mts_send"}) ==
        "ficon_init_cmi_hdr 1 \"VSH\" \"UNKNOWN\" 8\n"
        "mts_send node=0xfe000000 sap=101 opcode=7883 length=120 options=1,1\n");
  CHECK(platform.lines({"mts_recv"}) == "mts_recv options=1,0,5,28673\n");
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("get-next type: without a place it still asks") {
  ScriptedPlatform platform;
  platform.expect_send(7883, golden("limit_get.hex")).reply(block(0x40890077, 5));
  CHECK(get_type(platform, nullptr) == 0x40890077);
  CHECK(platform.finished());
}

TEST_CASE("get-next type: filled also beside a refusal, not without a payload") {
  ScriptedPlatform platform;
  std::uint32_t type = 0x7777;
  CHECK(ficon_cmi_parse_getnext_type(platform.received(block(0x40890077, 0x55667788)), &type) ==
        0x40890077);
  CHECK(type == 0x55667788);
  type = 0x7777;
  CHECK(ficon_cmi_parse_getnext_type(platform.received_without_payload(), &type) == 3);
  CHECK(type == 0x7777);
}

TEST_CASE("limits: set in the order of the machine") {
  struct Case {
    std::uint32_t opcode;
    std::uint32_t (*set)(ScriptedPlatform&);
  };
  for (const Case& c : {Case{7883, set_type}, Case{7878, set_ports}}) {
    CAPTURE(c.opcode);
    ScriptedPlatform platform;
    platform.expect_send(c.opcode, golden("limit_set.hex")).reply(block(0x40890077, 0));
    CHECK(c.set(platform) == 0x40890077);
    CHECK(platform.order() == "send " + std::to_string(c.opcode) + ", " + kExchange);
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("limits: a failed send is told, each in its own words") {
  struct Case {
    std::uint32_t opcode;
    std::uint32_t (*call)(ScriptedPlatform&);
    const char* printed;
  };
  const Case cases[] = {
      {7883, [](ScriptedPlatform& p) { return get_type(p, nullptr); },
       "ficon_cmi_get_getnext_type(4663): mts send failed:-1\n"},
      {7883, set_type, "ficon_cmi_set_getnext_type(4616): mts send failed:-1\n"},
      {7878, set_ports, "ficon_cmi_set_max_ports(4540):ficon_cmi_set_max_ports failed:-1\n"},
  };
  for (const Case& c : cases) {
    ScriptedPlatform platform;
    platform.expect_send(c.opcode).fails(32);
    CHECK(c.call(platform) == 0xffffffff);
    CHECK(platform.printed() == c.printed);
    CHECK(platform.finished());
  }
}

TEST_CASE("limits: a time-out or an empty reply is the result, untold") {
  struct Case {
    std::uint32_t opcode;
    std::uint32_t (*call)(ScriptedPlatform&);
  };
  const Case cases[] = {{7883, [](ScriptedPlatform& p) { return get_type(p, nullptr); }},
                        {7883, set_type},
                        {7878, set_ports}};
  for (const Case& c : cases) {
    ScriptedPlatform platform;
    platform.expect_send(c.opcode).recv_errors({62});
    platform.expect_send(c.opcode).reply_without_payload();
    CHECK(c.call(platform) == 0x40850043);
    CHECK(c.call(platform) == 3);
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("maximum ports: the parser") {
  ScriptedPlatform platform;
  CHECK(ficon_cmi_parse_max_port(platform.received(block(0x11223344, 5))) == 0x11223344);
  CHECK(ficon_cmi_parse_max_port(platform.received(block(0, 5))) == 0);
  CHECK(ficon_cmi_parse_max_port(platform.received_without_payload()) == 3);
}

TEST_CASE("MIH time-out: only operations 2 and 3 wait, only 0 and 1 send a value") {
  for (const int operation : {0, 1, 4, 5, 255}) {
    CAPTURE(operation);
    const auto code = static_cast<std::uint8_t>(operation);
    ScriptedPlatform platform;
    platform.expect_send(7897, mih_request(code)).options(1, 0);
    ficon_cmi_mihpto_rec_t reply;
    std::memset(&reply, 0x77, sizeof reply);
    CHECK(mih(platform, code, &reply) == 0);
    CHECK(difference(Bytes(13, 0x77), bytes_of(reply)) == "");
    CHECK(platform.order() == "send 7897, token, drop request");
    CHECK(platform.finished());
  }
  for (const std::uint8_t operation : {std::uint8_t{2}, std::uint8_t{3}}) {
    CAPTURE(int{operation});
    ScriptedPlatform platform;
    const Bytes record = {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,
                          0x88, 0x99, 0xaa, 0xbb, 0xcc, 0xdd};
    platform.expect_send(7897, mih_request(operation)).options(1, 0).reply(record + zeros(3));
    ficon_cmi_mihpto_rec_t reply{};
    CHECK(mih(platform, operation, &reply) == 0);
    CHECK(difference(record, bytes_of(reply)) == "");
    CHECK(platform.order() == "send 7897, " + kExchange);
    CHECK(platform.lines({"mts_recv"}) == "mts_recv options=1,0,5,28673\n");
    CHECK(platform.printed().empty());
    CHECK(platform.finished());
  }
}

TEST_CASE("MIH time-out: only a negative send result is a failure, with the transport's number") {
  {
    ScriptedPlatform platform;
    platform.expect_send(7897).options(1, 0).fails(32);
    CHECK(mih(platform, 0, nullptr) == 32);
    CHECK(platform.printed() == "ficon_cmi_mihpto(5313):mts_send failed (errno 0x20)\n");
    CHECK(platform.finished());
  }
  {
    ScriptedPlatform platform;  // failed, whatever the number is: nothing to drop, nothing to await
    platform.expect_send(7897).options(1, 0).fails(0);
    CHECK(mih(platform, 2, nullptr) == 0);
    CHECK(platform.order() == "send 7897");
    CHECK(platform.finished());
  }
  ScriptedPlatform platform;
  platform.expect_send(7897).options(1, 0).returns(7);
  CHECK(mih(platform, 1, nullptr) == 0);
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}

TEST_CASE("MIH time-out: no reply in time, or an empty one, which is dropped all the same") {
  ScriptedPlatform platform;
  platform.expect_send(7897).options(1, 0).recv_errors({62});
  platform.expect_send(7897).options(1, 0).reply_without_payload();
  ficon_cmi_mihpto_rec_t reply;
  std::memset(&reply, 0x77, sizeof reply);
  CHECK(mih(platform, 2, &reply) == 0x40850043);
  CHECK(mih(platform, 3, &reply) == 3);
  CHECK(difference(Bytes(13, 0x77), bytes_of(reply)) == "");
  CHECK(platform.printed().empty());
  CHECK(platform.finished());
}
