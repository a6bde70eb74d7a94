/** Runs the tests; reports on the real standard output while a test's own is captured. */
#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest/doctest.h>
#include <unistd.h>

#include <ostream>
#include <streambuf>

#include "double/console_capture.h"

namespace {

class RealOutput : public std::streambuf {
 protected:
  int overflow(int character) override {
    const char byte = static_cast<char>(character);
    return write(ficon::test::real_output(), &byte, 1) == 1 ? character : EOF;
  }
  std::streamsize xsputn(const char* text, std::streamsize count) override {
    return write(ficon::test::real_output(), text, static_cast<std::size_t>(count));
  }
};

}  // namespace

int main(int count, char** arguments) {
  RealOutput buffer;
  std::ostream output(&buffer);
  doctest::Context context(count, arguments);
  context.setCout(&output);
  return context.run();
}
