#include "frame/base64.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <limits>
#include <new>
#include <optional>

namespace frame {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint32_t kLineGroups = 19;  // of four characters
constexpr std::uint32_t kLineCharacters = 4 * kLineGroups;
constexpr std::uint32_t kForeign = 0x80000000;

// The bits of each character of the alphabet, in the first to the fourth place of a group; kForeign for the others.
constexpr auto MakeBits() {
  std::array<std::array<std::uint32_t, 256>, 4> bits{};
  for (std::size_t place = 0; place < 4; ++place) {
    bits[place].fill(kForeign);
    for (std::uint32_t value = 0; value < 64; ++value) {
      bits[place][static_cast<unsigned char>(kAlphabet[value])] = value << (18 - 6 * place);
    }
  }
  return bits;
}
constexpr auto kBits = MakeBits();

// The two characters of each value of 12 bits.
constexpr auto MakePairs() {
  std::array<std::array<char, 2>, 4096> pairs{};
  for (std::size_t value = 0; value < pairs.size(); ++value) {
    pairs[value] = {kAlphabet[value >> 6], kAlphabet[value & 0x3F]};
  }
  return pairs;
}
constexpr auto kPairs = MakePairs();

std::uint32_t BigEndian(const unsigned char* at) noexcept {
  return std::uint32_t{at[0]} << 24 | std::uint32_t{at[1]} << 16 | std::uint32_t{at[2]} << 8 | at[3];
}

// Writes the two characters of the low 12 bits.
void PutPair(char* to, std::uint32_t value) noexcept { std::memcpy(to, kPairs[value & 0xFFF].data(), 2); }

// From where is read and to where is written.
struct Places {
  const unsigned char* from;
  char* to;
};

// Writes `count` groups of three bytes, four characters each; two at a time, whose six bytes two words overlap.
inline void PutGroups(Places& at, std::uint32_t count) noexcept {
  for (; count > 1; count -= 2, at.from += 6, at.to += 8) {
    const std::uint32_t first = BigEndian(at.from), second = BigEndian(at.from + 2);
    PutPair(at.to, first >> 20);
    PutPair(at.to + 2, first >> 8);
    PutPair(at.to + 4, second >> 12);
    PutPair(at.to + 6, second);
  }
  if (count == 0) return;
  const std::uint32_t group = std::uint32_t{at.from[0]} << 16 | std::uint32_t{at.from[1]} << 8 | at.from[2];
  PutPair(at.to, group >> 12);
  PutPair(at.to + 2, group);
  at.from += 3;
  at.to += 4;
}

// Writes the last one or two bytes.
inline void PutTail(Places& at, bool two, bool padded) noexcept {
  const std::uint32_t group = std::uint32_t{at.from[0]} << 16 | (two ? std::uint32_t{at.from[1]} << 8 : 0u);
  PutPair(at.to, group >> 12);
  at.to += 2;
  if (two) *at.to++ = kAlphabet[group >> 6 & 0x3F];
  if (!padded) return;
  if (!two) *at.to++ = '=';
  *at.to++ = '=';
}

// The bits of four characters; kForeign is among them when one is not of the alphabet.
std::uint32_t WholeGroup(const unsigned char* at) noexcept {
  return kBits[0][at[0]] | kBits[1][at[1]] | kBits[2][at[2]] | kBits[3][at[3]];
}

// Writes four bytes.
void PutBigEndian(char* to, std::uint32_t value) noexcept {
  to[0] = static_cast<char>(value >> 24);
  to[1] = static_cast<char>(value >> 16);
  to[2] = static_cast<char>(value >> 8);
  to[3] = static_cast<char>(value);
}

// Writes the three bytes of a group, unless one of its characters is foreign.
inline void ReadGroup(Places& at, std::uint32_t group) noexcept {
  if (group >= kForeign) return;
  at.to[0] = static_cast<char>(group >> 16);
  at.to[1] = static_cast<char>(group >> 8);
  at.to[2] = static_cast<char>(group);
  at.from += 4;
  at.to += 3;
}

// Reads up to `count` groups of four characters, up to the first with a foreign one in it, and writes three bytes each;
// two at a time, as long as that goes.
inline void ReadGroups(Places& at, std::uint32_t count) noexcept {
  for (; count > 1; count -= 2, at.from += 8, at.to += 6) {
    const std::uint32_t first = WholeGroup(at.from), second = WholeGroup(at.from + 4);
    if ((first | second) >= kForeign) {
      ReadGroup(at, first);
      return;
    }
    PutBigEndian(at.to, first << 8 | second >> 16);
    at.to[4] = static_cast<char>(second >> 8);
    at.to[5] = static_cast<char>(second);
  }
  if (count > 0) ReadGroup(at, WholeGroup(at.from));
}

// Up to four characters, wherever they stand among foreign ones.
struct ScatteredGroup {
  std::uint32_t bits = 0;  // from bit 23 on
  int characters = 0;
};

// The padded group that most texts end in: none unless these four characters are one.
inline ScatteredGroup PaddedGroup(const unsigned char* at) noexcept {
  const std::uint32_t two = kBits[0][at[0]] | kBits[1][at[1]], three = two | kBits[2][at[2]];
  if (at[3] != '=') return {};
  if (three < kForeign) return {three, 3};
  return two < kForeign && at[2] == '=' ? ScatteredGroup{two, 2} : ScatteredGroup{};
}

// Takes the group that begins at `at`, which then is behind it. A zero byte ends the text.
inline ScatteredGroup TakeGroup(const unsigned char*& at, const unsigned char* end) noexcept {
  const unsigned char* from = at;
  if (end - from == 4) {
    const ScatteredGroup padded = PaddedGroup(from);
    if (padded.characters != 0) {
      at = end;
      return padded;
    }
  }
  std::uint32_t group = 0;
  int shift = 0;
  for (; from != end && *from != 0; ++from) {
    const std::uint32_t bits = kBits[0][*from];
    if (bits == kForeign) continue;
    group |= bits >> shift;
    shift += 6;
    if (shift == 24) {
      ++from;
      break;
    }
  }
  at = from;
  return {group, shift / 6};
}

// Decodes a text into up to `size` bytes and returns how many there are; none when they do not fit.
inline std::optional<std::int32_t> Decode(const unsigned char* text, const unsigned char* end, char* to,
                                          std::int32_t size) {
  Places at{text, to};
  const std::ptrdiff_t padded = end - text >= 4 && end[-1] == '=' ? 4 : 0;  // characters that are no whole group
  const auto room = [&] { return size - static_cast<std::int32_t>(at.to - to); };
  ScatteredGroup group;
  do {
    const auto whole = static_cast<std::uint32_t>(std::max<std::ptrdiff_t>(end - at.from - padded, 0)) / 4;
    ReadGroups(at, std::min(whole, static_cast<std::uint32_t>(room()) / 3));
    group = TakeGroup(at.from, end);
    const int bytes = group.characters * 3 / 4;
    if (bytes > room()) return std::nullopt;
    if (bytes > 0) *at.to++ = static_cast<char>(group.bits >> 16);
    if (bytes > 1) *at.to++ = static_cast<char>(group.bits >> 8);
    if (bytes > 2) *at.to++ = static_cast<char>(group.bits);
  } while (group.characters == 4);
  return static_cast<std::int32_t>(at.to - to);
}

// How many bytes a text stands for.
std::int32_t CountBytes(const unsigned char* text, const unsigned char* end) noexcept {
  std::uint64_t characters = 0;
  for (; text != end && *text != 0; ++text) characters += kBits[0][*text] != kForeign;
  return static_cast<std::int32_t>(characters * 3 / 4);
}

// The whole groups of a source, and the bytes behind them.
struct Groups {
  std::uint32_t whole, rest;
};

inline Groups GroupsOf(std::int32_t sourceLength) {
  const auto bytes = static_cast<std::uint32_t>(sourceLength);
  if (bytes > std::numeric_limits<std::int32_t>::max() / 4) throw std::bad_array_new_length();
  return {bytes / 3, bytes % 3};
}

inline std::int32_t RequiredLength(const Groups& groups, std::uint32_t flags) {
  const std::uint32_t length = 4 * groups.whole + (groups.rest != 0 ? 4 : 0);
  if ((flags & kBase64NoLineBreaks) != 0) return static_cast<std::int32_t>(length);
  const std::uint32_t characters = 4 * groups.whole + ((flags & kBase64NoPadding) != 0 ? 1 : 2) * groups.rest;
  return static_cast<std::int32_t>(length + 2 * (characters / kLineCharacters + 1));
}

}  // namespace

std::int32_t Base64RequiredLength(std::int32_t sourceLength, std::uint32_t flags) {
  return RequiredLength(GroupsOf(sourceLength), flags);
}

bool Base64EncodeText(const void* source, std::int32_t sourceLength, char* destination, std::int32_t* destinationLength,
                      std::uint32_t flags) {
  if (source == nullptr || destination == nullptr || destinationLength == nullptr) return false;
  const Groups groups = GroupsOf(sourceLength);
  if (*destinationLength < RequiredLength(groups, flags)) return false;
  char* const to = destination;
  Places at{static_cast<const unsigned char*>(source), to};
  const std::uint32_t line = (flags & kBase64NoLineBreaks) != 0 ? groups.whole + 1 : kLineGroups;
  std::uint32_t left = groups.whole;
  for (; left >= line; left -= line) {
    PutGroups(at, line);
    *at.to++ = '\r';
    *at.to++ = '\n';
  }
  PutGroups(at, left);
  if (groups.rest != 0) PutTail(at, groups.rest == 2, !(flags & kBase64NoPadding));
  *destinationLength = static_cast<std::int32_t>(at.to - to);
  return true;
}

bool Base64DecodeText(const char* source, std::int32_t sourceLength, void* destination,
                      std::int32_t* destinationLength) noexcept {
  if (source == nullptr || destinationLength == nullptr) return false;
  const auto* const text = reinterpret_cast<const unsigned char*>(source);
  const auto* const end = text + std::max(sourceLength, 0);
  if (destination != nullptr) {
    const auto count = Decode(text, end, static_cast<char*>(destination), std::max(*destinationLength, 0));
    if (count) {
      *destinationLength = *count;
      return true;
    }
  }
  *destinationLength = CountBytes(text, end);
  return false;
}

}  // namespace frame
