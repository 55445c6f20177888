#include "settings/own_settings.h"

#include <cstring>

#include "settings/numbers.h"
#include "sharedfile/module_path.h"
#include "win/owner.h"

namespace settings {

Reading ReadText(const char* section, const char* key, char* text, std::size_t size) noexcept {
  const win::KeptLastError kept;
  text[0] = '\0';
  char path[MAX_PATH];
  if (!sharedfile::FindWithExtension(".ini", path)) return Reading::kUnusable;
  // The platform cuts what does not fit: one byte more than the longest text shows that it did.
  char value[kLongestText + 2];
  const win::WipeAtEnd wipe(value, sizeof value);
  const std::size_t length = GetPrivateProfileStringA(section, key, "", value, sizeof value, path);
  if (length == 0) return Reading::kMissing;
  if (length >= size) return Reading::kUnusable;
  std::memcpy(text, value, length + 1);
  return Reading::kFound;
}

std::optional<std::int32_t> ReadNumber(const char* section, const char* key, std::int32_t fallback, std::int32_t lowest,
                                       std::int32_t highest) noexcept {
  char text[32];
  const Reading reading = ReadText(section, key, text, sizeof text);
  if (reading == Reading::kMissing) return fallback;
  const auto number = ParseNumber(text);
  if (!number || *number < lowest || *number > highest) return std::nullopt;
  return number;
}

}  // namespace settings
