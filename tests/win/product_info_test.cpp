#include "win/module.h"

#include <doctest/doctest.h>
#include <windows.h>

#include <string>

#include "support/product_tree.h"

TEST_CASE("product info: the registry's values within their bounds, and the testing path before them") {
  const auto cleared = [] { return RegDeleteTreeA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Tavrin Security"); };
  const auto set = [](const char* key, const char* name, const std::string& text, DWORD type) {
    const std::string path = std::string("SOFTWARE\\Tavrin Security\\") + key;
    REQUIRE(RegSetKeyValueA(HKEY_LOCAL_MACHINE, path.c_str(), name, type, text.c_str(), text.size() + 1) == 0);
  };
  cleared();
  CHECK(std::string(kelcrt::CProductInfo().GetInstallPath()).empty());
  for (const char* name : {"", "Orvane Endpoint"}) {
    set("SetupEx\\Orvane", "ProductName", name, REG_SZ);
    CHECK(std::string(kelcrt::CProductInfo().GetProductName()) == (*name ? name : "Tavrin Security Agent"));
  }
  const std::string longName(300, 'N'), fits(259, 'p');
  const support::EnvironmentVariable drive("KE_DRIVE", "C:"), named(longName.c_str(), "C:\\Long\\");
  const support::EnvironmentVariable most("KE_MOST", fits.substr(1).c_str());
  const struct {
    DWORD type;
    std::string stored, path;
  } rows[] = {{REG_SZ, fits, fits},
              {REG_SZ, fits + "p", ""},
              {REG_DWORD, "123", ""},
              {REG_EXPAND_SZ, "%KE_NONE%\\A\\", "%KE_NONE%\\A\\"},
              {REG_EXPAND_SZ, "%" + longName + "%", "C:\\Long\\"},
              {REG_EXPAND_SZ, "p%KE_MOST%", fits},
              {REG_EXPAND_SZ, "pp%KE_MOST%", ""},
              {REG_EXPAND_SZ, std::string(40000, 'p'), ""},
              {REG_EXPAND_SZ, "%KE_DRIVE%\\Orvane\\", "C:\\Orvane\\"}};
  for (const auto& row : rows) {
    set("Orvane\\ClientSystem", "InstallPath", row.stored, row.type);
    CHECK(std::string(kelcrt::CProductInfo().GetInstallPath()) == row.path);
  }
  constexpr char kVariable[] = "VOSK_TESTING_INSTALLPATH";
  for (const auto& [value, path] : {std::pair<std::string, std::string>{"D:\\Tree\\", "D:\\Tree\\"},
                                    {std::string(260, 'p'), "C:\\Orvane\\"},
                                    {"", "C:\\Orvane\\"}}) {
    const support::EnvironmentVariable testing(kVariable, value.c_str());
    CHECK(std::string(kelcrt::CProductInfo(kVariable).GetInstallPath()) == path);
    CHECK(std::string(kelcrt::CProductInfo("").GetInstallPath()) == "C:\\Orvane\\");  // as in a build for customers
  }
  CHECK(cleared() == 0);
}
