// Where the files that are measured lie.
#pragma once

#include <windows.h>

#include <filesystem>

namespace bench {

/// The folder of a build that this program is in.
inline std::filesystem::path BuildFolder() {
  wchar_t name[MAX_PATH];
  GetModuleFileNameW(nullptr, name, MAX_PATH);
  return std::filesystem::path(name).parent_path().parent_path();
}

}  // namespace bench
