#include "frame/product_info.h"

#include <doctest/doctest.h>
#include <windows.h>

#include <string>

#include "support/product_tree.h"

namespace {

constexpr char kSetupKey[] = "SOFTWARE\\Tavrin Security\\SetupEx\\Orvane";
constexpr char kClientKey[] = "SOFTWARE\\Tavrin Security\\Orvane\\ClientSystem";

void SetText(const char* key, const char* name, const std::string& text, DWORD type = REG_SZ) {
  REQUIRE(RegSetKeyValueA(HKEY_LOCAL_MACHINE, key, name, type, text.c_str(), static_cast<DWORD>(text.size() + 1)) == 0);
}

// Removes the product's keys before and after a case.
struct CleanRegistry {
  CleanRegistry() { Clean(); }
  ~CleanRegistry() { Clean(); }
  static void Clean() { RegDeleteTreeA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Tavrin Security"); }
};

std::string InstallPath() { return kelcrt::CProductInfo().GetInstallPath(); }
std::string ProductName() { return kelcrt::CProductInfo().GetProductName(); }

}  // namespace

TEST_CASE("product info: the registry's values, within their bounds") {
  const CleanRegistry clean;
  CHECK(ProductName() == "Tavrin Security Agent");
  CHECK(InstallPath().empty());

  SetText(kSetupKey, "ProductName", "");
  CHECK(ProductName() == "Tavrin Security Agent");
  SetText(kSetupKey, "ProductName", "Orvane Endpoint");
  CHECK(ProductName() == "Orvane Endpoint");

  SetText(kClientKey, "InstallPath", "C:\\Orvane\\");
  CHECK(InstallPath() == "C:\\Orvane\\");
  SetText(kClientKey, "InstallPath", std::string(259, 'p'));
  CHECK(InstallPath() == std::string(259, 'p'));
  SetText(kClientKey, "InstallPath", std::string(260, 'p'));
  CHECK(InstallPath().empty());
  SetText(kClientKey, "InstallPath", "123", REG_DWORD);
  CHECK(InstallPath().empty());
}

TEST_CASE("product info: the testing path in the environment goes before the registry's") {
  const CleanRegistry clean;
  SetText(kClientKey, "InstallPath", "C:\\Orvane\\");
  {
    const support::EnvironmentVariable path("VOSK_TESTING_INSTALLPATH", "D:\\Tree\\");
    CHECK(InstallPath() == "D:\\Tree\\");
  }
  {
    const support::EnvironmentVariable tooLong("VOSK_TESTING_INSTALLPATH", std::string(260, 'p').c_str());
    CHECK(InstallPath() == "C:\\Orvane\\");
  }
}
