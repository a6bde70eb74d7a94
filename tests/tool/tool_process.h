/** ficonctl as its users run it: words in; output, errors and exit status out. */
#pragma once

#include <sys/types.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace ficon::test {

struct Result {
  int status;  // minus the signal that ended it
  std::string out;
  std::string err;

  nlohmann::json json() const { return nlohmann::json::parse(out); }
};

/** One run that goes on beside the test. */
class ToolProcess {
 public:
  ToolProcess(const std::string& endpoint, const std::vector<std::string>& words);
  ToolProcess(const ToolProcess&) = delete;
  ToolProcess& operator=(const ToolProcess&) = delete;
  ~ToolProcess();

  /** Waits until it has printed a whole line, and gives it. */
  std::string line();
  void signal(int number) const;
  /** The rest of its output and how it ended. */
  Result finish();

 private:
  pid_t pid_ = -1;
  int out_ = -1;
  int err_ = -1;
};

/** ficonctl's users: one endpoint, many runs. */
class Tool {
 public:
  explicit Tool(std::string endpoint) : endpoint_(std::move(endpoint)) {}

  /** `words` as typed, split at blanks. */
  Result operator()(const std::string& words) const;
  /** For words with blanks in them. */
  Result run(const std::vector<std::string>& words) const;
  ToolProcess start(const std::string& words) const;

 private:
  std::string endpoint_;
};

bool contains(const std::string& text, const std::string& part);

}  // namespace ficon::test
