#include "store/store_file.h"

#include <algorithm>
#include <limits>
#include <new>

#include "frame/crypto.h"
#include "frame/trace.h"
#include "store/cipher.h"
#include "store/enciphered_text.h"
#include "store/key_blobs.h"

namespace store {

using frame::kDetail;
using frame::Trace;

std::optional<std::string> ReadContent(const win::FileHandle& file) {
  const auto size = win::SizeOf(file);
  if (!size) return std::nullopt;
  if (*size > std::numeric_limits<std::int32_t>::max()) throw std::bad_alloc();
  std::string content(static_cast<std::size_t>(*size), '\0');
  if (win::Read(file, content.data(), content.size()) < content.size()) return std::nullopt;
  return content;
}

Deciphering DecipherContent(std::string& content, const char* cryptoFolder) {
  if (!IsMarked(content)) {
    content.resize(UpToZero(content).size());
    return Deciphering::kDone;
  }
  if (!frame::LoadCrypto(cryptoFolder)) return Deciphering::kCryptoNotLoaded;
  char* const blocks = content.data() + kMarker.size();
  if (DecryptBufferInPlace(blocks, content.size() - kMarker.size(), kFileKeyBlob) != 0) return Deciphering::kFailed;
  content.erase(0, kMarker.size());
  content.resize(UpToZero(content).size());
  return Deciphering::kDone;
}

PreparedContent PrepareContent(std::string text, const char* cryptoFolder, const char* function) {
  if (!frame::LoadCrypto(cryptoFolder)) {
    Trace(kDetail, function, "Could not load ApiCrFunctions");
    return {.bytes = std::move(text), .form = TextForm::kPlainWithoutCrypto};
  }
  const std::size_t length = PaddedLength(text.size());
  std::string content;
  content.reserve(kMarker.size() + length);
  content.append(kMarker).append(text).resize(kMarker.size() + length);
  if (const auto error = EncryptBufferInPlace(content.data() + kMarker.size(), length, kFileKeyBlob); error != 0) {
    Trace(kDetail, function, "Could not Encrypt  file. Error code: %d", static_cast<int>(error));
    return {.bytes = std::move(text), .form = TextForm::kPlainAfterFailure};
  }
  Trace(kDetail, function, "File successfully encrypted");
  return {.bytes = std::move(content), .form = TextForm::kEnciphered};
}

void TraceWritten(const PreparedContent& content, std::size_t written, bool whole, const char* function) {
  const bool enciphered = content.form == TextForm::kEnciphered;
  if (!enciphered && !whole) return;
  const std::size_t marker = enciphered ? kMarker.size() : 0;
  Trace(kDetail, function, "Number of items to write: [%d]. Number of items written to file  [%d]",
        static_cast<int>(content.bytes.size() - marker), static_cast<int>(written - std::min(written, marker)));
}

}  // namespace store
