// Decodes any bytes, and encodes and decodes again what came out. The buffers are exact, so that AddressSanitizer sees
// every step past them.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "frame/base64.h"

using namespace frame;

namespace {

void Require(bool held) {
  if (!held) std::abort();
}

std::int32_t Size(const std::string& text) { return static_cast<std::int32_t>(text.size()); }

std::string Decoded(const std::string& text) {
  std::int32_t length = 0;
  Base64DecodeText(text.data(), Size(text), nullptr, &length);
  std::string bytes(static_cast<std::size_t>(length), '\0');
  std::int32_t counted = length;
  Require(Base64DecodeText(text.data(), Size(text), bytes.data(), &counted) && counted == length);
  if (length == 0) return bytes;
  std::string tooSmall(bytes.size() - 1, '\0');
  counted = length - 1;
  Require(!Base64DecodeText(text.data(), Size(text), tooSmall.data(), &counted) && counted == length);
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes = Decoded({reinterpret_cast<const char*>(data), size});
  for (std::uint32_t flags = 0; flags < 4; ++flags) {
    std::int32_t length = Base64RequiredLength(Size(bytes), flags);
    std::string text(static_cast<std::size_t>(length), '\0');
    Require(Base64EncodeText(bytes.data(), Size(bytes), text.data(), &length, flags));
    text.resize(static_cast<std::size_t>(length));
    Require(Decoded(text) == bytes);
  }
  return 0;
}
