#include <doctest/doctest.h>

#include "siblings/settings_file.h"
#include "support/inner_module.h"

using namespace siblings;

TEST_CASE("settings file: its place, a value's length, and the removal of keys") {
  const support::ProductTree tree;
  const support::InnerModule module(tree);
  const std::string full = tree.Path("KESAgent/Full.ini").string();
  const char* files[][2] = {
      {"", "KELUtils/KELUTILS.INI"}, {"Other.ini", "KELUtils/Other.ini"}, {full.c_str(), "KESAgent/Full.ini"}};
  for (const auto& [file, place] : files) {
    CHECK(SetMyConfigIniValue(nullptr, "K", "v", file) == KE_MISSING_ARGUMENT);
    CHECK_FALSE(std::filesystem::exists(tree.Path(place)));
    CHECK(SetMyConfigIniValue("S", "K", std::string(5000, 'v').c_str(), file) == KE_SUCCESS);
    CHECK(std::filesystem::exists(tree.Path(place)));
    CHECK(GetMyConfigIniValue("S", "K", file) == std::string(4099, 'v'));
    // What Windows may crash on: the write fails, which is not reported, and the read finds nothing.
    CHECK(SetMyConfigIniValue("S", std::string(32767, 'k').c_str(), "v", file) == KE_SUCCESS);
    CHECK(std::filesystem::file_size(tree.Path(place)) == 5000 + std::string("[S]\r\nK=\r\n").size());
    CHECK(GetMyConfigIniValue(std::string(32767, 's').c_str(), "K", file).empty());
    CHECK(SetMyConfigIniValue("S", "K", nullptr, file) == KE_SUCCESS);
    CHECK(GetMyConfigIniValue("S", "K", file).empty());
  }
}
