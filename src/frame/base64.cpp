#include "frame/base64.h"

#include <array>
#include <limits>
#include <new>

namespace frame {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::int32_t kLineCharacters = 76;
constexpr std::int8_t kForeign = -1;

// The value of each character of the alphabet; kForeign for the others.
constexpr auto kValues = [] {
  std::array<std::int8_t, 256> values{};
  values.fill(kForeign);
  for (std::int8_t value = 0; value < 64; ++value) values[static_cast<unsigned char>(kAlphabet[value])] = value;
  return values;
}();

// Writes `characters` (up to four) of the group of up to three bytes and returns the end of what was written.
char* PutGroup(char* to, const unsigned char* bytes, int byteCount, int characters) noexcept {
  std::uint32_t group = 0;
  for (int i = 0; i < 3; ++i) group = group << 8 | (i < byteCount ? bytes[i] : 0u);
  for (int i = 0; i < characters; ++i) *to++ = kAlphabet[group >> (18 - 6 * i) & 0x3F];
  return to;
}

// Writes the last one or two bytes.
char* PutTail(char* to, const unsigned char* bytes, int byteCount, bool padded) noexcept {
  to = PutGroup(to, bytes, byteCount, byteCount + 1);
  for (int i = byteCount + 1; padded && i < 4; ++i) *to++ = '=';
  return to;
}

// Takes decoded bytes, as many as fit, and counts them all.
class BoundedOutput {
 public:
  BoundedOutput(void* to, std::int32_t size) noexcept
      : to_(static_cast<unsigned char*>(to)), size_(size), full_(to == nullptr) {}

  // Takes the upper bits of a group of `bits` bits, in whole bytes.
  void PutGroup(std::uint32_t group, int bits) noexcept {
    const int bytes = bits / 8;
    if (count_ + bytes > size_) full_ = true;
    for (int i = 0; i < bytes && !full_; ++i)
      to_[count_ + i] = static_cast<unsigned char>(group >> (bits - 8 * (i + 1)));
    count_ += bytes;
  }

  std::int32_t Count() const noexcept { return count_; }
  bool IsComplete() const noexcept { return !full_; }

 private:
  unsigned char* to_;
  std::int32_t size_;
  std::int32_t count_ = 0;
  bool full_;
};

}  // namespace

std::int32_t Base64RequiredLength(std::int32_t sourceLength, std::uint32_t flags) {
  const std::int64_t product = std::int64_t{sourceLength} * 4;
  if (product < 0 || product > std::numeric_limits<std::int32_t>::max()) throw std::bad_array_new_length();
  auto length = static_cast<std::int32_t>(product / 3);
  if (!(flags & kBase64NoPadding)) length += sourceLength % 3;
  const std::int32_t lines = length / kLineCharacters + 1;
  length = (length + 3) / 4 * 4;
  return (flags & kBase64NoLineBreaks) != 0 ? length : length + 2 * lines;
}

bool Base64EncodeText(const void* source, std::int32_t sourceLength, char* destination, std::int32_t* destinationLength,
                      std::uint32_t flags) {
  if (source == nullptr || destination == nullptr || destinationLength == nullptr) return false;
  if (*destinationLength < Base64RequiredLength(sourceLength, flags)) return false;
  const auto* from = static_cast<const unsigned char*>(source);
  const std::int32_t groups = sourceLength / 3;
  char* to = destination;
  for (std::int32_t written = 0; written < groups; from += 3) {
    to = PutGroup(to, from, 3, 4);
    if (++written % (kLineCharacters / 4) == 0 && !(flags & kBase64NoLineBreaks)) {
      *to++ = '\r';
      *to++ = '\n';
    }
  }
  if (sourceLength % 3 != 0) to = PutTail(to, from, sourceLength % 3, !(flags & kBase64NoPadding));
  *destinationLength = static_cast<std::int32_t>(to - destination);
  return true;
}

bool Base64DecodeText(const char* source, std::int32_t sourceLength, void* destination,
                      std::int32_t* destinationLength) noexcept {
  if (source == nullptr || destinationLength == nullptr) return false;
  BoundedOutput output(destination, *destinationLength);
  std::uint32_t group = 0;
  int bits = 0;
  for (std::int32_t i = 0; i < sourceLength && source[i] != '\0'; ++i) {
    const std::int8_t value = kValues[static_cast<unsigned char>(source[i])];
    if (value == kForeign) continue;
    group = group << 6 | static_cast<std::uint32_t>(value);
    bits += 6;
    if (bits < 24) continue;
    output.PutGroup(group, bits);
    group = 0;
    bits = 0;
  }
  output.PutGroup(group, bits);
  *destinationLength = output.Count();
  return output.IsComplete();
}

}  // namespace frame
