/** A command that could not be done: what was wrong, and what to try. */
#pragma once

#include <ficon_cmi.h>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace ficon::ctl {

/** Exit statuses of the tool. */
enum class Exit : int { kDone = 0, kFailed = 1, kUsage = 2 };

class Failure : public std::runtime_error {
 public:
  Failure(std::uint32_t status, std::string name, const std::string& message, std::string hint)
      : std::runtime_error(message),
        status_(status),
        name_(std::move(name)),
        hint_(std::move(hint)) {}

  /** 0 where no status stands behind it. */
  std::uint32_t status() const { return status_; }
  const std::string& name() const { return name_; }
  const std::string& hint() const { return hint_; }

 private:
  std::uint32_t status_;
  std::string name_;
  std::string hint_;
};

/** The transport's error numbers where the daemon is not there, or silent. */
inline constexpr std::uint32_t kDaemonGone = 32;
inline constexpr std::uint32_t kWaitRanOut = 62;

/** An argument that no command could be made of: exit status 2. */
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/**
 * What a status means. `what` says what was tried ("cannot read VSAN 20"); `endpoint` is named
 * where the daemon is not there.
 */
Failure failure_of(std::uint32_t status, const std::string& what, const std::string& endpoint);

}  // namespace ficon::ctl
