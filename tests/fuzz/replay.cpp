/**
 * Runs a target over its corpus without a fuzzer: each file as it stands, and cut off at some
 * places. Arguments: files, or directories of files.
 */
#include <filesystem>
#include <fstream>
#include <iterator>

#include "input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using namespace ficon::fuzz;

constexpr std::size_t kCuts = 16;

Bytes contents_of(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/** Of exactly this length, so that a sanitizer sees a read beyond it. */
void run(ByteView bytes) {
  const Bytes exact(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

void replay(const std::filesystem::path& path) {
  std::fprintf(stderr, "%s\n", path.c_str());
  const Bytes whole = contents_of(path);
  run(whole);
  const std::size_t step = whole.size() / kCuts + 1;
  for (std::size_t length = 0; length < whole.size(); length += step) {
    run(ByteView(whole).first(length));
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t files = 0;
  for (int i = 1; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      replay(argv[i]);
      ++files;
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      replay(entry.path());
      ++files;
    }
  }
  if (files == 0) std::fprintf(stderr, "nothing to replay\n");
  return files == 0 ? 1 : 0;
}
