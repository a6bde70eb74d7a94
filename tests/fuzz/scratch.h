/** A directory that goes with the process: in TMPDIR, else in memory where that can be had. */
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace ficon::fuzz {

class Scratch {
 public:
  Scratch() {
    const bool in_memory = std::getenv("TMPDIR") == nullptr && access("/dev/shm", W_OK) == 0;
    const std::filesystem::path base =
        in_memory ? "/dev/shm" : std::filesystem::temp_directory_path();
    std::string name = (base / "ficon-fuzz-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no scratch directory");
    path_ = name;
  }
  ~Scratch() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  std::string file(const std::string& name) const { return (path_ / name).string(); }
  void clear() const {
    for (const auto& entry : std::filesystem::directory_iterator(path_)) remove_all(entry.path());
  }

 private:
  std::filesystem::path path_;
};

}  // namespace ficon::fuzz
