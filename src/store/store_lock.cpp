#include "store/store_lock.h"

#include <cstdint>
#include <cstdio>

#include "frame/module.h"
#include "frame/paths.h"

namespace store {
namespace {

constexpr DWORD kLongestWait = 5000;  // milliseconds

// How many scopes there are, one inside the other. Guarded by IntegraLock.
int g_scopes = 0;

// One name for each store, however its path is spelled: a number made from the full path of its folder in lower case
// (FNV-1a).
std::uint64_t NumberOfStore() {
  const std::string folder = frame::SiblingFolder(frame::KeptModuleDirectory(), "KESAgent");
  char path[4096];
  const DWORD length = GetFullPathNameA(folder.c_str(), sizeof path, path, nullptr);
  if (length >= sizeof path) return 0;
  CharLowerBuffA(path, length);
  std::uint64_t number = 0xCBF29CE484222325;
  for (DWORD i = 0; i < length; ++i) number = (number ^ static_cast<unsigned char>(path[i])) * 0x100000001B3;
  return number;
}

}  // namespace

StoreLock::StoreLock() {
  if (g_scopes == 0) {
    char name[64];
    snprintf(name, sizeof name, "Global\\KELUtils store %016llx", static_cast<unsigned long long>(NumberOfStore()));
    held_.emplace(name, kLongestWait);
  }
  ++g_scopes;
}

StoreLock::~StoreLock() { --g_scopes; }

}  // namespace store
