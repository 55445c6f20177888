#include "frame/product_info.h"

#include <doctest/doctest.h>
#include <windows.h>

#include <string>

#include "support/product_tree.h"

TEST_CASE("product info: the registry's values within their bounds, and the testing path before them") {
  const auto cleared = [] { return RegDeleteTreeA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Tavrin Security"); };
  const auto set = [](const char* key, const char* name, const std::string& text, DWORD type = REG_SZ) {
    const std::string path = std::string("SOFTWARE\\Tavrin Security\\") + key;
    REQUIRE(RegSetKeyValueA(HKEY_LOCAL_MACHINE, path.c_str(), name, type, text.c_str(), text.size() + 1) == 0);
  };
  cleared();
  CHECK(std::string(kelcrt::CProductInfo().GetInstallPath()).empty());
  for (const char* name : {"", "Orvane Endpoint"}) {
    set("SetupEx\\Orvane", "ProductName", name);
    CHECK(std::string(kelcrt::CProductInfo().GetProductName()) == (*name ? name : "Tavrin Security Agent"));
  }
  for (const size_t length : {259, 260}) {
    set("Orvane\\ClientSystem", "InstallPath", std::string(length, 'p'));
    CHECK(std::string(kelcrt::CProductInfo().GetInstallPath()) == (length < 260 ? std::string(length, 'p') : ""));
  }
  set("Orvane\\ClientSystem", "InstallPath", "123", REG_DWORD);
  CHECK(std::string(kelcrt::CProductInfo().GetInstallPath()).empty());
  set("Orvane\\ClientSystem", "InstallPath", "C:\\Orvane\\");
  for (const auto& [variable, path] : {std::pair<std::string, std::string>{"D:\\Tree\\", "D:\\Tree\\"},
                                       {std::string(260, 'p'), "C:\\Orvane\\"},
                                       {"", "C:\\Orvane\\"}}) {
    const support::EnvironmentVariable testing("VOSK_TESTING_INSTALLPATH", variable.c_str());
    CHECK(std::string(kelcrt::CProductInfo().GetInstallPath()) == path);
  }
  CHECK(cleared() == 0);
}
