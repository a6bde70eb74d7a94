/** Port numbers, reservations and bindings. */
#include <doctest/doctest.h>

#include <cstdio>

#include "unit/port_map_world.h"

using namespace ficon::test;

namespace {

constexpr std::uint32_t kInterface = 0x01020304;
constexpr std::uint32_t kNumber = 0x55667788;
const std::string kNoTlvs = "CMI_ERROR: invalid cmi payload: no tlvs present\n";

std::int32_t bind(ScriptedPlatform& platform, std::uint8_t op) {
  return ficon_cmi_vsan_portnum_intf(platform.handle(), op, 0x11223344, kNumber, kInterface, 5);
}

std::uint32_t set(ScriptedPlatform& platform, std::uint8_t op) {
  return ficon_cmi_set_portnum(platform.handle(), op, kInterface, kNumber, 5);
}

Bytes binding(std::uint32_t status, std::uint32_t if_index = 0) {
  return record(17).fill(0, 17, 0x77).be32(8, if_index).host32(12, status);
}

std::string send_failure(const std::string& printed) {
  const auto open = printed.find('('), close = printed.find(')');
  return printed.substr(0, open) + printed.substr(close + 1);
}

}  // namespace

TEST_CASE("binding: the query says which interface has the number") {
  ScriptedPlatform platform;
  platform.on.snprintf_if_index = [](char* text, std::uint32_t size, if_index_t if_index) {
    CHECK(size == 100);
    CHECK(if_index == 0x0a0b0c0d);
    std::snprintf(text, size, "fc2/17");
    return 6;
  };
  platform.expect_send(7892, golden("port_number_binding.hex"))
      .reply(tlvs().add(1, zeros(17)).add(29, binding(0, 0x0a0b0c0d)).add(29, binding(9)));
  CHECK(bind(platform, 3) == 0);
  CHECK(platform.printed() ==
        "vsan 287454020 portnumber 1432778632 is bound to interface fc2/17\n");
  CHECK(platform.finished());
}

TEST_CASE("binding: an interface that the platform cannot name is printed without a name") {
  ScriptedPlatform platform;
  platform.on.snprintf_if_index = [](char* text, std::uint32_t, if_index_t) {
    CHECK(text[0] == '\0');
    return -1;
  };
  platform.expect_send(7892).reply(tlvs().add(29, binding(0, 0x0a0b0c0d)));
  CHECK(bind(platform, 3) == 0);
  CHECK(platform.printed() == "vsan 287454020 portnumber 1432778632 is bound to interface \n");
  CHECK(platform.finished());
}

TEST_CASE("binding: the query of an unbound number says so and gives the status") {
  ScriptedPlatform platform;
  platform.expect_send(7892).reply(tlvs().add(29, binding(0x40890077)));
  CHECK(bind(platform, 3) == 0x40890077);
  CHECK(platform.printed() == "vsan 287454020 portnumber 1432778632 is not bound to interface\n");
  CHECK(platform.finished());
}

TEST_CASE("binding: every other operation is silent") {
  for (const std::uint8_t op : Bytes{0, 1, 2, 4, 255}) {
    for (const std::uint32_t status : {0U, 0x11223344U}) {
      ScriptedPlatform platform;
      platform.expect_send(7892, golden("port_number_binding.hex").with(24, {op}, "operation"))
          .reply(tlvs().add(29, binding(status)));
      CHECK(bind(platform, op) == static_cast<std::int32_t>(status));
      CHECK(platform.printed() == "");
      CHECK(platform.finished());
    }
  }
}

TEST_CASE("port numbers: answers that are none") {
  const auto failure = [](const Bytes& reply) {
    ScriptedPlatform platform;
    platform.expect_send(7892).reply(reply);
    const auto status = static_cast<std::uint32_t>(bind(platform, 1));
    CHECK(platform.printed() == (reply.size() == 4 ? kNoTlvs : ""));
    CHECK(platform.finished());
    return status;
  };
  CHECK(failure(tlvs()) == 0x40850003);
  CHECK(failure(tlvs().add(29, zeros(16))) == 0x40850003);
  CHECK(failure(tlvs().add(29, zeros(18))) == 0x40850003);
  CHECK(failure(tlvs().add(28, zeros(793))) == 0x40850003);
}

TEST_CASE("port numbers: a failed send gives the transport's error number, even 0") {
  for (const std::int32_t error : {32, 0}) {
    const auto printed = [&](const std::string& name) {
      return name +
             (error == 32 ? ":mts_send failed (errno 0x20)\n" : ":mts_send failed (errno 0x0)\n");
    };
    const auto run = [&](std::uint32_t opcode, const std::string& name, auto operation) {
      ScriptedPlatform platform;
      platform.expect_send(opcode).fails(error);
      CHECK(static_cast<std::int32_t>(operation(platform)) == error);
      CHECK(send_failure(platform.printed()) == printed(name));
      CHECK(platform.count("mts_recv") == 0);
      CHECK(platform.finished());
    };
    run(7892, "ficon_cmi_vsan_portnum_intf", [](auto& p) { return bind(p, 1); });
    run(7868, "ficon_cmi_set_portnum", [](auto& p) { return set(p, 2); });
    run(7893, "ficon_cmi_set_pa_if",
        [](auto& p) { return ficon_cmi_set_pa_if(1, p.handle(), "A", "B", 5, 1, 2); });
    run(7884, "ficon_cmi_set_pa_pn",
        [](auto& p) { return ficon_cmi_set_pa_pn(1, p.handle(), "A", "B", 5, 1, 2); });
    run(7890, "ficon_cmi_reserve_portnum", [](auto& p) {
      std::uint32_t result = 0;
      std::int32_t count = 0;
      char text[257];
      return ficon_cmi_reserve_portnum(1, p.handle(), "A", "B", 5, 4, 0, 0, &result, &count,
                                       nullptr, nullptr, text);
    });
  }
}

TEST_CASE("set port number: operations 1 to 3 alone are sent") {
  for (const std::uint8_t op : Bytes{0, 4, 255}) {
    ScriptedPlatform platform;
    CHECK(set(platform, op) == 0x40850003);
    CHECK(platform.order() == "");
  }
}

TEST_CASE("set port number: the request and its status") {
  ScriptedPlatform platform;
  platform.expect_send(7868, golden("port_number_set.hex"))
      .reply(tlvs().add(14, record(13).fill(0, 13, 0x77).host32(8, 0x11223344)));
  CHECK(set(platform, 2) == 0x11223344);
  CHECK(platform.count("pcm_is_pc_auto_created") == 0);
  CHECK(platform.finished());
}

TEST_CASE("set port number: a port channel that the system created gets none") {
  struct Case {
    std::uint32_t status, created, expected;
  };
  for (const Case& c : {Case{0, 1, 0x40850050}, Case{0, 0xff, 0x40850050}, Case{9, 0, 9}}) {
    ScriptedPlatform platform;
    platform.on.pcm_is_pc_auto_created = [&](mts_handle_t, if_index_t if_index,
                                             std::uint32_t* created) {
      CHECK(if_index == kInterface);
      *created = c.created;
      return c.status;
    };
    CHECK(set(platform, 1) == c.expected);
    CHECK(platform.count("mts_send") == 0);
  }
  ScriptedPlatform platform;
  platform.on.pcm_is_pc_auto_created = [](mts_handle_t, if_index_t, std::uint32_t* created) {
    *created = 0;
    return 0U;
  };
  platform.expect_send(7868, golden("port_number_set.hex").with(20, {1}, "operation"))
      .reply(tlvs().add(14, zeros(13)));
  CHECK(set(platform, 1) == 0);
  CHECK(platform.finished());
}

TEST_CASE("set port number: a short answer") {
  ScriptedPlatform platform;
  platform.expect_send(7868).reply(tlvs().add(14, zeros(12)));
  CHECK(set(platform, 2) == 0x40850003);
  CHECK(platform.finished());
}

namespace {

struct Reservation {
  std::uint32_t module = 0x11223344;
  std::uint32_t argument = kNumber;
  std::uint32_t result = 0x77;
  std::int32_t count = 0;
  std::vector<std::uint32_t> firsts = std::vector<std::uint32_t>(64, 0x77);
  std::vector<std::uint32_t> lasts = std::vector<std::uint32_t>(64, 0x77);
  std::string text = std::string(258, 'x');

  std::uint32_t run(ScriptedPlatform& platform, std::uint8_t op) {
    return ficon_cmi_reserve_portnum(1, platform.handle(), "A", "B", 5, op, module, argument,
                                     &result, &count, firsts.data(), lasts.data(), text.data());
  }
};

Record reserved(std::uint32_t status, std::uint32_t count) {
  Record answer = record(793).be32(4, count).host32(524, status).be32(529, 0x0a0b0c0d);
  for (std::uint32_t i = 0; i < 64; ++i) answer.be32(8 + i * 4, 100 + i).be32(264 + i * 4, 200 + i);
  return answer;
}

}  // namespace

TEST_CASE("reservation: the request of a module") {
  PortMapWorld world;
  world.module_ports = 3;
  Reservation r;
  r.count = 2;
  r.firsts[0] = 0x0102;
  r.lasts[0] = 0x0304;
  r.firsts[1] = 0x0506;
  r.lasts[1] = 0x0708;
  world.platform.expect_send(7890, golden("port_number_reserve.hex"))
      .reply(tlvs().add(28, reserved(0, 9)));
  CHECK(r.run(world.platform, 1) == 0);
  CHECK(world.platform.calls({"pm_get_port_info_brief"}) ==
        std::vector<std::string>{"pm_get_port_info_brief * 1 8 65535 255 255 0 0 *"});
  CHECK(r.text[0] == '\0');
  CHECK(r.count == 2);  // no query: the answer's ranges are not taken
  CHECK(r.result == 0x77);
  CHECK(world.platform.finished());
}

TEST_CASE("reservation: which operations name a module and which read back") {
  for (std::uint8_t op = 1; op <= 6; ++op) {
    CAPTURE(int{op});
    PortMapWorld world;
    world.module_ports = 5;
    Reservation r;
    r.count = 1;
    world.platform.expect_send(7890).reply(tlvs().add(28, reserved(0, 2)));
    CHECK(r.run(world.platform, op) == 0);
    const bool query = op == 3 || op == 6;
    const Bytes sent = world.platform.sent(7890).at(0);
    CHECK(sent[8 + 528] == op);
    CHECK(read_be32(sent, 8 + 4) == 1);
    CHECK(read_be32(sent, 8 + 8) == (query ? 0 : 0x77));
    CHECK(read_be32(sent, 8 + 520) == (op <= 3 ? 5 : 0));
    CHECK(r.count == (query ? 2 : 1));
    CHECK(r.result == (query ? 0x0a0b0c0d : 0x77));
    CHECK(r.firsts[0] == (query ? 100 : 0x77));
    CHECK(r.lasts[1] == (query ? 201 : 0x77));
    CHECK(r.firsts[2] == 0x77);
    CHECK(world.platform.finished());
  }
}

TEST_CASE("reservation: bad arguments are refused before anyone is asked") {
  struct Case {
    std::uint8_t op;
    std::int32_t count;
  };
  for (const Case& c : {Case{0, 0}, Case{7, 0}, Case{255, 0}, Case{1, 65}, Case{4, 65}, Case{2, -1},
                        Case{5, INT32_MIN}}) {
    ScriptedPlatform platform;
    Reservation r;
    r.count = c.count;
    CHECK(r.run(platform, c.op) == 0x40850003);
    CHECK(r.text[0] == '\0');
    CHECK(platform.order() == "");
  }
}

TEST_CASE("reservation: 64 ranges are sent") {
  ScriptedPlatform platform;
  Reservation r;
  r.count = 64;
  r.firsts[63] = 0x0102;
  r.lasts[63] = 0x0304;
  platform.expect_send(7890).reply(tlvs().add(28, reserved(0, 0)));
  CHECK(r.run(platform, 4) == 0);
  const Bytes sent = platform.sent(7890).at(0);
  CHECK(read_be32(sent, 8 + 8 + 63 * 4) == 0x0102);
  CHECK(read_be32(sent, 8 + 264 + 63 * 4) == 0x0304);
  CHECK(platform.finished());
}

TEST_CASE("reservation: the answer's ranges are at most the 64 that it holds") {
  for (const std::uint32_t count : {65U, 0xffffffffU}) {
    ScriptedPlatform platform;
    Reservation r;
    platform.expect_send(7890).reply(tlvs().add(28, reserved(0, count)));
    CHECK(r.run(platform, 6) == 0);
    CHECK(r.count == 64);
    CHECK(r.lasts[63] == 263);
    CHECK(platform.finished());
  }
}

TEST_CASE("reservation: why it was refused, with and without an end") {
  for (const bool full : {false, true}) {
    ScriptedPlatform platform;
    Reservation r;
    Record answer = reserved(0x40890055, 2);
    full ? answer.fill(537, 256, 'y') : answer.text(537, "port number 7 is fc1/8's");
    platform.expect_send(7890).reply(tlvs().add(28, answer));
    CHECK(r.run(platform, 5) == 0x40890055);
    CHECK(std::string(r.text.c_str()) ==
          (full ? std::string(256, 'y') : "port number 7 is fc1/8's"));
    CHECK(r.text[257] == 'x');
    CHECK(platform.finished());
  }
}

TEST_CASE("reservation: a refused query leaves everything") {
  ScriptedPlatform platform;
  Reservation r;
  platform.expect_send(7890).reply(tlvs().add(28, Record(reserved(0x40890055, 2)).text(537, "no")));
  CHECK(r.run(platform, 6) == 0x40890055);
  CHECK(r.text[0] == '\0');
  CHECK(r.firsts[0] == 0x77);
  CHECK(r.result == 0x77);
  CHECK(r.count == 0);
  CHECK(platform.finished());
}

TEST_CASE("ports of a module: the mask, and physical ports alone") {
  for (const auto& [module, mask] :
       {std::pair{1U, "1"}, {2U, "2"}, {32U, "0x80000000"}, {33U, "1"}, {0U, "0x80000000"}}) {
    PortMapWorld world;
    world.platform.on.pm_parse_get_port_info_brief = [](mts_msg_ref_t*, std::uint32_t* count,
                                                        pm_port_info_brief_t** records) {
      std::vector<pm_port_info_brief_t> ports(5);
      const std::uint32_t interfaces[] = {0x01000000, 0x04000001, 0x01000001, 0x0a000001,
                                          0x02000001};
      for (std::size_t i = 0; i < 5; ++i) ports[i].if_index = interfaces[i];
      *count = 5;
      *records = handed_out(ports);
      return 0U;
    };
    CHECK(ficon_cmi_fc_port_in_mod(world.platform.handle(), static_cast<std::uint8_t>(module)) ==
          2);
    CHECK(world.platform.calls({"pm_get_port_info_brief"}) ==
          std::vector<std::string>{"pm_get_port_info_brief * 1 " + std::string(mask) +
                                   " 65535 255 255 0 0 *"});
    CHECK(world.platform.finished());
  }
}

TEST_CASE("ports of a module: every failure counts as none and is printed") {
  PortMapWorld world;
  world.platform.on.pm_get_port_info_brief = [](auto...) { return 0xabcU; };
  CHECK(ficon_cmi_fc_port_in_mod(world.platform.handle(), 0) == 0);
  CHECK(world.platform.printed() == "unable to get port info of module 255 from PM rc = abc\n");
  CHECK(world.platform.finished());
}

TEST_CASE("ports of a module: an answer that cannot be read is dropped") {
  PortMapWorld world;
  world.platform.on.pm_parse_get_port_info_brief = [](auto...) { return 0xdefU; };
  CHECK(ficon_cmi_fc_port_in_mod(world.platform.handle(), 3) == 0);
  CHECK(world.platform.printed() == "unable to parse port info of module 2 from PM rc = def\n");
  CHECK(world.platform.finished());
}

TEST_CASE("bindings: fixed records in host order") {
  ScriptedPlatform platform;
  platform.expect_send(7893, Bytes(record(12).host16(0, 0x1122).host32(4, 0x33445566)))
      .reply(record(12).fill(0, 12, 0x77).host32(8, 0x0a0b0c0d));
  CHECK(ficon_cmi_set_pa_if(1, platform.handle(), "A", "B", 5, 0x1122, 0x33445566) == 0x0a0b0c0d);
  platform.expect_send(7884, Bytes(record(10).host16(0, 0x1122).host16(2, 0x3344)))
      .reply(record(10).fill(0, 10, 0x77).host32(6, 0x0a0b0c0e));
  CHECK(ficon_cmi_set_pa_pn(1, platform.handle(), "A", "B", 5, 0x1122, 0x3344) == 0x0a0b0c0e);
  platform.expect_send(7893).reply_without_payload();
  CHECK(ficon_cmi_set_pa_if(1, platform.handle(), "A", "B", 5, 1, 2) == 0);
  platform.expect_send(7884).recv_errors({4, 62});
  CHECK(ficon_cmi_set_pa_pn(1, platform.handle(), "A", "B", 5, 1, 2) == 0x40850043);
  CHECK(platform.printed() == "");
  CHECK(platform.finished());
}
