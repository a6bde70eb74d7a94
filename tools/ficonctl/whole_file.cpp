#include "whole_file.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "failure.h"

namespace ficon::ctl {

std::string read_file(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::string contents;
  std::array<char, 4096> block;
  while (in.read(block.data(), block.size()) || in.gcount() != 0) {
    contents.append(block.data(), static_cast<std::size_t>(in.gcount()));
  }
  if (!in.eof()) {
    throw Failure(0, "not-read", "cannot read " + path + ": " + std::strerror(errno),
                  "name a file that is there and readable for you");
  }
  return contents;
}

void write_file(const std::string& path, std::string_view contents) {
  std::ofstream out(path, std::ios::binary);
  out << contents;
  if (!out.flush()) {
    throw Failure(0, "not-written", "cannot write " + path + ": " + std::strerror(errno),
                  "name a file in a directory that you may write to");
  }
}

}  // namespace ficon::ctl
