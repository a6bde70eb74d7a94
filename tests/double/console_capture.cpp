#include "double/console_capture.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace ficon::test {
namespace {

int file_descriptor() {
  static std::FILE* const file = std::tmpfile();
  if (file == nullptr) std::abort();
  return fileno(file);
}

}  // namespace

int real_output() {
  static const int descriptor = dup(STDOUT_FILENO);
  return descriptor;
}

void begin_capture() {
  real_output();
  std::fflush(stdout);
  if (ftruncate(file_descriptor(), 0) != 0 || lseek(file_descriptor(), 0, SEEK_SET) != 0 ||
      dup2(file_descriptor(), STDOUT_FILENO) < 0) {
    std::abort();
  }
}

std::string captured() {
  std::fflush(stdout);
  std::string text;
  char block[4096];
  for (ssize_t n;
       (n = pread(file_descriptor(), block, sizeof block, static_cast<off_t>(text.size()))) > 0;) {
    text.append(block, static_cast<std::size_t>(n));
  }
  return text;
}

void end_capture() {
  std::fflush(stdout);
  dup2(real_output(), STDOUT_FILENO);
}

}  // namespace ficon::test
