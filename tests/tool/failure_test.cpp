#include "failure.h"

#include <doctest/doctest.h>

#include "requester.h"

using namespace ficon::ctl;

namespace {

Failure failure(std::uint32_t status) {
  return failure_of(status, "cannot read VSAN 20", "unix:/run/fcd");
}

}  // namespace

TEST_CASE("a daemon that is not there is named by its endpoint") {
  const Failure gone = failure(32);
  CHECK(gone.name() == "daemon-absent");
  CHECK(gone.what() == std::string("cannot read VSAN 20: no daemon answers at unix:/run/fcd"));
  CHECK(gone.hint() == "start fcd-emulator there, or choose another endpoint with --endpoint");
}

TEST_CASE("fcd's refusals, the library's codes and Linux's errors each have a name") {
  CHECK(failure(0x40890005).name() == "vsan-without-ficon");
  CHECK(failure(0x40890029).name() == "lock-busy");
  CHECK(failure(0x40850012).name() == "lock-unavailable");
  CHECK(failure(0x40850043).name() == "timed-out");
  CHECK(failure(90).name() == "message-too-long");
  CHECK(failure(84).hint() == "use characters that the code page has");
  CHECK(failure(13).name() == "EACCES");
  CHECK(failure(0xffffffff).name() == "send-failed");
}

TEST_CASE("a status that nobody knows is shown as a number") {
  const Failure unknown = failure(0x11223344);
  CHECK(unknown.name() == "unknown");
  CHECK(unknown.status() == 0x11223344);
  CHECK(unknown.what() == std::string("cannot read VSAN 20: status 0x11223344"));
}

TEST_CASE("requesters have names and codes") {
  CHECK(parse_requester("operator") == 1);
  CHECK(parse_requester("agent") == 2);
  CHECK(parse_requester("3") == 3);
  CHECK(requester_name(3) == "host");
  CHECK(requester_name(9) == "requester 9");
  CHECK_THROWS_WITH_AS(parse_requester("hots"),
                       "requester \"hots\" is not operator, agent or host: did you mean \"host\"?",
                       UsageError);
  CHECK_THROWS_AS(parse_requester("4"), UsageError);
}
