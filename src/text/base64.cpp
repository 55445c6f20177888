#include "text/base64.h"

#include <array>
#include <cstddef>
#include <limits>
#include <new>

namespace text {
namespace {

using Byte = unsigned char;

constexpr std::int32_t kLine = 76, kGroupsOfLine = kLine / 4;  // characters, groups
constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr Byte kInvalid = 64;

constexpr std::array<Byte, 256> kValues = [] {
  std::array<Byte, 256> values{};
  values.fill(kInvalid);
  for (Byte i = 0; i < kInvalid; ++i) values[static_cast<Byte>(kAlphabet[i])] = i;
  return values;
}();

// Writes the first `count` characters of a group, whose 24 bits are `bits`.
char* PutGroup(char* to, std::uint32_t bits, int count) noexcept {
  for (int i = 0; i < count; ++i) *to++ = kAlphabet[bits >> (18 - 6 * i) & 63];
  return to;
}

}  // namespace

std::int32_t Base64RequiredLength(std::int32_t sourceLength, std::uint32_t flags) {
  const std::int64_t bits = std::int64_t{sourceLength} * 4;
  if (bits < 0 || bits > std::numeric_limits<std::int32_t>::max()) throw std::bad_array_new_length();
  std::int64_t length = bits / 3;
  if ((flags & kBase64NoPadding) == 0) length += sourceLength % 3;
  const std::int64_t lines = length / kLine + 1;
  length = (length + 3) / 4 * 4;
  if ((flags & kBase64NoLineBreaks) == 0) length += 2 * lines;
  return static_cast<std::int32_t>(length);
}

bool Base64EncodeText(const void* source, std::int32_t sourceLength, char* destination, std::int32_t* destinationLength,
                      std::uint32_t flags) {
  if (source == nullptr || destination == nullptr || destinationLength == nullptr) return false;
  if (*destinationLength < Base64RequiredLength(sourceLength, flags)) return false;
  const auto* from = static_cast<const Byte*>(source);
  char* to = destination;
  for (std::int32_t group = 1; group <= sourceLength / 3; ++group, from += 3) {
    to = PutGroup(to, std::uint32_t{from[0]} << 16 | std::uint32_t{from[1]} << 8 | from[2], 4);
    if (group % kGroupsOfLine != 0 || (flags & kBase64NoLineBreaks) != 0) continue;
    *to++ = '\r';
    *to++ = '\n';
  }
  if (const int rest = sourceLength % 3; rest != 0) {
    to = PutGroup(to, std::uint32_t{from[0]} << 16 | (rest == 2 ? std::uint32_t{from[1]} << 8 : 0), rest + 1);
    for (int i = rest; i < 3 && (flags & kBase64NoPadding) == 0; ++i) *to++ = '=';
  }
  *destinationLength = static_cast<std::int32_t>(to - destination);
  return true;
}

bool Base64DecodeText(const char* source, std::int32_t sourceLength, void* destination,
                      std::int32_t* destinationLength) noexcept {
  if (source == nullptr || destinationLength == nullptr) return false;
  auto* to = static_cast<Byte*>(destination);
  const std::int32_t room = destination ? *destinationLength : 0;
  std::int32_t counted = 0;
  bool written = destination != nullptr;
  std::uint32_t bits = 0;
  int characters = 0;  // of the group so far
  const auto endGroup = [&] {
    const int bytes = characters * 6 / 8;
    written = written && counted + bytes <= room;
    for (int i = 0; i < bytes && written; ++i)
      to[counted + i] = static_cast<Byte>(bits >> (6 * characters - 8 * (i + 1)));
    counted += bytes;
    bits = 0;
    characters = 0;
  };
  for (std::int32_t i = 0; i < sourceLength && source[i] != '\0'; ++i) {
    const Byte value = kValues[static_cast<Byte>(source[i])];
    if (value == kInvalid) continue;
    bits = bits << 6 | value;
    if (++characters == 4) endGroup();
  }
  endGroup();
  *destinationLength = counted;
  return written;
}

}  // namespace text
