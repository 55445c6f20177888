#include "store_values.h"

#include <algorithm>

#include "errors.h"

namespace kelctl {
namespace {

// The type of a column is that of the prototype: a row whose export has any other type does not compile.
template <typename Function>
consteval GetterType TypeOfGetter() {
  if (std::is_same_v<Function, TextGetter>) return GetterType::kText;
  if (std::is_same_v<Function, NumberGetter>) return GetterType::kNumber;
  throw "not the type of a getter";
}

template <typename Function>
consteval SetterType TypeOfSetter() {
  if (std::is_same_v<Function, TextSetter>) return SetterType::kText;
  if (std::is_same_v<Function, NumberSetter>) return SetterType::kNumber;
  if (std::is_same_v<Function, StateSetter>) return SetterType::kState;
  throw "not the type of a setter";
}

#define GET(function) \
  { #function, TypeOfGetter < decltype(function)>() }
#define SET(function) \
  { #function, TypeOfSetter < decltype(function)>() }

constexpr Setter kReadOnly = {nullptr, SetterType::kNone};

constexpr StoreValue kStoreValues[] = {
    {"agent-id", GET(KE_GetAgentID), SET(KE_SetAgentID)},
    {"agent-version", GET(KE_GetAgentVersion), SET(KE_SetAgentVersion)},
    {"customer-id", GET(KE_GetCustomerId), SET(KE_SetCustomerId)},
    {"device-id", GET(KE_GetDeviceID), SET(KE_SetDeviceID)},
    {.name = "certificate", .getter = GET(KE_GetCertificate), .setter = SET(KE_SetCertificate), .secret = true},
    {"container", GET(KE_GetContainer), SET(KE_SetContainer)},
    {"server-date", GET(KE_GetServerDate), SET(KE_SetServerDate)},
    {"rcm-user", GET(KE_GetUserRCM), SET(KE_SetUserRCM)},
    {.name = "rcm-password", .getter = GET(KE_GetPasswordRCM), .setter = SET(KE_SetPasswordRCM), .secret = true},
    {"install-state", GET(KE_GetInstallState), SET(KE_SetInstallState)},
    {"last-install-error", GET(KE_GetLastInstallError), SET(KE_SetLastInstallError)},
    {"last-error-param", GET(KE_GetLastErrorParam), SET(KE_SetLastErrorParam)},
    {.name = "install-complete", .getter = GET(KE_IsInstallComplete), .setter = kReadOnly, .yesNo = true},
    {.name = "integrated", .getter = GET(KE_IsIntegrated), .setter = kReadOnly, .yesNo = true},
};

#undef GET
#undef SET

template <typename Choose>
std::string NamesOf(Choose choose) {
  std::string names;
  for (const StoreValue& value : kStoreValues) {
    if (choose(value)) names += (names.empty() ? "" : ", ") + std::string(value.name);
  }
  return names;
}

}  // namespace

std::span<const StoreValue> StoreValues() { return kStoreValues; }

const StoreValue& FindStoreValue(std::string_view name) {
  const auto* const row = std::ranges::find(kStoreValues, name, &StoreValue::name);
  if (row == std::end(kStoreValues)) {
    throw UsageError("there is no value \"" + std::string(name) + "\"; the names are " + StoreValueNames());
  }
  return *row;
}

std::string StoreValueNames() {
  return NamesOf([](const StoreValue&) { return true; });
}

std::string WritableStoreValueNames() {
  return NamesOf([](const StoreValue& value) { return value.setter.type != SetterType::kNone; });
}

}  // namespace kelctl
