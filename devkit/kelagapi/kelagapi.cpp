// KELAGAPI.dll: keeps the agent's configuration in files. No function throws, and each keeps the caller's last-error
// value.
#include "KELAGAPI.h"

#include <cstring>

#include "kelagapi/call_log.h"
#include "kelagapi/records.h"
#include "win/owner.h"

namespace kelagapi {
namespace {

constexpr RecordKey kProxy{KE_AGENT_CONFIG_CLASS, KE_AGENT_PROXY_ITEM};
constexpr std::uint32_t kProxySize = sizeof(KE_AGENT_PROXY_RECORD);
static_assert(kProxySize == 532, "the record crosses module borders");

// How often the module is initialised.
volatile LONG g_uses = 0;

/// Takes a use back; false when there is none.
bool EndUse() noexcept {
  for (LONG uses = g_uses; uses > 0; uses = g_uses) {
    if (InterlockedCompareExchange(&g_uses, uses - 1, uses) == uses) return true;
  }
  return false;
}

/// Does the work of a function on a record when the module is initialised, and logs the call.
template <typename Work>
std::uint32_t OnRecord(const char* function, RecordKey key, std::uint32_t size, Work work) noexcept {
  const win::KeptLastError kept;
  return Logged(function, key, size, g_uses > 0 ? work() : kNotInitialised);
}

/// The stored proxy record when it is in use, else one of zeros.
Result ReadProxyInUse(void* record, std::uint32_t size) noexcept {
  if (record == nullptr) return kBadArgument;
  if (size != kProxySize) return kWrongSize;
  KE_AGENT_PROXY_RECORD stored;
  const win::WipeAtEnd wipe(&stored, sizeof stored);
  if (const Result result = ReadRecord(kProxy, &stored, sizeof stored); result != kSuccess) return result;
  if (!stored.inUse) std::memset(&stored, 0, sizeof stored);
  std::memcpy(record, &stored, sizeof stored);
  return kSuccess;
}

}  // namespace
}  // namespace kelagapi

using namespace kelagapi;

int KE_SIBLING_CALL KE_AGAPI_Initialize(void) {
  InterlockedIncrement(&g_uses);
  return static_cast<int>(Logged(__func__, kSuccess));
}

int KE_SIBLING_CALL KE_AGAPI_Finalize(void) {
  return static_cast<int>(Logged(__func__, EndUse() ? kSuccess : kNotInitialised));
}

uint32_t KE_SIBLING_CALL KE_AGAPI_GetConfig(uint32_t cls, uint32_t item, void* record, uint32_t size) {
  const RecordKey key{cls, item};
  return OnRecord(__func__, key, size, [&] { return ReadRecord(key, record, size); });
}

uint32_t KE_SIBLING_CALL KE_AGAPI_SetConfig(uint32_t cls, uint32_t item, void* record, uint32_t size) {
  const RecordKey key{cls, item};
  return OnRecord(__func__, key, size, [&] { return WriteRecord(key, record, size); });
}

uint32_t KE_SIBLING_CALL KE_AGAPI_GetProxyConfig(void* record, uint32_t size) {
  return OnRecord(__func__, kProxy, size, [&] { return ReadProxyInUse(record, size); });
}

uint32_t KE_SIBLING_CALL KE_AGAPI_SetProxyConfig(void* record, uint32_t size) {
  return OnRecord(__func__, kProxy, size,
                  [&] { return size == kProxySize ? WriteRecord(kProxy, record, size) : kWrongSize; });
}

uint32_t KE_SIBLING_CALL KE_AGAPI_AskProxyConfig(void) {
  return OnRecord(__func__, kProxy, kProxySize, [] {
    KE_AGENT_PROXY_RECORD found;
    const win::WipeAtEnd wipe(&found, sizeof found);
    return ReadProxyInUse(&found, sizeof found);
  });
}
