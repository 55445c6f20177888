// The values of the store: what kelctl calls them and which exports read and write them.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "KELUtils.h"

namespace kelctl {

using TextGetter = decltype(KE_GetAgentID);
using NumberGetter = decltype(KE_GetInstallState);
using TextSetter = decltype(KE_SetAgentID);
using NumberSetter = decltype(KE_SetLastInstallError);
using StateSetter = decltype(KE_SetInstallState);
using PropertySetter = decltype(KE_SetPropertyInIntegra);

enum class GetterType { kText, kNumber };
enum class SetterType { kNone, kText, kNumber, kState };

/// The name of an export with the type of its prototype.
struct Getter {
  const char* name;
  GetterType type;
};
struct Setter {
  const char* name;
  SetterType type;
};

/// One value of the store.
struct StoreValue {
  const char* name;
  Getter getter;
  Setter setter;
  bool secret = false;  // masked unless the user asks to see it
  bool yesNo = false;   // a number that is 1 or 0 and means yes or no
};

inline constexpr char kPropertySetter[] = "KE_SetPropertyInIntegra";

/// All values, in the order in which they are shown.
std::span<const StoreValue> StoreValues();

/// The value of that name. Throws UsageError that lists the names when there is none.
const StoreValue& FindStoreValue(std::string_view name);

/// The names of all values, or of those that can be set, separated by ", ".
std::string StoreValueNames();
std::string WritableStoreValueNames();

}  // namespace kelctl
