/** An emulator of the benchmark's own, in another process on the same core. */
#pragma once

#include <ficon_cmi.h>
#include <sys/types.h>

#include <string>
#include <vector>

namespace ficon::bench {

inline constexpr std::uint32_t kVsan = 10;

/** This process, and what it starts from here on, runs on one core. */
void pin_to_one_core();

class EmulatorProcess {
 public:
  /** `options` behind those for its socket and store. */
  explicit EmulatorProcess(const char* program, const std::vector<std::string>& options = {});
  EmulatorProcess(const EmulatorProcess&) = delete;
  EmulatorProcess& operator=(const EmulatorProcess&) = delete;
  ~EmulatorProcess();

  /** In a directory that goes when the emulator does. */
  std::string file(const std::string& name) const { return directory_ + "/" + name; }
  std::string socket() const { return file("socket"); }
  pid_t process() const { return process_; }

  /** A handle, FICON enabled on kVsan; ends the program when that fails. */
  mts_handle_t open() const;

 private:
  std::string directory_;
  pid_t process_ = -1;
};

}  // namespace ficon::bench
