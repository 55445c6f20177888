// The values of the integration store and the exports that read and write them.
#pragma once

#include <cstddef>
#include <string_view>

namespace store {

/// How a text getter handles its size and a missing or empty value.
enum class TextRead {
  kRestored,       // looks for the value in the backup and the start copy; without one KE_STORE_UNUSABLE
  kRequired,       // checks the size first; a missing value empties the buffer and is KE_STORE_UNUSABLE
  kOptional,       // a missing value is the empty text
  kOptionalSized,  // the same, but a size that is not positive is KE_MISSING_ARGUMENT
};

struct TextGetter {
  std::string_view exportName;
  const char* traceName;
  const char* section;
  const char* key;
  TextRead read;
};

inline constexpr TextGetter kTextGetters[] = {
    {"KE_GetAgentID", "KE_GetAgentID", "AGENT", "ID", TextRead::kRestored},
    {"KE_GetCustomerId", "KE_GetCustomerId", "INTEGRATION", "CUSTOMER", TextRead::kRestored},
    {"KE_GetCertificate", "KE_GetCertificate", "INTEGRATION", "CERTIFICATE", TextRead::kRestored},
    {"KE_GetDeviceID", "KE_GetDeviceID", "INTEGRATION", "DEVICEID", TextRead::kRequired},
    {"KE_GetUserRCM", "KE_GetUserRCM", "AGENTRCM", "USER", TextRead::kRequired},
    {"KE_GetPasswordRCM", "KE_GetPasswordRCM", "AGENTRCM", "PASSWORD", TextRead::kRequired},
    {"KE_GetAgentVersion", "KE_GetAgentVersion", "AGENT", "VERSION", TextRead::kOptional},
    {"KE_GetServerDate", "KE_GetServerDate", "INTEGRATION", "ServerDate", TextRead::kOptional},
    {"KE_GetContainer", "KE_GetContainer", "INTEGRATION", "CONTAINER", TextRead::kOptional},
    {"KE_GetLastErrorParam", "KE_GetLastInstallErrorEx", "INSTALL", "LastErrorParam", TextRead::kOptionalSized},
};

/// Which texts a setter refuses with KE_MISSING_ARGUMENT.
enum class TextRefused {
  kNullOrEmpty,
  kNull,
  kNone,  // null stores the empty text
};

struct TextSetter {
  std::string_view exportName;
  const char* section;
  const char* key;
  TextRefused refused;
};

inline constexpr TextSetter kTextSetters[] = {
    {"KE_SetAgentID", "AGENT", "ID", TextRefused::kNullOrEmpty},
    {"KE_SetAgentVersion", "AGENT", "VERSION", TextRefused::kNullOrEmpty},
    {"KE_SetServerDate", "INTEGRATION", "ServerDate", TextRefused::kNullOrEmpty},
    {"KE_SetContainer", "INTEGRATION", "CONTAINER", TextRefused::kNullOrEmpty},
    {"KE_SetCustomerId", "INTEGRATION", "CUSTOMER", TextRefused::kNull},
    {"KE_SetDeviceID", "INTEGRATION", "DEVICEID", TextRefused::kNull},
    {"KE_SetCertificate", "INTEGRATION", "CERTIFICATE", TextRefused::kNull},
    {"KE_SetUserRCM", "AGENTRCM", "USER", TextRefused::kNull},
    {"KE_SetPasswordRCM", "AGENTRCM", "PASSWORD", TextRefused::kNull},
    {"KE_SetLastErrorParam", "INSTALL", "LastErrorParam", TextRefused::kNone},
    {"KE_SetUninstallPass", "UNINSTALL", "PASSWORD", TextRefused::kNull},
};

/// The row of an export, found while compiling; a name without a row does not compile.
template <typename Row, std::size_t Count>
consteval const Row& RowOf(const Row (&table)[Count], std::string_view exportName) {
  for (const Row& row : table) {
    if (row.exportName == exportName) return row;
  }
  throw "no row of that name";
}

}  // namespace store
