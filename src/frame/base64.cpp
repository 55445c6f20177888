#include "frame/base64.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <limits>
#include <new>

namespace frame {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::int32_t kLineGroups = 19;  // of four characters
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

// Writes the last one or two bytes.
char* PutTail(char* to, const unsigned char* bytes, bool two, bool padded) noexcept {
  const unsigned group = unsigned{bytes[0]} << 10 | (two ? unsigned{bytes[1]} << 2 : 0u);  // 18 bits
  std::memcpy(to, kPairs[group >> 6].data(), 2);
  to += 2;
  if (two) *to++ = kAlphabet[group & 0x3F];
  if (padded) *to++ = '=';
  if (padded && !two) *to++ = '=';
  return to;
}

void PutGroup(char* to, const unsigned char* bytes) noexcept {
  const unsigned group = unsigned{bytes[0]} << 16 | unsigned{bytes[1]} << 8 | bytes[2];
  std::memcpy(to, kPairs[group >> 12].data(), 2);
  std::memcpy(to + 2, kPairs[group & 0xFFF].data(), 2);
}

// Writes `count` groups of three bytes, four characters each.
char* PutGroups(char* to, const unsigned char* bytes, std::int32_t count) noexcept {
  for (; count > 1; count -= 2, bytes += 6, to += 8) {
    PutGroup(to, bytes);
    PutGroup(to + 4, bytes + 3);
  }
  if (count > 0) {
    PutGroup(to, bytes);
    to += 4;
  }
  return to;
}

// The bits of four characters; kForeign is among them when one is not of the alphabet.
std::uint32_t WholeGroup(const unsigned char* at) noexcept {
  return kBits[0][at[0]] | kBits[1][at[1]] | kBits[2][at[2]] | kBits[3][at[3]];
}

// Skips groups of four characters, up to `end` or the first with a foreign one in it.
const unsigned char* SkipGroups(const unsigned char* at, const unsigned char* end) noexcept {
  while (at != end && WholeGroup(at) < kForeign) at += 4;
  return at;
}

// The same, and writes the three bytes of each.
const unsigned char* DecodeGroups(const unsigned char* at, const unsigned char* end, unsigned char* to) noexcept {
  for (; at != end; at += 4, to += 3) {
    const std::uint32_t group = WholeGroup(at);
    if (group >= kForeign) break;
    to[0] = static_cast<unsigned char>(group >> 16);
    to[1] = static_cast<unsigned char>(group >> 8);
    to[2] = static_cast<unsigned char>(group);
  }
  return at;
}

// Up to four characters, wherever they stand among foreign ones.
struct ScatteredGroup {
  std::uint32_t bits = 0;  // from bit 23 on
  int characters = 0;
};

// Takes the group that begins at `at`, which then is behind it. A zero byte ends the text.
ScatteredGroup TakeScattered(const unsigned char*& at, const unsigned char* end) noexcept {
  const unsigned char* from = at;
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

// Takes decoded bytes, as many as fit, and counts them all.
class BoundedOutput {
 public:
  BoundedOutput(void* to, std::int32_t size) noexcept
      : to_(static_cast<unsigned char*>(to)), size_(size), full_(to == nullptr) {}

  // Takes the groups of four characters that follow each other, as long as they fit, and returns what is behind them.
  const unsigned char* PutWhole(const unsigned char* at, const unsigned char* end) noexcept {
    auto groups = static_cast<std::int32_t>((end - at) / 4);
    if (!full_ && groups > (size_ - count_) / 3) groups = (size_ - count_) / 3;
    end = at + 4 * std::ptrdiff_t{groups};
    const unsigned char* const behind = full_ ? SkipGroups(at, end) : DecodeGroups(at, end, to_ + count_);
    count_ += static_cast<std::int32_t>((behind - at) / 4 * 3);
    return behind;
  }

  void Put(const ScatteredGroup& group) noexcept {
    const int bytes = group.characters * 3 / 4;
    if (count_ + bytes > size_) full_ = true;
    if (!full_) {
      unsigned char* const to = to_ + count_;
      if (bytes > 0) to[0] = static_cast<unsigned char>(group.bits >> 16);
      if (bytes > 1) to[1] = static_cast<unsigned char>(group.bits >> 8);
      if (bytes > 2) to[2] = static_cast<unsigned char>(group.bits);
    }
    count_ += bytes;
  }

  std::int32_t Count() const noexcept { return count_; }
  bool IsComplete() const noexcept { return !full_; }

 private:
  unsigned char* const to_;
  const std::int32_t size_;
  std::int32_t count_ = 0;
  bool full_;
};

inline std::int32_t RequiredLength(std::int32_t sourceLength, std::uint32_t flags) {
  if (sourceLength < 0 || sourceLength > std::numeric_limits<std::int32_t>::max() / 4)
    throw std::bad_array_new_length();
  const std::uint32_t bytes = static_cast<std::uint32_t>(sourceLength), rest = bytes % 3;
  const std::uint32_t length = bytes / 3 * 4 + ((flags & kBase64NoPadding) != 0 ? rest : 2 * rest);
  const std::uint32_t lines = (flags & kBase64NoLineBreaks) != 0 ? 0 : length / kLineCharacters + 1;
  return static_cast<std::int32_t>((length + 3) / 4 * 4 + 2 * lines);
}

}  // namespace

std::int32_t Base64RequiredLength(std::int32_t sourceLength, std::uint32_t flags) {
  return RequiredLength(sourceLength, flags);
}

bool Base64EncodeText(const void* source, std::int32_t sourceLength, char* destination, std::int32_t* destinationLength,
                      std::uint32_t flags) {
  if (source == nullptr || destination == nullptr || destinationLength == nullptr) return false;
  if (*destinationLength < RequiredLength(sourceLength, flags)) return false;
  const auto* from = static_cast<const unsigned char*>(source);
  const auto bytes = static_cast<std::uint32_t>(sourceLength);
  auto groups = static_cast<std::int32_t>(bytes / 3);
  char* to = destination;
  for (; groups >= kLineGroups && !(flags & kBase64NoLineBreaks); groups -= kLineGroups) {
    to = PutGroups(to, from, kLineGroups);
    from += 3 * kLineGroups;
    *to++ = '\r';
    *to++ = '\n';
  }
  to = PutGroups(to, from, groups);
  from += 3 * std::ptrdiff_t{groups};
  const std::uint32_t rest = bytes % 3;
  if (rest != 0) to = PutTail(to, from, rest == 2, !(flags & kBase64NoPadding));
  *destinationLength = static_cast<std::int32_t>(to - destination);
  return true;
}

bool Base64DecodeText(const char* source, std::int32_t sourceLength, void* destination,
                      std::int32_t* destinationLength) noexcept {
  if (source == nullptr || destinationLength == nullptr) return false;
  const auto* at = reinterpret_cast<const unsigned char*>(source);
  const auto* const end = at + std::max(sourceLength, 0);
  BoundedOutput output(destination, *destinationLength);
  ScatteredGroup last;
  do {
    at = output.PutWhole(at, end);
    last = TakeScattered(at, end);
    output.Put(last);
  } while (last.characters == 4);
  *destinationLength = output.Count();
  return output.IsComplete();
}

}  // namespace frame
