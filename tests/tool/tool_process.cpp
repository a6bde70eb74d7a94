#include "tool_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <sstream>
#include <stdexcept>

#include "child.h"

namespace ficon::test {
namespace {

std::array<int, 2> make_pipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  return ends;
}

std::vector<std::string> split(const std::string& words) {
  std::istringstream stream(words);
  std::vector<std::string> result;
  for (std::string word; stream >> word;) result.push_back(word);
  return result;
}

/** Reads both streams to their ends at once, so that neither can fill up and stop the tool. */
void read_both(int out, int err, Result& result) {
  std::array<pollfd, 2> streams{pollfd{out, POLLIN, 0}, pollfd{err, POLLIN, 0}};
  const std::array<std::string*, 2> texts{&result.out, &result.err};
  for (int open = 2; open > 0;) {
    poll(streams.data(), streams.size(), -1);
    for (std::size_t i = 0; i < streams.size(); ++i) {
      if (streams[i].revents == 0) continue;
      char bytes[4096];
      const ssize_t count = read(streams[i].fd, bytes, sizeof bytes);
      if (count > 0) {
        texts[i]->append(bytes, static_cast<std::size_t>(count));
      } else {
        streams[i].fd = -1;
        --open;
      }
    }
  }
}

/** @return only if there is no such program */
bool become_tool(const std::string& endpoint, std::vector<std::string> words,
                 const std::array<int, 2>& out, const std::array<int, 2>& err) {
  setenv("FICON_ENDPOINT", endpoint.c_str(), 1);
  words.insert(words.begin(), FICONCTL);
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
  dup2(out[1], STDOUT_FILENO);
  dup2(err[1], STDERR_FILENO);
  execv(FICONCTL, arguments.data());
  return false;
}

}  // namespace

ToolProcess::ToolProcess(const std::string& endpoint, const std::vector<std::string>& words) {
  const auto out = make_pipe();
  const auto err = make_pipe();
  pid_ = start_child([&] { return become_tool(endpoint, words, out, err); });
  close(out[1]);
  close(err[1]);
  out_ = out[0];
  err_ = err[0];
}

ToolProcess::~ToolProcess() {
  if (pid_ <= 0) return;
  signal(SIGKILL);
  finish();
}

std::string ToolProcess::line() {
  std::string text;
  for (char c = 0; c != '\n' && read(out_, &c, 1) == 1;) text += c;
  return text;
}

void ToolProcess::signal(int number) const {
  kill(pid_, number);
}

Result ToolProcess::finish() {
  Result result{};
  read_both(out_, err_, result);
  close(out_);
  close(err_);
  int status = 0;
  waitpid(pid_, &status, 0);
  pid_ = -1;
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  return result;
}

Result Tool::operator()(const std::string& words) const {
  return ToolProcess(endpoint_, split(words)).finish();
}

Result Tool::run(const std::vector<std::string>& words) const {
  return ToolProcess(endpoint_, words).finish();
}

ToolProcess Tool::start(const std::string& words) const {
  return {endpoint_, split(words)};
}

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace ficon::test
