/** kill -9 of the director between changes: configuration text is what it acknowledged. */
#include <doctest/doctest.h>
#include <ficon_cmi.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <random>
#include <set>
#include <thread>

#include "acfg/text_service.h"
#include "configuration/configuration.h"
#include "daemon_process.h"
#include "own_process.h"

using namespace ficon;
using namespace ficon::test;

namespace {

constexpr int kRounds = 25;
constexpr std::uint32_t kWait = 20'000;
constexpr if_index_t kPort = 0x01000002;  // fc1/3, of number 2

/** What the director was told, and the text that it makes. */
struct Told {
  std::set<std::uint32_t> vsans;
  std::uint32_t prohibit = 0;
  std::uint32_t level = 0;
  std::uint16_t address = 2;

  std::string text() const {
    std::string text = "feature ficon\n";
    for (const std::uint32_t vsan : vsans) text += "ficon vsan " + std::to_string(vsan) + "\n";
    if (prohibit != 0) text += "ficon port default-state prohibit-all\n";
    if (address == 512) text += "interface fc1/3\n  ficon portaddress 0x200\n";
    if (level != 0 && level != 2) text += "logging level ficon " + std::to_string(level) + "\n";
    return text;
  }
};

/** One change after another, each acknowledged before the next. */
class Writer {
 public:
  void write(const std::string& socket) {
    const Connected director(socket);
    while (director.get() != nullptr) {
      sent = acknowledged;
      if (change(director.get()) != 0) return;
      acknowledged = sent;
      ++answered;
    }
  }

  Told acknowledged;
  Told sent;                      // with the change under way
  std::atomic<int> answered = 0;  // since the director was started

 private:
  std::uint32_t change(mts_handle_t handle) {
    switch (random_() % 4) {
      case 0: {
        const auto vsan = static_cast<std::uint32_t>(1 + random_() % 50);
        const bool on = !sent.vsans.contains(vsan);
        if (on) {
          sent.vsans.insert(vsan);
        } else {
          sent.vsans.erase(vsan);
        }
        return ficon_cmi_set_ficon_state(1, handle, "TEST", "TEXT", kWait, vsan, on ? 1 : 0);
      }
      case 1:
        sent.prohibit ^= 1;
        return ficon_cmi_set_port_default_prohibit(1, handle, "TEST", "TEXT", kWait, sent.prohibit);
      case 2:
        sent.level = static_cast<std::uint32_t>(1 + random_() % 7);
        return platform::set_logging_level(handle, kWait, sent.level);
      default: {
        const bool take = sent.address == 2;
        sent.address = take ? 512 : 2;
        return ficon_cmi_set_pa_pn(1, handle, "TEST", "TEXT", kWait, 2, take ? 512 : 2);
      }
    }
  }

  std::mt19937 random_{5};
};

std::string running_text(const ScratchDirectory& directory) {
  platform::TextRequest request;
  request.config_prefix = request.debug_prefix = directory.path("ficon.db");
  request.interfaces = {kPort};
  REQUIRE(ficon_startup_acfg_gen(request.request(), request.context()) == 0);
  return request.text.value_or("");
}

}  // namespace

TEST_CASE("Killed between changes, the director's configuration text is what it acknowledged") {
  const ScratchDirectory directory;
  Writer writer;
  int answered = 0;
  for (int round = 0; round <= kRounds; ++round) {
    CAPTURE(round);
    const DaemonProcess daemon(directory, {"--log-level", "error"});
    REQUIRE(daemon.running());
    if (round == 0) {
      const Connected director(daemon.socket());
      REQUIRE(ficon_cmi_set_ficon_state(1, director.get(), "TEST", "TEXT", kWait, 1, 1) == 0);
      writer.acknowledged.vsans = writer.sent.vsans = {1};
    }
    const std::string text = running_text(directory);
    const bool is_sent = text == writer.sent.text();
    if (!is_sent) CHECK(text == writer.acknowledged.text());
    if (is_sent) writer.acknowledged = writer.sent;
    writer.answered = 0;
    std::thread writing([&] { writer.write(daemon.socket()); });
    CHECK(comes_true([&] { return writer.answered != 0; }));
    usleep(static_cast<useconds_t>((round * 7919) % 60'000));
    daemon.signal(SIGKILL);
    writing.join();
    answered += writer.answered;
    const std::string left = running_text(directory);  // nobody has tidied up yet
    CHECK((left == writer.sent.text() || left == writer.acknowledged.text()));
  }
  MESSAGE(kRounds << " kills, " << answered << " changes acknowledged between them");
}
