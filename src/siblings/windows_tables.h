// Functions of Windows that are looked up at run time, because not every supported release has them.
#pragma once

#include <windows.h>

// Order matters to the platform's headers.
#include <aclapi.h>
#include <sddl.h>
#include <shellapi.h>
#include <shlobj.h>

#define KE_ADVAPI32_FUNCTIONS(ROW)   \
  ROW(CreateWellKnownSid)            \
  ROW(GetFileSecurityA)              \
  ROW(GetFileSecurityW)              \
  ROW(GetSecurityDescriptorDacl)     \
  ROW(BuildTrusteeWithSidA)          \
  ROW(BuildTrusteeWithSidW)          \
  ROW(GetEffectiveRightsFromAclA)    \
  ROW(GetEffectiveRightsFromAclW)    \
  ROW(InitializeAcl)                 \
  ROW(GetAclInformation)             \
  ROW(GetAce)                        \
  ROW(LookupAccountSidA)             \
  ROW(LookupAccountSidW)             \
  ROW(AddAce)                        \
  ROW(DuplicateTokenEx)              \
  ROW(CryptAcquireContextA)          \
  ROW(CryptAcquireContextW)          \
  ROW(InitializeSecurityDescriptor)  \
  ROW(AllocateAndInitializeSid)      \
  ROW(AddAccessAllowedAceEx)         \
  ROW(SetSecurityDescriptorDacl)     \
  ROW(SetFileSecurityA)              \
  ROW(SetFileSecurityW)              \
  ROW(StartServiceCtrlDispatcherA)   \
  ROW(StartServiceCtrlDispatcherW)   \
  ROW(RegisterServiceCtrlHandlerA)   \
  ROW(RegisterServiceCtrlHandlerW)   \
  ROW(SetServiceStatus)              \
  ROW(RegisterServiceCtrlHandlerExA) \
  ROW(RegisterServiceCtrlHandlerExW) \
  ROW(ConvertStringSidToSidA)        \
  ROW(ConvertStringSidToSidW)        \
  ROW(GetInheritanceSourceA)         \
  ROW(GetInheritanceSourceW)         \
  ROW(FreeInheritedFromArray)        \
  ROW(SetSecurityDescriptorControl)  \
  ROW(GetSecurityDescriptorControl)

#define KE_SHELL32_FUNCTIONS(ROW) \
  ROW(SHBindToParent)             \
  ROW(SHGetFolderLocation)        \
  ROW(SHGetFolderPathA)           \
  ROW(SHGetFolderPathW)           \
  ROW(SHGetLocalizedName)         \
  ROW(ShellExecuteExA)            \
  ROW(ShellExecuteExW)            \
  ROW(SHChangeNotify)
namespace siblings {

#define KE_MEMBER(name) decltype(&::name) name;

/// Functions of Advapi32.dll; null where the release has none.
struct Advapi32Table {
  HMODULE module;
  KE_ADVAPI32_FUNCTIONS(KE_MEMBER)
};

/// Functions of Shell32.dll; null where the release has none.
struct Shell32Table {
  HMODULE module;
  KE_SHELL32_FUNCTIONS(KE_MEMBER)
};

#undef KE_MEMBER

/// The tables of this process: filled while KELUtils is loaded.
const Advapi32Table& Advapi32() noexcept;
const Shell32Table& Shell32() noexcept;

/// Fills both tables, at process attach.
void BindWindowsTables() noexcept;

/// Frees both modules and clears the tables, when KELUtils is unloaded.
void ReleaseWindowsTables() noexcept;

}  // namespace siblings
