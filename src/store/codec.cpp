#include "store/codec.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <vector>

#include "siblings/modules.h"
#include "store/ini_store.h"
#include "trace/trace.h"
#include "win/owner.h"

namespace store {

namespace {

using trace::kDetail;
using trace::Trace;
using CipherFunction = decltype(siblings::CryptoTable::APIcr_EncryptBuffer);

std::int32_t RunInPlace(CipherFunction function, char* data, std::size_t length, const char* keyBlob) {
  const std::size_t padded = PaddedLength(length);
  std::vector<char> scratch(padded + 1);
  const win::WipeAtEnd wipe(scratch.data(), scratch.size());
  std::memcpy(scratch.data(), data, length);
  std::int32_t error = 0;
  function(scratch.data(), static_cast<std::uint32_t>(padded), keyBlob, 0, &error);
  if (error == 0) std::memcpy(data, scratch.data(), length);
  return error;
}

}  // namespace

std::int32_t DecryptBufferInPlace(char* data, std::size_t length, const char* keyBlob) {
  const auto* crypto = siblings::Crypto();
  return crypto ? RunInPlace(crypto->APIcr_DecryptBuffer, data, length, keyBlob) : kDecryptionUnavailable;
}

std::int32_t EncryptBufferInPlace(char* data, std::size_t length, const char* keyBlob) {
  const auto* crypto = siblings::Crypto();
  return crypto ? RunInPlace(crypto->APIcr_EncryptBuffer, data, length, keyBlob) : kEncryptionUnavailable;
}

namespace {

constexpr int kMostShifts = 16;              // each fails once in 256 times
constexpr std::int32_t kNeverReadable = -1;  // the crypto module gives only zero bytes at the beginning

// Makes the content of a file from a text: the marker and the encrypted blocks. 0, or the code of the encryption.
std::int32_t Encrypt(std::string_view text, std::string& content) {
  const std::size_t length = PaddedLength(text.size());
  content.clear();
  content.reserve(kMarker.size() + length);
  content.append(kMarker).append(text).resize(kMarker.size() + length);
  return EncryptBufferInPlace(content.data() + kMarker.size(), length, kFileKeyBlob);
}

// Without blocks there is no text to lose.
bool IsReadable(std::string_view content) noexcept { return content.size() == kMarker.size() || IsMarked(content); }

}  // namespace

std::optional<std::string> ReadContent(const win::FileHandle& file) {
  const auto size = win::SizeOf(file);
  if (!size) return std::nullopt;
  if (*size > std::numeric_limits<std::int32_t>::max()) throw std::bad_alloc();
  std::string content(static_cast<std::size_t>(*size), '\0');
  if (win::Read(file, content.data(), content.size()) < content.size()) return std::nullopt;
  return content;
}

ExaminedFile ExamineFile(win::FileHandle file, const char* cryptoFolder) {
  auto content = ReadContent(file);
  if (!content) return {.state = FileState::kUnreadable, .error = ERROR_READ_FAULT, .store = {}};
  file.Reset();
  ExaminedFile examined{.encrypted = IsMarked(*content), .store = {}};
  if (examined.encrypted) {
    examined.state = FileState::kCryptoNotLoaded;
    if (!siblings::LoadCrypto(cryptoFolder)) return examined;
    examined.state = FileState::kDecryptionFailed;
    const auto length = content->size() - kMarker.size();
    if (DecryptBufferInPlace(content->data() + kMarker.size(), length, kFileKeyBlob) != 0) return examined;
  }
  ParseIni(UpToZero(std::string_view(*content).substr(examined.encrypted ? kMarker.size() : 0)), examined.store);
  examined.state = examined.store.sections.size() < kFewestSections ? FileState::kDamaged : FileState::kComplete;
  return examined;
}

ExaminedFile ExamineFile(const std::string& path, const char* cryptoFolder) {
  win::FileHandle file = win::OpenForReading(path);
  if (file) return ExamineFile(std::move(file), cryptoFolder);
  const FileState state = win::LastErrorIsNotFound() ? FileState::kMissing : FileState::kUnreadable;
  return {.state = state, .error = GetLastError(), .store = {}};
}

win::Replaced ReplaceContent(const std::string& path, std::string_view content, const win::FileStatus& like,
                             const char* function) {
  const win::Replaced replaced = win::ReplaceContent(path, content, like);
  if (!replaced.opened) {
    Trace(kDetail, function, "Could not open %s - Error %d", path.c_str(), static_cast<int>(GetLastError()));
  } else if (replaced.inPlace) {
    Trace(kDetail, function, "Overwritten in place [File = %s] - Error %d", path.c_str(),
          static_cast<int>(replaced.error));
  }
  return replaced;
}

bool ReplaceByCopy(const std::string& source, const std::string& path, const char* function) {
  const win::FileHandle from = win::OpenForReading(source);
  if (!from) return false;
  const auto content = ReadContent(from);
  if (!content) return false;
  win::FileStatus like = win::StatusOf(path);
  like.attributes = win::StatusOf(source).attributes;
  return ReplaceContent(path, *content, like, function).complete;
}

PreparedContent PrepareContent(std::string text, const char* cryptoFolder, const char* function) {
  if (!siblings::LoadCrypto(cryptoFolder)) {
    Trace(kDetail, function, "Could not load ApiCrFunctions");
    return {.bytes = std::move(text), .form = TextForm::kPlainWithoutCrypto};
  }
  std::string content;
  std::int32_t error = Encrypt(text, content);
  // Readers take encrypted text that begins with a zero byte for plain text. An empty line before the text, which
  // readers skip, changes the encrypted text.
  std::string shifted = text;
  for (int i = 0; error == 0 && !IsReadable(content); ++i) {
    if (i == kMostShifts) error = kNeverReadable;
    shifted.insert(0, "\r\n");
    if (error == 0) error = Encrypt(shifted, content);
  }
  if (error != 0) {
    Trace(kDetail, function, "Could not Encrypt  file. Error code: %d", static_cast<int>(error));
    return {.bytes = std::move(text), .form = TextForm::kPlainAfterFailure};
  }
  Trace(kDetail, function, "File successfully encrypted");
  return {.bytes = std::move(content), .form = TextForm::kEncrypted};
}

void TraceWritten(const PreparedContent& content, std::size_t written, bool complete, const char* function) {
  const bool encrypted = content.form == TextForm::kEncrypted;
  if (!encrypted && !complete) return;
  const std::size_t marker = encrypted ? kMarker.size() : 0;
  Trace(kDetail, function, "Number of items to write: [%d]. Number of items written to file  [%d]",
        static_cast<int>(content.bytes.size() - marker), static_cast<int>(written - std::min(written, marker)));
}

}  // namespace store
