// Loading and unloading the library, compared with an idle DLL of the same size; and the size of the library.
#include <windows.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "bench/build_folder.h"
#include "bench/measure.h"
#include "win/owner.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kRounds = 31;
constexpr int kLoadsOfARound = 20;
constexpr double kLoadLimit = 1.20;
constexpr std::uintmax_t kSizeLimit = std::uintmax_t{400} * 1024;  // bytes

// Copies the idle DLL and pads the copy to the size of the library.
void MakeIdleLibrary(const fs::path& path, std::uintmax_t size) {
  fs::copy_file(bench::BuildFolder() / "bench" / "idle_library.dll", path, fs::copy_options::overwrite_existing);
  const std::uintmax_t own = fs::file_size(path);
  std::printf("idle DLL: %u bytes, filled up to those of the library\n", static_cast<unsigned>(own));
  std::ofstream(path, std::ios::binary | std::ios::app) << std::string(own < size ? size - own : 0, '\x5a');
}

bool MeasureSize(std::uintmax_t size) {
  const bool met = size <= kSizeLimit;
  std::printf("KELUtils.dll: %u bytes (at most %u: %s)\n", static_cast<unsigned>(size),
              static_cast<unsigned>(kSizeLimit), met ? "met" : "NOT MET");
  return met;
}

bool MeasureLoading(const fs::path& library, const fs::path& idle, const char* host) {
  const auto loadAll = [](const fs::path& path) {
    for (int load = 0; load < kLoadsOfARound; ++load) FreeLibrary(LoadLibraryW(path.c_str()));
  };
  std::printf("load and unload, %d times a round, %s:\n", kLoadsOfARound, host);
  const auto nothing = [] {};
  return bench::Compare(bench::Side{"KELUtils.dll", nothing, [&] { loadAll(library); }},
                        bench::Side{"idle DLL", nothing, [&] { loadAll(idle); }}, kRounds, kLoadLimit);
}

}  // namespace

int main() {
  const fs::path library = bench::BuildFolder() / "bin" / "KELUtils.dll";
  const fs::path idle = fs::temp_directory_path() / "kelutils-bench-idle.dll";
  const bool small = MeasureSize(fs::file_size(library));
  MakeIdleLibrary(idle, fs::file_size(library));
  MeasureLoading(library, idle, "in a process without Shell32");
  const win::ModuleHandle shell(LoadLibraryW(L"Shell32.dll"));
  const bool fast = MeasureLoading(library, idle, "in a process that has Shell32, as most have");
  fs::remove(idle);
  return small && fast ? 0 : 1;
}
