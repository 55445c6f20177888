#include "frame/paths.h"

#include <doctest/doctest.h>

TEST_CASE("paths: folders derive from the module directory without being canonicalised") {
  const auto directory = frame::FolderOf("C:\\A\\B\\KELUtils.dll");
  CHECK(directory == "C:\\A\\B");
  CHECK(frame::OwnFolder(directory) == "C:\\A\\B\\");
  CHECK(frame::CommonFolder(directory) == "C:\\A\\B\\..\\Common\\");
  CHECK(frame::SiblingFolder(directory, "KESAgent") == "C:\\A\\B\\..\\KESAgent\\");
  CHECK(frame::FileIn(directory, "KELUTILS.INI") == "C:\\A\\B\\KELUTILS.INI");
  CHECK(frame::FolderOf("KELUtils.dll").empty());
}
