// A product tree whose store holds an identity.
#pragma once

#include <windows.h>

#include <filesystem>
#include <string>

#include "win/owner.h"

namespace bench {

/// The built DLL, loaded from a temporary folder named after this process, with its crypto module and an identity in
/// its store. One at a time.
class StoreTree {
 public:
  StoreTree();
  ~StoreTree();
  StoreTree(const StoreTree&) = delete;
  StoreTree& operator=(const StoreTree&) = delete;

  /// Removes the trace library from the tree.
  void RemoveTraceLibrary() const { std::filesystem::remove(root_ / "Common" / "TvLogSys.dll"); }

  /// The folder of the library, as the library names it.
  std::string Directory() const { return (root_ / "KELUtils").string(); }

  template <typename Function>
  Function* Export(const char* name) const {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(library_.Get(), name)));
  }

 private:
  std::filesystem::path root_;
  win::ModuleHandle library_;
};

}  // namespace bench
