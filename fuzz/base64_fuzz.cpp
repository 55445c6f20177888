// Decodes any bytes, compares the result with that of a simple decoder, and encodes and decodes the result again. The
// buffers have the exact size, so AddressSanitizer detects every overrun.
#include <string_view>

#include "fuzzer.h"
#include "text/base64.h"

using namespace text;

namespace {

std::int32_t Size(const std::string& text) { return static_cast<std::int32_t>(text.size()); }

std::string Expected(const std::string& text) {
  constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bytes;
  std::size_t bits = 0;
  int count = 0;
  for (const char* at = text.c_str(); *at != '\0'; ++at) {
    const auto value = kAlphabet.find(*at);
    if (value == kAlphabet.npos) continue;
    bits = bits << 6 | value;
    count += 6;
    if (count >= 8) bytes += static_cast<char>(bits >> (count -= 8));
  }
  return bytes;
}

std::string Decoded(const std::string& text) {
  std::int32_t length = 0;
  Base64DecodeText(text.data(), Size(text), nullptr, &length);
  std::string bytes(static_cast<std::size_t>(length), '\0');
  std::int32_t counted = length;
  Require(Base64DecodeText(text.data(), Size(text), bytes.data(), &counted) && counted == length);
  // Groups after the first that does not fit are counted, but not written.
  if (length == 0) return bytes;
  std::string tooSmall(bytes.size() / 2, '~');
  counted = Size(tooSmall);
  Require(!Base64DecodeText(text.data(), Size(text), tooSmall.data(), &counted) && counted == length);
  const std::size_t whole = tooSmall.size() / 3 * 3;
  Require(tooSmall == bytes.substr(0, whole) + std::string(tooSmall.size() - whole, '~'));
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  const std::string bytes = Decoded(input);
  Require(bytes == Expected(input));
  for (std::uint32_t flags = 0; flags < 4; ++flags) {
    std::int32_t length = Base64RequiredLength(Size(bytes), flags);
    std::string text(static_cast<std::size_t>(length), '\0');
    Require(Base64EncodeText(bytes.data(), Size(bytes), text.data(), &length, flags));
    text.resize(static_cast<std::size_t>(length));
    Require(Decoded(text) == bytes);
  }
  return 0;
}
