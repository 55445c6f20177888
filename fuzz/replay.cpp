// Runs a fuzzer's function over the files of folders: a fuzzer without its engine, for compilers that have none.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzzer.h"

/// Ends with exit code 1 when a folder has no file; an input that breaks something ends the program where it does, and
/// is the last one named.
int main(int count, char** arguments) {
  for (int i = 1; i < count; ++i) {
    unsigned files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(arguments[i])) {
      std::printf("%s\n", entry.path().c_str());
      std::fflush(stdout);
      std::ifstream file(entry.path(), std::ios::binary);
      const std::string bytes{std::istreambuf_iterator<char>(file), {}};
      LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
      ++files;
    }
    std::printf("%u inputs of %s\n", files, arguments[i]);
    if (files == 0) return 1;
  }
  return count > 1 ? 0 : 1;
}
