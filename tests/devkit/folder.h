// A folder for the files of one test.
#pragma once

#include <filesystem>
#include <iterator>
#include <string>

#include "support/product_tree.h"

/// A new empty folder, removed at the end of the scope.
class Folder {
 public:
  Folder() = default;
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::string operator/(const char* name) const { return (path_ / name).string(); }
  auto FileCount() const { return std::distance(std::filesystem::directory_iterator(path_), {}); }

 private:
  const std::filesystem::path path_ = support::NewFolder();
};
