#include "win/profile.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <initializer_list>

#include "win/gate.h"

namespace win {

namespace {

// Windows counts the bytes of a wide text in 16 bits. Beyond that it may cut a text, read past its end or crash.
constexpr std::size_t kLongestText = 32766;

// Windows allocates a wide buffer of twice the given size; a size beyond 2 GiB makes it overrun the buffer.
constexpr std::size_t kLargestBuffer = 1 << 20;

bool IsTooLong(const char* text) noexcept { return text && strnlen(text, kLongestText + 1) > kLongestText; }

// The full path may be shorter, as a path may hold "..". A longer one may become a file with a name of stray bytes.
bool HasFullPath(const char* file) noexcept {
  char full[MAX_PATH];
  const DWORD length = GetFullPathNameA(file, sizeof full, full, nullptr);
  return length > 0 && length < sizeof full;
}

bool CanPass(const char* file, std::initializer_list<const char*> texts) noexcept {
  if (!IsTooLong(file) && std::ranges::none_of(texts, IsTooLong) && HasFullPath(file)) return true;
  SetLastError(ERROR_INVALID_PARAMETER);
  return false;
}

}  // namespace

bool WriteProfile(const std::string& file, const char* section, const char* key, const char* value) noexcept {
  return CanPass(file.c_str(), {section, key, value}) && Passes(Call::kProfile) &&
         WritePrivateProfileStringA(section, key, value, file.c_str()) != 0;
}

void ReadProfile(const char* file, const char* section, const char* key, const char* fallback, char* buffer,
                 std::size_t size) noexcept {
  if (CanPass(file, {section, key, fallback}) && Passes(Call::kProfile)) {
    GetPrivateProfileStringA(section, key, fallback, buffer, static_cast<DWORD>(std::min(size, kLargestBuffer)), file);
  } else {
    std::fill_n(buffer, std::min<std::size_t>(size, 2), '\0');  // two zeros: also an empty list of names
  }
}

std::string ReadProfile(const std::string& file, const char* section, const char* key, const char* fallback,
                        std::size_t size) {
  std::string value(size, '\0');
  ReadProfile(file.c_str(), section, key, fallback, value.data(), size);
  value.resize(strnlen(value.data(), size));
  return value;
}

int ReadProfileNumber(const std::string& file, const char* section, const char* key, int fallback) noexcept {
  if (!CanPass(file.c_str(), {section, key}) || !Passes(Call::kProfile)) return fallback;
  return static_cast<int>(GetPrivateProfileIntA(section, key, fallback, file.c_str()));
}

}  // namespace win
