#include <doctest/doctest.h>

#include <vector>

#include "support/product_tree.h"

TEST_CASE("version resource: each field, with the version of the build") {
  const std::string dll = (support::BuildFolder() / "bin/KELUtils.dll").string();
  std::vector<char> resource(GetFileVersionInfoSizeA(dll.c_str(), nullptr));
  REQUIRE(GetFileVersionInfoA(dll.c_str(), 0, static_cast<DWORD>(resource.size()), resource.data()));
  void* data = nullptr;
  UINT size = 0;

  REQUIRE(VerQueryValueA(resource.data(), "\\", &data, &size));
  const auto& fixed = *static_cast<const VS_FIXEDFILEINFO*>(data);
  constexpr DWORD high = VERSION_MAJOR << 16 | VERSION_MINOR, low = VERSION_PATCH << 16;
  CHECK((fixed.dwFileVersionMS == high && fixed.dwFileVersionLS == low));
  CHECK((fixed.dwProductVersionMS == high && fixed.dwProductVersionLS == low));
  CHECK((fixed.dwFileType == VFT_DLL && fixed.dwFileOS == VOS_NT_WINDOWS32 && fixed.dwFileFlags == 0));

  REQUIRE(VerQueryValueA(resource.data(), "\\VarFileInfo\\Translation", &data, &size));
  CHECK(*static_cast<const DWORD*>(data) == 0x04E40409);  // code page and language, as in the path below

  const std::string version =
      std::to_string(VERSION_MAJOR) + "." + std::to_string(VERSION_MINOR) + "." + std::to_string(VERSION_PATCH);
  const struct {
    const char* field;
    std::string value;
  } rows[] = {{"CompanyName", "Tavrin Security"},
              {"FileDescription", "Utility library of a managed endpoint-security agent"},
              {"FileVersion", version},
              {"InternalName", "KELUtils"},
              {"LegalCopyright", "Copyright (c) 2026 The KELUtils authors"},
              {"OriginalFilename", "KELUtils.dll"},
              {"ProductName", "Tavrin Security Agent"},
              {"ProductVersion", version}};
  for (const auto& row : rows) {
    CAPTURE(row.field);
    const std::string name = std::string("\\StringFileInfo\\040904E4\\") + row.field;
    REQUIRE(VerQueryValueA(resource.data(), name.c_str(), &data, &size));
    CHECK(static_cast<const char*>(data) == row.value);
  }
}
