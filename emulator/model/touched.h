/**
 * What a change has touched and the store has still to learn.
 *
 * The model is made of objects with path-like names ("vsan/0020", "history/0000000017"). Whoever
 * changes one names it here; the store asks for its present state when the turn ends. An object
 * that no longer exists then is forgotten.
 */
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>

namespace ficon::emulator {

class Touched {
 public:
  void object(std::string name) {
    ++marks_;
    objects_.insert(std::move(name));
  }
  /** Everything whose name begins with `path` and a slash is gone. */
  void erased_below(std::string path) {
    ++marks_;
    erased_.insert(std::move(path));
  }

  /** What is stored at the end of the turn becomes the startup configuration too. */
  void startup() {
    ++marks_;
    ++startups_;
  }

  bool any() const { return !objects_.empty() || !erased_.empty() || startups_ != 0; }
  /** How often it was asked for in this turn. */
  std::size_t startups() const { return startups_; }
  void clear() {
    startups_ = 0;
    objects_.clear();
    erased_.clear();
  }
  /** Grows with every mark: tells whether a request changed anything. */
  std::uint64_t marks() const { return marks_; }
  const std::set<std::string>& objects() const { return objects_; }
  const std::set<std::string>& erased_paths() const { return erased_; }

 private:
  std::uint64_t marks_ = 0;
  std::size_t startups_ = 0;
  std::set<std::string> objects_;
  std::set<std::string> erased_;
};

}  // namespace ficon::emulator
