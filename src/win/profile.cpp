#include "win/profile.h"

#include <windows.h>

#include <cstring>

namespace win {

bool WriteProfile(const std::string& file, const char* section, const char* key, const char* value) noexcept {
  return WritePrivateProfileStringA(section, key, value, file.c_str()) != 0;
}

std::string ReadProfile(const std::string& file, const char* section, const char* key, const char* fallback,
                        std::size_t size) {
  std::string value(size, '\0');
  GetPrivateProfileStringA(section, key, fallback, value.data(), static_cast<DWORD>(size), file.c_str());
  value.resize(strnlen(value.data(), size));
  return value;
}

int ReadProfileNumber(const std::string& file, const char* section, const char* key, int fallback) noexcept {
  return static_cast<int>(GetPrivateProfileIntA(section, key, fallback, file.c_str()));
}

}  // namespace win
