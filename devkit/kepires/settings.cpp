#include "kepires/settings.h"

#include "kepires/prompt.h"
#include "sharedfile/module_path.h"

namespace kepires {
namespace {

enum class Found { kNone, kGood, kBad };

/// Reads one key into `value`, which stays as it is when there is none.
Found ReadKey(const char* path, const char* key, std::uint32_t highest, std::uint32_t& value) noexcept {
  char text[32];
  const DWORD length = GetPrivateProfileStringA("AUTO", key, "", text, sizeof text, path);
  if (length == 0) return Found::kNone;
  const std::optional<std::uint32_t> number = NumberFrom<std::uint32_t>({text, length});
  if (!number || *number > highest) return Found::kBad;
  value = *number;
  return Found::kGood;
}

}  // namespace

std::optional<ExitCode> ReadSettings(std::optional<Automatic>& automatic) noexcept {
  char path[MAX_PATH];
  if (!sharedfile::FindWithExtension(".ini", path)) return std::nullopt;
  Automatic read;
  const Found mode = ReadKey(path, "Answer", 255, read.answer);
  for (const Found found :
       {mode, ReadKey(path, "CountDown", 255, read.countDown), ReadKey(path, "Delay", 60 * 1000, read.delay),
        ReadKey(path, "Installation", 60 * 60 * 1000, read.installation)}) {
    if (found == Found::kBad) return kBadSetting;
  }
  if (mode == Found::kGood) automatic = read;
  return std::nullopt;
}

}  // namespace kepires
