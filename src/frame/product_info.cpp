#include "frame/product_info.h"

#include <windows.h>

#include <cstring>
#include <string>

#include "win/registry.h"

namespace kelcrt {
namespace {

constexpr char kTestingPathVariable[] = "VOSK_TESTING_INSTALLPATH";
constexpr char kDefaultProductName[] = "Tavrin Security Agent";
constexpr char kSetupKey[] = "SOFTWARE\\Tavrin Security\\SetupEx\\Orvane";
constexpr char kClientSystemKey[] = "SOFTWARE\\Tavrin Security\\Orvane\\ClientSystem";

}  // namespace

CProductInfo::CProductInfo() {
  if (GetEnvironmentVariableA(kTestingPathVariable, testingInstallPath_.get(), kSize) >= kSize) {
    testingInstallPath_[0] = '\0';
  }
  const auto name = win::ReadTextValue(HKEY_LOCAL_MACHINE, kSetupKey, "ProductName", kSize - 1);
  strcpy(productName_.get(), name && !name->empty() ? name->c_str() : kDefaultProductName);
  if (const auto path = win::ReadTextValue(HKEY_LOCAL_MACHINE, kClientSystemKey, "InstallPath", kSize - 1)) {
    strcpy(installPath_.get(), path->c_str());
  }
}

const char* CProductInfo::GetInstallPath() const noexcept {
  return testingInstallPath_[0] != '\0' ? testingInstallPath_.get() : installPath_.get();
}

}  // namespace kelcrt
