#include "win/access_rights.h"

#include <new>

namespace win {
namespace {

constexpr ACCESS_MASK kWrites =
    FILE_WRITE_DATA | GENERIC_WRITE | GENERIC_ALL;  // FILE_ADD_FILE of a folder is the same bit

// Makes one entry that of a writer. False when it is none, or has no meaning for the object itself.
bool MakeWriters(ACCESS_ALLOWED_ACE& entry) noexcept {
  const BYTE type = entry.Header.AceType;
  if (type != ACCESS_ALLOWED_ACE_TYPE && type != ACCESS_DENIED_ACE_TYPE) return false;
  if ((entry.Header.AceFlags & INHERIT_ONLY_ACE) != 0 || (entry.Mask & kWrites) == 0) return false;
  entry.Header.AceFlags = 0;
  entry.Mask = type == ACCESS_DENIED_ACE_TYPE ? FILE_ALL_ACCESS : FILE_GENERIC_READ | FILE_GENERIC_WRITE | DELETE;
  return true;
}

}  // namespace

template <typename Function, typename Path>
bool AccessRights::ReadWith(Function function, const Path& path) noexcept {
  DWORD size = 0;
  function(path.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
  if (GetLastError() != ERROR_INSUFFICIENT_BUFFER) return false;
  block_.reset(new (std::nothrow) char[size]);
  if (!block_) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return false;
  }
  if (function(path.c_str(), DACL_SECURITY_INFORMATION, block_.get(), size, &size)) return true;
  block_.reset();
  return false;
}

bool AccessRights::Read(const std::string& path) noexcept { return ReadWith(GetFileSecurityA, path); }
bool AccessRights::Read(const std::wstring& path) noexcept { return ReadWith(GetFileSecurityW, path); }

bool AccessRights::KeepWriters() noexcept {
  BOOL present = FALSE, defaulted = FALSE;
  ACL* list = nullptr;
  if (!GetSecurityDescriptorDacl(block_.get(), &present, &list, &defaulted)) return false;
  if (!present || list == nullptr) return true;  // everyone may do everything
  for (DWORD i = list->AceCount; i-- > 0;) {
    void* entry = nullptr;
    if (!GetAce(list, i, &entry)) return false;
    if (!MakeWriters(*static_cast<ACCESS_ALLOWED_ACE*>(entry)) && !DeleteAce(list, i)) return false;
  }
  return true;
}

SECURITY_ATTRIBUTES* AccessRights::ForNewFile() noexcept {
  if (!block_) return nullptr;
  inherits_ = (Control() & SE_DACL_PROTECTED) == 0;
  Control() |= SE_DACL_PROTECTED;
  attributes_.lpSecurityDescriptor = block_.get();
  return &attributes_;
}

bool AccessRights::RestoreInheritance(const FileHandle& file) noexcept {
  if (!inherits_) return true;
  Control() &= static_cast<SECURITY_DESCRIPTOR_CONTROL>(~SE_DACL_PROTECTED);
  return SetKernelObjectSecurity(file.Get(), DACL_SECURITY_INFORMATION, block_.get()) != FALSE;
}

}  // namespace win
