/** What the command line of fcd-emulator says. */
#pragma once

#include <set>
#include <string>

#include "server/limits.h"
#include "server/log.h"

namespace ficon::emulator {

struct Options {
  std::string socket;
  std::string store;
  std::string chassis;
  LogLevel log_level = LogLevel::kInfo;
  Limits limits;
  std::size_t history = 8192;
  std::set<unsigned> users;
};

/** Fills the options; ends the process for --help, --version and usage errors (status 2). */
Options parse_options(int argc, char** argv);

}  // namespace ficon::emulator
