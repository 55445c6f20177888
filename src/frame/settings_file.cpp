#include "frame/settings_file.h"

#include <optional>

#include "frame/module.h"
#include "frame/paths.h"
#include "frame/text.h"
#include "frame/trace.h"
#include "win/code_page.h"
#include "win/profile.h"

namespace frame {
namespace {

constexpr std::size_t kValueSize = 4100;  // with the terminating zero

// None when the module directory is unknown.
std::optional<std::string> PathOf(const char* file) {
  const auto directory = KeptModuleDirectory();
  if (directory.empty()) return std::nullopt;
  if (IsBlank(file)) return FileIn(directory, kSettingsFile);
  const bool isPath = LastBackslash(file, win::IsLeadByte) != std::string_view::npos;
  return isPath ? std::string(file) : FileIn(directory, file);
}

KE_RESULT Write(const char* section, const char* key, const char* value, const char* file) {
  if (section == nullptr) return KE_MISSING_ARGUMENT;
  const auto path = PathOf(file);
  if (!path) return KE_NOT_CREATED;
  win::WriteProfile(*path, section, key, value);
  return KE_SUCCESS;
}

}  // namespace

std::string GetMyConfigIniValue(const char* section, const char* key, const char* file) {
  const auto path = PathOf(file);
  if (!path) return {};
  return win::ReadProfile(*path, section, key, "", kValueSize);
}

KE_RESULT SetMyConfigIniValue(const char* section, const char* key, const char* value, const char* file) {
  Trace(kInfo, __func__, "Function start");
  const KE_RESULT result = Write(section, key, value, file);
  Trace(kInfo, __func__, "Function end. Return code (%i)", static_cast<int>(result));
  return result;
}

bool WriteProfileValue(const char* function, const std::string& file, const char* section, const char* key,
                       const char* value) noexcept {
  if (win::WriteProfile(file, section, key, value)) return true;
  Trace(kDetail, function, "Could not write %s, section %s, key %s. Error %d", file.c_str(), section,
        key ? key : "(all)", static_cast<int>(GetLastError()));
  return false;
}

}  // namespace frame
