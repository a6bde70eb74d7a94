/** Children of a test, which never outlive it. */
#pragma once

#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace ficon::test {

/**
 * Runs `work`, which says whether all went well, in a child: its exit status is 0 or 1.
 *
 * The child is killed when its parent ends, however it ends: a child that outlived a test that
 * aborted would keep the test's output open, and ctest waits for the end of that.
 */
template <class Work>
pid_t start_child(Work work) {
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child != 0) return child;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(1);  // it ended before we said so
  try {
    _exit(work() ? 0 : 1);
  } catch (...) {
    _exit(1);  // a failed assertion, reported where it happened; the other tests are the parent's
  }
}

}  // namespace ficon::test
