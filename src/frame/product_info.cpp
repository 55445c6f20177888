#include "frame/product_info.h"

#include <windows.h>

#include <string>
#include <string_view>

#include "win/registry.h"

namespace kelcrt {
namespace {

constexpr std::string_view kDefaultProductName = "Tavrin Security Agent";
constexpr char kSetupKey[] = "SOFTWARE\\Tavrin Security\\SetupEx\\Orvane";
constexpr char kClientSystemKey[] = "SOFTWARE\\Tavrin Security\\Orvane\\ClientSystem";

}  // namespace

CProductInfo::CProductInfo(const char* testingPathVariable) {
  if (*testingPathVariable != '\0' &&
      GetEnvironmentVariableA(testingPathVariable, testingInstallPath_.get(), kSize) >= kSize) {
    testingInstallPath_[0] = '\0';
  }
  const auto name = win::ReadTextValue(HKEY_LOCAL_MACHINE, kSetupKey, "ProductName", kSize - 1);
  (name && !name->empty() ? std::string_view(*name) : kDefaultProductName).copy(productName_.get(), kSize - 1);
  if (const auto path = win::ReadTextValue(HKEY_LOCAL_MACHINE, kClientSystemKey, "InstallPath", kSize - 1)) {
    path->copy(installPath_.get(), kSize - 1);
  }
}

const char* CProductInfo::GetInstallPath() const noexcept {
  return testingInstallPath_[0] != '\0' ? testingInstallPath_.get() : installPath_.get();
}

}  // namespace kelcrt
