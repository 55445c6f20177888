#include "bench/store_tree.h"

#include <stdexcept>

#include "KELUtils.h"
#include "bench/build_folder.h"

namespace bench {

namespace fs = std::filesystem;

StoreTree::StoreTree()
    : root_(fs::temp_directory_path() / ("kelutils-bench-" + std::to_string(GetCurrentProcessId()))) {
  const fs::path build = BuildFolder();
  for (const char* folder : {"KELUtils", "Common", "KESAgent"}) fs::create_directories(root_ / folder);
  const auto copy = fs::copy_options::overwrite_existing;
  fs::copy_file(build / "bin" / "KELUtils.dll", root_ / "KELUtils" / "KELUtils.dll", copy);
  fs::copy_file(build / "devkit" / "ApiCr.dll", root_ / "KELUtils" / "ApiCr.dll", copy);
  fs::copy_file(build / "devkit" / "TvLogSys.dll", root_ / "Common" / "TvLogSys.dll", copy);
  library_.Reset(LoadLibraryW((root_ / "KELUtils" / "KELUtils.dll").c_str()));
  if (!library_) throw std::runtime_error("the library cannot be loaded");
  for (const char* name : {"KE_SetAgentID", "KE_SetCustomerId", "KE_SetCertificate", "KE_SetAgentVersion"}) {
    if (Export<KE_RESULT KE_API(const char*)>(name)("c0ffee00-1234-4321-9876-00d0d0d0d0d0") != KE_SUCCESS) {
      throw std::runtime_error("the store cannot be written");
    }
  }
}

StoreTree::~StoreTree() {
  library_.Reset();
  std::error_code ignored;
  fs::remove_all(root_, ignored);
}

}  // namespace bench
