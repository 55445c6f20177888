#include "siblings/settings_file.h"

#include <optional>

#include "text/paths.h"
#include "text/text.h"
#include "trace/trace.h"
#include "win/module.h"
#include "win/profile.h"

namespace siblings {

namespace {

constexpr std::size_t kValueSize = 4100;  // with the terminating zero

// None when the module directory is unknown.
std::optional<std::string> PathOf(const char* file) {
  const auto folder = win::FolderOf("");
  if (!folder) return std::nullopt;
  if (text::IsBlank(file)) return *folder + text::kSettingsFile;
  const bool isPath = text::LastBackslash(file, win::IsLeadByte) != std::string_view::npos;
  return isPath ? std::string(file) : *folder + file;
}

}  // namespace

std::string GetMyConfigIniValue(const char* section, const char* key, const char* file) {
  const auto path = PathOf(file);
  if (!path) return {};
  return win::ReadProfile(*path, section, key, "", kValueSize);
}

KE_RESULT SetMyConfigIniValue(const char* section, const char* key, const char* value, const char* file) {
  trace::Trace(trace::kInfo, __func__, "Function start");
  const auto path = section ? PathOf(file) : std::nullopt;
  if (path) win::WriteProfile(*path, section, key, value);
  const KE_RESULT result = path ? KE_SUCCESS : section ? KE_NOT_CREATED : KE_MISSING_ARGUMENT;
  trace::Trace(trace::kInfo, __func__, "Function end. Return code (%i)", static_cast<int>(result));
  return result;
}

bool WriteProfileValue(const char* function, const std::string& file, const char* section, const char* key,
                       const char* value) noexcept {
  if (win::WriteProfile(file, section, key, value)) return true;
  trace::Trace(trace::kDetail, function, "Could not write %s, section %s, key %s. Error %d", file.c_str(), section,
               key ? key : "(all)", static_cast<int>(GetLastError()));
  return false;
}

}  // namespace siblings
