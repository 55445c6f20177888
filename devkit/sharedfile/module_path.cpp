#include "sharedfile/module_path.h"

#include <cstdio>
#include <cstring>

namespace sharedfile {
namespace {

/// Puts `tail` where `end` points to in the path; false when that does not fit.
bool Replace(char (&path)[MAX_PATH], char* end, const char* tail) noexcept {
  const std::size_t room = sizeof path - static_cast<std::size_t>(end - path);
  return static_cast<std::size_t>(std::snprintf(end, room, "%s", tail)) < room;
}

/// Where the file name begins in a full path.
char* NameIn(char (&path)[MAX_PATH]) noexcept {
  char* const separator = std::strrchr(path, '\\');
  return separator ? separator + 1 : path;
}

}  // namespace

bool FindOwnPath(char (&path)[MAX_PATH]) noexcept {
  HMODULE module = nullptr;
  constexpr DWORD kByAddress = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  if (!GetModuleHandleExA(kByAddress, reinterpret_cast<const char*>(&FindOwnPath), &module)) return false;
  const DWORD length = GetModuleFileNameA(module, path, sizeof path);
  return length > 0 && length < sizeof path;
}

bool FindWithExtension(const char* extension, char (&path)[MAX_PATH]) noexcept {
  if (!FindOwnPath(path)) return false;
  char* const name = NameIn(path);
  char* const dot = std::strrchr(name, '.');
  return Replace(path, dot ? dot : name + std::strlen(name), extension);
}

bool FindBeside(const char* name, char (&path)[MAX_PATH]) noexcept {
  return FindOwnPath(path) && Replace(path, NameIn(path), name);
}

}  // namespace sharedfile
