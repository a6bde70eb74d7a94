/** A memory tracker for the process under test: found by name, unless a test hides it. */
#pragma once

#include <set>
#include <string>
#include <vector>

namespace ficon::test {

class Tracker {
 public:
  /** The entry point of a name, null if hidden or unknown. Looked-up names are kept in order. */
  void* find(const std::string& name);
  void hide(const std::string& name) { hidden_.insert(name); }
  void show_all() { hidden_.clear(); }

  const std::vector<std::string>& looked_up() const { return looked_up_; }
  /** Every call of an entry point as a line, and the value that plain ones return. */
  std::vector<std::string> calls;
  static constexpr int kResult = 0x1357;
  bool allocation_fails = false;

 private:
  std::set<std::string> hidden_;
  std::vector<std::string> looked_up_;
};

Tracker& tracker();

/**
 * Runs `test` in a process of its own and gives whether it came to its end: what it does to the
 * library's hooks stays there. Only REQUIRE counts inside.
 */
bool in_own_process(void (*test)());

}  // namespace ficon::test
