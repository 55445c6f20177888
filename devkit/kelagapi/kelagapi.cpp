// KELAGAPI.dll: keeps the agent's configuration records in files next to it, one for each record. No function throws,
// and each keeps the caller's last-error value.
#include "KELAGAPI.h"

#include <atomic>
#include <cstring>

#include "shared/files.h"
#include "shared/texts.h"
#include "siblings/functions.h"

using namespace devkit;

namespace {

constexpr std::uint32_t kLongestRecord = 64 * 1024;  // bytes
constexpr std::uint32_t kProxySize = sizeof(KE_AGENT_PROXY_RECORD);
static_assert(kProxySize == 532, "the record crosses module borders");

struct RecordKey {
  std::uint32_t cls;
  std::uint32_t item;
};

constexpr RecordKey kProxy{KE_AGENT_CONFIG_CLASS, KE_AGENT_PROXY_ITEM};

/// Precedes the record in its file.
struct Header {
  char magic[8] = {'K', 'E', 'A', 'G', 'R', 'E', 'C', '1'};
  std::uint32_t cls;
  std::uint32_t item;
  std::uint32_t size;  // of the record, in bytes
  std::uint32_t zero = 0;
  std::uint64_t checksum;  // of the header up to here, and of the record
};
static_assert(sizeof(Header) == 32 && offsetof(Header, checksum) == 24, "the file format");

std::atomic<std::uint32_t> g_uses = 0;  // initialisations without an end

Header HeaderOf(RecordKey key, const void* record, std::uint32_t size) noexcept {
  Header header{.cls = key.cls, .item = key.item, .size = size, .checksum = 0};
  header.checksum = Hash(record, size, Hash(&header, offsetof(Header, checksum)));
  return header;
}

std::string PathOf(RecordKey key) {
  return NextToModule("KELAGAPI-" + std::to_string(key.cls) + "-" + std::to_string(key.item) + ".rec");
}

constexpr DWORD kLockMilliseconds = 10000;

/// Copies the stored record; one that was never stored is all zeros. After a failure `record` is as it was.
Result ReadRecord(RecordKey key, void* record, std::uint32_t size) {
  if (record == nullptr || size == 0 || size > kLongestRecord) return kBadArgument;
  const std::string path = PathOf(key);
  const SharedFileLock lock(path.c_str(), kLockMilliseconds);
  if (!lock.Held()) return kFileFailure;
  const auto content = ReadShared(path, sizeof(Header) + kLongestRecord);
  if (!content) {
    if (GetLastError() != ERROR_FILE_NOT_FOUND) return kFileFailure;
    std::memset(record, 0, size);
    return kSuccess;
  }
  if (content->size() <= sizeof(Header) || content->size() > sizeof(Header) + kLongestRecord) return kDamaged;
  const char* const stored = content->data() + sizeof(Header);
  const auto storedSize = static_cast<std::uint32_t>(content->size() - sizeof(Header));
  const Header expected = HeaderOf(key, stored, storedSize);
  if (std::memcmp(content->data(), &expected, sizeof expected) != 0) return kDamaged;
  if (storedSize != size) return kWrongSize;
  std::memcpy(record, stored, size);
  return kSuccess;
}

Result WriteRecord(RecordKey key, const void* record, std::uint32_t size) {
  if (record == nullptr || size == 0 || size > kLongestRecord) return kBadArgument;
  const Header header = HeaderOf(key, record, size);
  const std::string path = PathOf(key);
  const SharedFileLock lock(path.c_str(), kLockMilliseconds);
  std::string content(reinterpret_cast<const char*>(&header), sizeof header);
  content.append(static_cast<const char*>(record), size);
  return lock.Held() && ReplaceShared(path, content) ? kSuccess : kFileFailure;
}

/// The stored proxy record when it is in use, else one of zeros.
Result ReadProxyInUse(void* record, std::uint32_t size) {
  if (record == nullptr) return kBadArgument;
  if (size != kProxySize) return kWrongSize;
  KE_AGENT_PROXY_RECORD stored;
  const Result result = ReadRecord(kProxy, &stored, sizeof stored);
  if (result != kSuccess) return result;
  if (!stored.inUse) std::memset(&stored, 0, sizeof stored);
  std::memcpy(record, &stored, sizeof stored);
  return kSuccess;
}

/// Works on a record while the module is initialised. A call counts although its line could not be written.
template <typename Work>
std::uint32_t OnRecord(const char* function, RecordKey key, std::uint32_t size, Work work) noexcept {
  return Guarded([&] {
    const Result result = g_uses > 0 ? work() : kNotInitialised;
    Logged(function, result, std::to_string(key.cls) + ";" + std::to_string(key.item) + ";" + std::to_string(size));
    return result;
  });
}

bool EndUse() noexcept {
  for (std::uint32_t uses = g_uses; uses > 0;) {
    if (g_uses.compare_exchange_weak(uses, uses - 1)) return true;
  }
  return false;
}

int LoggedCall(const char* function, Result result) noexcept {
  return Guarded([&] { return Logged(function, result), result; });
}

}  // namespace

int KE_SIBLING_CALL KE_AGAPI_Initialize(void) {
  ++g_uses;
  return LoggedCall(__func__, kSuccess);
}

int KE_SIBLING_CALL KE_AGAPI_Finalize(void) { return LoggedCall(__func__, EndUse() ? kSuccess : kNotInitialised); }

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
    return ReadProxyInUse(&found, sizeof found);
  });
}

// Plain C functions without parameters: arguments are the caller's to clean up.
#define SKIP(name, presence)
#define NOT_SUPPORTED(name, presence) \
  extern "C" int KE_SIBLING_CALL name(void) { return LoggedCall(__func__, kNotSupported); }
KE_AGENT_API_FUNCTIONS(SKIP, NOT_SUPPORTED)
