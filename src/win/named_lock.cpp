#include "win/named_lock.h"

#include <cstring>

#include "win/last_error.h"

namespace win {
namespace {

constexpr DWORD kUse = SYNCHRONIZE | MUTEX_MODIFY_STATE;  // what it takes to hold a mutex

// A security descriptor by which everyone may hold the mutex, and only its owner may do more. As bytes, for none of the
// platform's many calls that make one can then fail.
struct UseByEveryone {
  SECURITY_DESCRIPTOR_RELATIVE descriptor{
      SECURITY_DESCRIPTOR_REVISION,        0, SE_SELF_RELATIVE | SE_DACL_PRESENT, 0, 0, 0,
      sizeof(SECURITY_DESCRIPTOR_RELATIVE)};
  ACL list{ACL_REVISION, 0, sizeof(ACL) + sizeof(ACE_HEADER) + sizeof(ACCESS_MASK) + sizeof(SID), 1, 0};
  ACE_HEADER entry{ACCESS_ALLOWED_ACE_TYPE, 0, sizeof(ACE_HEADER) + sizeof(ACCESS_MASK) + sizeof(SID)};
  ACCESS_MASK mask = kUse;
  SID everyone{SID_REVISION, 1, {SECURITY_WORLD_SID_AUTHORITY}, {SECURITY_WORLD_RID}};
};
static_assert(sizeof(UseByEveryone) == 48, "no gaps between the parts");

}  // namespace

HeldBetweenProcesses::HeldBetweenProcesses(const char* name, DWORD milliseconds) noexcept {
  const KeptLastError kept;
  UseByEveryone use;
  SECURITY_ATTRIBUTES security{.nLength = sizeof security, .lpSecurityDescriptor = &use, .bInheritHandle = FALSE};
  const auto create = [&](const char* scoped) { mutex_.Reset(CreateMutexExA(&security, scoped, 0, kUse)); };
  create(name);
  // Where the name is denied to this account, the processes of its own session still share one.
  if (const char* local = std::strchr(name, '\\'); !mutex_ && local) create(local + 1);
  if (!mutex_) return;
  const DWORD result = WaitForSingleObject(mutex_.Get(), milliseconds);
  held_ = result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
}

HeldBetweenProcesses::~HeldBetweenProcesses() {
  const KeptLastError kept;
  if (held_) ReleaseMutex(mutex_.Get());
}

}  // namespace win
