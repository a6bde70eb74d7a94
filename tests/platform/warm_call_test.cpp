/** A warm call makes two system calls: counted from outside, by a tracer. */
#include <doctest/doctest.h>
#include <platform/mts.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>

#include "child.h"
#include "fake_daemon.h"

using namespace ficon::test;

namespace {

constexpr long kMarker = SYS_getppid;  // called where counting begins and ends
constexpr int kCalls = 10;

bool answer(FakeDaemon& daemon) {
  daemon.accept();
  for (;;) {
    const Bytes request = daemon.receive();
    if (request.size() < 32) return true;
    daemon.reply(static_cast<std::uint32_t>(request[11]), hex("0102030405060708"));
  }
}

bool call(mts_handle_t handle, std::uint32_t wait) {
  const mts_send_opts_t send_options{{1, 1}};
  mts_msg_ref_t request{}, reply{};
  if (mts_send(handle, 0xfe000000, 101, 7855, "payload", 7, &request, 0, &send_options) != 0) {
    return false;
  }
  const mts_recv_opts_t options{{1, 0, wait, mts_rr_token_get(&request)}};
  mts_drop(handle, &request);
  if (mts_recv(handle, &reply, &options) != 0) return false;
  return mts_drop(handle, &reply) == 0;
}

bool make_calls(const std::string& endpoint, std::uint32_t wait) {
  Handle handle(endpoint);
  bool good = call(handle, wait) && call(handle, wait);
  ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
  raise(SIGSTOP);
  syscall(kMarker);
  for (int i = 0; i < kCalls; ++i) good = good && call(handle, wait);
  syscall(kMarker);
  return good;
}

/** System calls between the two markers, by number. */
std::map<long, int> trace(pid_t child) {
  std::map<long, int> calls;
  int status = 0, markers = 0;
  bool entering = true;
  waitpid(child, &status, 0);
  ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD);
  for (;;) {
    if (ptrace(PTRACE_SYSCALL, child, nullptr, nullptr) != 0) break;
    if (waitpid(child, &status, 0) < 0 || !WIFSTOPPED(status)) break;
    if (WSTOPSIG(status) != (SIGTRAP | 0x80)) continue;
    if (entering) {
      __ptrace_syscall_info info{};
      ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info);
      const long number = static_cast<long>(info.entry.nr);
      if (number == kMarker) {
        ++markers;
      } else if (markers == 1) {
        ++calls[number];
      }
    }
    entering = !entering;
  }
  CHECK(markers == 2);
  CHECK(WIFEXITED(status));
  CHECK(WEXITSTATUS(status) == 0);
  return calls;
}

}  // namespace

TEST_CASE("transport: a warm call is one send and one receive, with a wait and without") {
  for (const std::uint32_t wait : {0U, 2000U}) {
    CAPTURE(wait);
    FakeDaemon daemon;
    daemon.listen();
    const pid_t daemon_process = start_child([&] { return answer(daemon); });
    const pid_t child = start_child([&] { return make_calls(daemon.endpoint(), wait); });
    std::map<long, int> calls = trace(child);
    kill(daemon_process, SIGKILL);
    waitpid(daemon_process, nullptr, 0);
    calls.erase(SYS_clock_gettime);  // seldom a system call, and then the machine's affair
    CHECK(calls == std::map<long, int>{{SYS_sendto, kCalls}, {SYS_recvfrom, kCalls}});
  }
}
