/**
 * Configuration text of generated switches: applied to a fresh one it gives the same text again,
 * however its lines are spelt, and applied twice it changes nothing.
 */
#include <doctest/doctest.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <random>
#include <sstream>

#include "daemon_process.h"
#include "model/host_data.h"
#include "model/port_operations.h"
#include "store/store.h"
#include "tool_process.h"

using namespace ficon::test;
using namespace ficon::emulator;

namespace {

constexpr Asker kOperator{1, Requester::kOperator};
constexpr const char* kSoAlready = "the running configuration is so already: nothing was changed\n";

/** A switch somebody has worked on for years. */
class Years {
 public:
  Years(Switch& model, std::uint32_t seed) : model_(model), ports_(model), random_(seed) {}

  void pass() {
    if (chance(90)) model_.enable_feature();
    change_settings();
    // Text of a switch without the feature tells nothing of its numbers.
    if (model_.feature_enabled() && chance(80)) renumber();
    bind_logical();
    for (std::uint32_t i = upto(20); i > 0; --i) swap();
    for (std::uint32_t i = upto(20); i > 0; --i) bind_address();
  }

 private:
  std::uint32_t upto(std::uint32_t last) {
    return static_cast<std::uint32_t>(random_() % (last + 1));
  }
  /** Much of what people try is refused. */
  void attempt(ficon::FcdStatus) {}
  bool chance(std::uint32_t percent) { return upto(99) < percent; }

  void change_settings() {
    for (std::uint32_t i = upto(30); i > 0; --i) {
      const std::uint32_t vsan = 1 + upto(4092);
      attempt(model_.enable_ficon(vsan, kOperator));
      if (chance(30)) attempt(model_.set_codepage(vsan, kOperator, 1140));
      if (chance(30))
        attempt(write_host_data(model_, vsan, kOperator, upto(99), std::array{kOneByte}));
      if (chance(30)) attempt(model_.set_mih_timeout(vsan, kOperator, upto(255)));
      if (chance(10)) attempt(model_.disable_ficon(vsan, kOperator));
    }
    if (chance(60)) attempt(ports_.set_default_prohibit(kOperator, upto(1)));
    if (chance(60)) attempt(ports_.set_acl_not_fcid(kOperator, upto(1)));
    if (chance(80)) attempt(model_.set_default_mih_timeout(upto(255)));
    if (chance(50)) attempt(model_.set_max_ports(1 + upto(1279)));
    if (chance(80)) attempt(model_.set_logging_level(upto(7)));
  }

  /** Numbers move between modules, a few ranges each, as many as a line of text has room for. */
  void renumber() {
    std::vector<NumberOwner> owners = {kLogicalPorts};
    for (const auto& module : model_.chassis().modules) owners.push_back(module.number);
    std::ranges::shuffle(owners, random_);
    owners.resize(1 + upto(static_cast<std::uint32_t>(owners.size()) - 1));
    for (const NumberOwner owner : owners) ports_.release(kOperator, owner, {});
    for (const NumberOwner owner : owners) {
      if (chance(85)) ports_.reserve(kOperator, owner, free_ranges());
    }
  }

  std::vector<PortNumberRange> free_ranges() {
    std::vector<PortNumberRange> ranges;
    std::vector<bool> taken(256);
    for (std::uint32_t count = 1 + upto(9), tries = 200; count > 0 && tries > 0; --tries) {
      const std::uint32_t first = upto(0xfd);
      const std::uint32_t last = std::min(first + upto(5), 0xfdU);
      bool free = true;
      for (std::uint32_t n = first; n <= last; ++n) {
        free = free && !taken[n] && !model_.port_plan().owner_of(n);
      }
      if (!free) continue;
      std::fill(taken.begin() + first, taken.begin() + last + 1, true);
      ranges.push_back({first, last});
      --count;
    }
    return ranges;
  }

  void bind_logical() {
    for (const auto& [if_index, port] : model_.chassis().logical_ports) {
      if (chance(70)) attempt(ports_.assign(kOperator, if_index, upto(0xfd)));
    }
    for (const auto& [if_index, port] : model_.chassis().logical_ports) {
      const auto free = model_.port_plan().reserved_for(kLogicalPorts);
      if (!free.empty() && chance(70))
        attempt(ports_.assign(kOperator, if_index, free.front().first));
    }
  }

  void swap() {
    SwappedInterfaces unused{};
    attempt(ports_.swap(kOperator, upto(0xfd), upto(0xfd), unused));
  }

  void bind_address() {
    const std::uint32_t address = upto(0xfd);
    if (chance(50)) attempt(ports_.bind_address(kOperator, address, kNoPort));
    attempt(ports_.bind_address(kOperator, address, upto(0xfd)));
  }

  static constexpr std::uint8_t kOneByte = 0x5a;
  Switch& model_;
  PortOperations ports_;
  std::mt19937 random_;
};

/** A switch of a test's own, with a file to apply lines from. */
struct OneSwitch {
  ScratchDirectory directory;
  Tool tool{"embedded:" + directory.path()};

  void grow_old(std::uint32_t seed) const {
    Store store(directory.path("ficon.db"));
    Switch model;
    store.load(model);
    Years(model, seed).pass();
    store.commit(model);
  }
  std::string running() const { return tool("config running").out; }
  Result apply(const std::string& text) const {
    std::ofstream(directory.path("lines")) << text;
    return tool("config apply " + directory.path("lines"));
  }
};

/** Numbers singly, in hexadecimal here and there; blanks and `force` as people write them. */
std::string respelt(const std::string& line, std::mt19937& random) {
  const std::size_t list = line.find("port-numbers ");
  if (list == std::string::npos) return "\t" + line + "  ";
  std::string result = line.substr(0, list) + " port-numbers ";
  std::string numbers = line.substr(list + 13);
  numbers = numbers.substr(0, numbers.find(" force"));
  std::istringstream stream(numbers);
  bool first_part = true;
  for (std::string part; std::getline(stream, part, ',');) {
    unsigned first = 0;
    unsigned last = 0;
    const int count = std::sscanf(part.c_str(), "%u-%u", &first, &last);
    for (unsigned n = first; count > 0 && n <= (count == 2 ? last : first); ++n) {
      char text[16];
      std::snprintf(text, sizeof text, random() % 2 == 0 ? "%u" : "0x%x", n);
      result += (first_part ? "" : random() % 2 == 0 ? "," : " , ") + std::string(text);
      first_part = false;
    }
  }
  return result;
}

std::string respelt_text(const std::string& text, std::uint32_t seed) {
  std::mt19937 random(seed);
  std::istringstream stream(text);
  std::string result = "! the same in other words\n\n";
  for (std::string line; std::getline(stream, line);) result += respelt(line, random) + "\n";
  return result;
}

std::uint32_t switches_wanted() {
  const char* wanted = std::getenv("FICON_ROUND_TRIPS");
  return wanted == nullptr ? 8 : static_cast<std::uint32_t>(std::atoi(wanted));
}

}  // namespace

TEST_CASE("text applied to a fresh switch gives the same text, in any spelling, and once only") {
  std::size_t lines = 0;
  for (std::uint32_t seed = 1; seed <= switches_wanted(); ++seed) {
    CAPTURE(seed);
    const OneSwitch old;
    old.grow_old(seed);
    const std::string text = old.running();
    CAPTURE(text);
    lines += static_cast<std::size_t>(std::ranges::count(text, '\n'));
    CHECK(old.apply(text).out == kSoAlready);

    const OneSwitch fresh;
    const Result applied = fresh.apply(text);
    REQUIRE_MESSAGE(applied.status == 0, applied.err);
    CHECK(fresh.running() == text);
    CHECK(fresh.apply(text).out == kSoAlready);

    const OneSwitch other;
    const Result in_other_words = other.apply(respelt_text(text, seed));
    REQUIRE_MESSAGE(in_other_words.status == 0, in_other_words.err);
    CHECK(other.running() == text);
    CHECK(other.apply(text).out == kSoAlready);
  }
  MESSAGE(switches_wanted() << " switches, " << lines << " lines");
  CHECK(lines > switches_wanted() * 20);
}

TEST_CASE("text of one switch applied to another that has grown old as well holds there") {
  for (std::uint32_t seed = 101; seed < 101 + switches_wanted(); ++seed) {
    CAPTURE(seed);
    const OneSwitch one;
    const OneSwitch other;
    one.grow_old(seed);
    other.grow_old(seed + 1000);
    const std::string text = one.running();
    const std::string before = other.running();
    const Result applied = other.apply(text);
    if (applied.status == 0) {
      CHECK(other.apply(text).out == kSoAlready);
    } else {  // it keeps port numbers that the lines want for others
      CHECK(applied.status == 2);
      CHECK(contains(applied.err, "nothing was applied:\n  line "));
      CHECK(other.running() == before);
    }
  }
}
