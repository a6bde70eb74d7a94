/** Standard output into a file while a test runs; the test program reports on a copy of the real
 * one. */
#pragma once

#include <string>

namespace ficon::test {

/** A descriptor of the real standard output, as it was when the program began. */
int real_output();

void begin_capture();
std::string captured();
void end_capture();

}  // namespace ficon::test
