/** The double itself: a script that can fail is worth more than one that cannot. */
#include <doctest/doctest.h>

#include <stdexcept>

#include "double/scripted_platform.h"

using namespace ficon::test;

TEST_CASE("golden: offsets, bytes, zeros, bases and host order") {
  const Bytes read = parse_golden("t.hex",
                                  "# a remark\n"
                                  "0: 01 02 # first\n"
                                  "zero to 4\n"
                                  "base 4\n"
                                  "0: \"AB\" # text\n"
                                  "2: host32=11223344\n")
                         .bytes();
  CHECK(read == Bytes{1, 2, 0, 0, 'A', 'B'} + host32(0x11223344));
}

TEST_CASE("golden: an offset that is wrong is refused with its line") {
  CHECK_THROWS_WITH_AS(parse_golden("t.hex", "0: 01\n2: 02\n").bytes(),
                       "t.hex:2: offset 2, but 1 bytes stand before", std::invalid_argument);
}

TEST_CASE("golden: a difference names byte and remark") {
  const Golden expected = parse_golden("t.hex", "0: 01 # one\n1: 02 03 # requester\n");
  CHECK(expected.difference_to({1, 2, 3}) == "");
  CHECK(expected.difference_to({1, 2, 4}) ==
        "t.hex, byte 2: expected 03, got 04 (lengths 3 and 3) [requester]");
  CHECK(expected.difference_to({1, 2}) ==
        "t.hex, byte 2: expected 03, got the end (lengths 3 and 2) [requester]");
}

TEST_CASE("double: what was printed is captured, and the pause takes no time") {
  ScriptedPlatform platform;
  std::printf("one\n");
  std::puts("two");
  CHECK(platform.printed() == "one\ntwo\n");
}

TEST_CASE("double: a change under the lock, from the check to the free") {
  ScriptedPlatform platform;
  platform.ficon_enabled_on({10, 0x11223344}).lock_granted();
  platform.expect_send(7865, golden("vsan_setting.hex")).reply(tlvs().header_status(0x40890077));
  CHECK(ficon_cmi_clock_alert_mode(0x01020304, platform.handle(), "VSH", "UNKNOWN", 5, 0x11223344,
                                   1) == 0x40890077);
  CHECK(platform.finished());
  CHECK(platform.order() ==
        "ficon_send_get_enabled_vsans, token, drop request, recv, ficon_parse_get_enabled_vsans, "
        "free, drop reply, "
        "send 7874, token, drop request, recv, drop reply, "
        "send 7865, token, drop request, recv, drop reply, "
        "send 7874, token, drop request, recv, drop reply");
  CHECK(platform.printed().empty());
}
