/** The platform's small services: header, enabled VSANs, feature manager, texts, diagnostics. */
#include <doctest/doctest.h>
#include <platform/diagnostics.h>
#include <platform/feature_services.h>
#include <platform/ficon_base.h>
#include <platform/mts.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

#include "fake_daemon.h"

using namespace ficon::test;

namespace {

std::string contents(const std::string& path) {
  std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

/** A file of its own, removed at the end with what was rotated out of it. */
struct TemporaryFile {
  std::string path;
  TemporaryFile() {
    char name[] = "/tmp/ficon-test-XXXXXX";
    close(mkstemp(name));
    path = name;
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    unlink(path.c_str());
    unlink((path + ".1").c_str());
  }
};

struct Environment {
  const char* name;
  Environment(const char* variable, const std::string& value) : name(variable) {
    setenv(name, value.c_str(), 1);
  }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;
  ~Environment() { unsetenv(name); }
};

/** Runs `ask` while the daemon answers its one request with `payload`; the request's payload. */
template <class Ask>
Bytes answered(const Bytes& payload, Ask ask) {
  FakeDaemon daemon;
  daemon.listen();
  Bytes request;
  std::thread answerer([&] {
    daemon.accept();
    request = daemon.receive();
    daemon.reply(1, payload);
  });
  {
    Handle handle(daemon.endpoint());
    ask(handle);
  }
  answerer.join();
  return request;
}

std::uint32_t ask_enabled_vsans(mts_handle_t handle, std::uint32_t** list) {
  mts_msg_ref_t request{};
  REQUIRE(ficon_send_get_enabled_vsans(handle, &request) == 0);
  const mts_recv_opts_t options{{1, 0, 2000, mts_rr_token_get(&request)}};
  mts_drop(handle, &request);
  mts_msg_ref_t reply{};
  REQUIRE(mts_recv(handle, &reply, &options) == 0);
  const std::uint32_t result = ficon_parse_get_enabled_vsans(&reply, list);
  mts_drop(handle, &reply);
  return result;
}

}  // namespace

TEST_CASE("CMI header: message type, subtype and bounded texts in 112 bytes, nothing behind") {
  Bytes header(128, 0xee);
  const std::string longer(40, 'B');
  ficon_init_cmi_hdr(header.data(), 0x11223344, "VSH", longer.c_str(), 0x55667788);
  Bytes expected = hex("11223344 55667788") + hex("565348") + Bytes(29) + Bytes(31, 'B') +
                   Bytes(1) + Bytes(40) + Bytes(16, 0xee);
  CHECK(header == expected);
  ficon_init_cmi_hdr(header.data(), 1, nullptr, nullptr, 16);
  expected = hex("00000001 00000010") + Bytes(104) + Bytes(16, 0xee);
  CHECK(header == expected);
}

TEST_CASE("enabled VSANs: status, count and numbers in host order") {
  const Bytes request =
      answered(hex("00000005 00000002 0000000a 00000ffd"), [](mts_handle_t handle) {
        std::uint32_t* list = nullptr;
        REQUIRE(ask_enabled_vsans(handle, &list) == 0);
        CHECK(list[0] == 5);
        CHECK(list[1] == 2);
        CHECK(list[2] == 10);
        CHECK(list[3] == 4093);
        std::free(list);
      });
  CHECK(Bytes(request.begin() + 12, request.end()) ==
        hex("fe000000 000000c8 00000001 00000000 00000000"));
}

TEST_CASE("enabled VSANs: a count that the reply does not hold is refused") {
  for (const char* reply : {"00000000 00000003 0000000a", "00000000 ffffffff", "00000000",
                            "00000000 00000000 0000000a"}) {
    CAPTURE(std::string(reply));
    answered(hex(reply), [](mts_handle_t handle) {
      std::uint32_t* list = nullptr;
      CHECK(ask_enabled_vsans(handle, &list) == 74);
      CHECK(list == nullptr);
    });
  }
}

TEST_CASE("enabled VSANs: without a daemon the result is the error itself") {
  FakeDaemon daemon;
  Handle handle(daemon.endpoint());
  mts_msg_ref_t request{};
  CHECK(ficon_send_get_enabled_vsans(handle, &request) == 32);
}

TEST_CASE("feature manager: names the feature, and its status is the result") {
  const Bytes request = answered(hex("40aa0005"), [](mts_handle_t handle) {
    CHECK(fm_cmi_set_feature_wait(handle, "ficon", "VSH", "UNKNOWN", 3) == 0x40aa0005);
  });
  CHECK(Bytes(request.begin() + 12, request.end()) ==
        hex("fe000000 000000c9 00000001 00000020 00000000 6669636f6e") + Bytes(27));
  answered({}, [](mts_handle_t handle) {
    CHECK(fm_cmi_set_feature_wait(handle, "ficon", "VSH", "UNKNOWN", 3) == 3);
  });
  FakeDaemon absent;
  Handle handle(absent.endpoint());
  CHECK(fm_cmi_set_feature_wait(handle, "ficon", "VSH", "UNKNOWN", 3) == 32);
}

TEST_CASE("error texts: fcd's, the library's, Linux's, and anything else") {
  CHECK(std::string(syserr2str(0x40890029)).find("lock") != std::string::npos);
  CHECK(std::string(syserr2str(0x40850043)) != std::string(syserr2str(0x40850000)));
  CHECK(std::string(syserr2str(32)) == "Broken pipe");
  CHECK(std::string(syserr2str(0x11223344)) == "status 0x11223344");
  CHECK(std::string(syserr2str(4000)) == "status 0x00000fa0");
}

TEST_CASE("error texts: of two threads do not disturb each other") {
  const char* mine = syserr2str(0x11223344);
  std::thread([] { CHECK(std::string(syserr2str(0x55667788)) == "status 0x55667788"); }).join();
  CHECK(std::string(mine) == "status 0x11223344");
}

TEST_CASE("event history: off without a file, a line an event with one") {
  unsetenv("FICON_EVENT_LOG");
  CHECK(sdwrap_hist_event_subtype_check(0x730000, 101) != 0);
  sdwrap_hist_event(0x730000, 4, "lost");
  TemporaryFile log;
  Environment environment("FICON_EVENT_LOG", log.path);
  CHECK(sdwrap_hist_event_subtype_check(0x730000, 101) == 0);
  sdwrap_hist_event(0x730000, 9, "one\ntwo\n");
  sdwrap_hist_event(0x730000, 3, "abcdef");
  const std::string text = contents(log.path);
  CHECK(text.find("0x730000 one two\n") != std::string::npos);
  CHECK(text.find("0x730000 abc\n") != std::string::npos);
  CHECK(text.find("lost") == std::string::npos);
}

TEST_CASE("event history: is bounded") {
  TemporaryFile log;
  Environment environment("FICON_EVENT_LOG", log.path);
  const std::string event(64 * 1024, 'e');
  for (int i = 0; i < 40; ++i) {
    sdwrap_hist_event(0x730000, static_cast<std::uint32_t>(event.size()), event.data());
  }
  CHECK(contents(log.path).size() < 1200 * 1024);
  CHECK(contents(log.path + ".1").size() < 1200 * 1024);
  CHECK(contents(log.path + ".1").size() >= 1024 * 1024);
}

TEST_CASE("debug output: only when it is asked for") {
  TemporaryFile output;
  const int saved = dup(STDERR_FILENO);
  REQUIRE(freopen(output.path.c_str(), "w", stderr) != nullptr);
  unsetenv("FICON_DEBUG");
  const std::int32_t off = sdwrap_chk_int(101, 0, 0, 1);
  buginf(1, sdwrap_dbg_modname, 0, "silent %d\n", 1);
  std::int32_t on = 0;
  {
    Environment environment("FICON_DEBUG", "1");
    on = sdwrap_chk_int(101, 0, 0, 1);
    buginf(1, sdwrap_dbg_modname, 0, "heard %d\n", 2);
  }
  std::fflush(stderr);
  dup2(saved, STDERR_FILENO);
  close(saved);
  CHECK(off == 0);
  CHECK(on != 0);
  CHECK(contents(output.path) == "ficon: heard 2\n");
}
