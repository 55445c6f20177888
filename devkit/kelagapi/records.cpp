#include "kelagapi/records.h"

#include <windows.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "sharedfile/hash.h"
#include "sharedfile/module_path.h"
#include "sharedfile/replacement.h"
#include "sharedfile/turn.h"
#include "win/owner.h"

namespace kelagapi {
namespace {

constexpr char kMagic[8] = {'K', 'E', 'A', 'G', 'R', 'E', 'C', '1'};
constexpr DWORD kTurnMilliseconds = 10000;

/// What stands before the record in its file.
struct Header {
  char magic[sizeof kMagic];
  std::uint32_t cls;
  std::uint32_t item;
  std::uint32_t size;  // of the record, in bytes
  std::uint32_t zero;
  std::uint64_t checksum;  // of the header up to here, and of the record
};
static_assert(sizeof(Header) == 32 && offsetof(Header, checksum) == 24, "the file format");

/// A file as it is read: with room for one byte too many, which shows that it is too long.
struct Content {
  Header header;
  char record[kLargestRecord + 1];
};

std::uint64_t Checksum(const Header& header, const void* record) noexcept {
  return sharedfile::Hash(record, header.size, sharedfile::Hash(&header, offsetof(Header, checksum)));
}

bool LocateRecord(RecordKey key, char (&path)[MAX_PATH]) noexcept {
  char module[MAX_PATH];
  if (!sharedfile::FindOwnPath(module)) return false;
  const char* const name = std::strrchr(module, '\\');
  const int folder = name ? static_cast<int>(name + 1 - module) : 0;
  const int length = std::snprintf(path, sizeof path, "%.*sKELAGAPI-%lu-%lu.rec", folder, module,
                                   static_cast<unsigned long>(key.cls), static_cast<unsigned long>(key.item));
  return length > 0 && length < static_cast<int>(sizeof path);
}

bool IsWhole(const Content& content, std::size_t length, RecordKey key) noexcept {
  const Header& header = content.header;
  if (length < sizeof header || std::memcmp(header.magic, kMagic, sizeof kMagic) != 0) return false;
  if (header.cls != key.cls || header.item != key.item || header.size != length - sizeof header) return false;
  return header.size <= kLargestRecord && header.checksum == Checksum(header, content.record);
}

Result ReadWhole(const char* path, RecordKey key, Content& content, void* record, std::uint32_t size) noexcept {
  const win::FileHandle file = sharedfile::OpenSource(path);
  if (!file && GetLastError() == ERROR_FILE_NOT_FOUND) {
    std::memset(record, 0, size);
    return kSuccess;
  }
  std::size_t length = 0;
  if (!file || !sharedfile::ReadFully(file, &content, sizeof content, length)) return kFileFailure;
  if (!IsWhole(content, length, key)) return kDamaged;
  if (content.header.size != size) return kWrongSize;
  std::memcpy(record, content.record, size);
  return kSuccess;
}

bool IsUsable(const void* record, std::uint32_t size) noexcept {
  return record != nullptr && size > 0 && size <= kLargestRecord;
}

}  // namespace

Result ReadRecord(RecordKey key, void* record, std::uint32_t size) noexcept {
  if (!IsUsable(record, size)) return kBadArgument;
  const std::unique_ptr<Content> content(new (std::nothrow) Content);
  if (!content) return kNoMemory;
  const win::WipeAtEnd wipe(content.get(), sizeof *content);  // a record may hold a password
  char path[MAX_PATH];
  if (!LocateRecord(key, path)) return kFileFailure;
  const sharedfile::Turn turn(path, kTurnMilliseconds);
  return turn.Taken() ? ReadWhole(path, key, *content, record, size) : kFileFailure;
}

Result WriteRecord(RecordKey key, const void* record, std::uint32_t size) noexcept {
  if (!IsUsable(record, size)) return kBadArgument;
  Header header{{}, key.cls, key.item, size, 0, 0};
  std::memcpy(header.magic, kMagic, sizeof kMagic);
  header.checksum = Checksum(header, record);
  char path[MAX_PATH];
  if (!LocateRecord(key, path)) return kFileFailure;
  const sharedfile::Turn turn(path, kTurnMilliseconds);
  if (!turn.Taken()) return kFileFailure;
  sharedfile::Replacement file(path);
  const bool stored = file.Write(&header, sizeof header) && file.Write(record, size) && file.PutInPlace();
  return stored ? kSuccess : kFileFailure;
}

}  // namespace kelagapi
