#include "tvevapi/json_line.h"

#include <charconv>
#include <cstring>

namespace tvevapi {
namespace {

constexpr unsigned kReplacementCharacter = 0xFFFD;

bool IsHighHalf(unsigned unit) noexcept { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLowHalf(unsigned unit) noexcept { return unit >= 0xDC00 && unit < 0xE000; }

}  // namespace

void JsonLine::Add(std::string_view bytes) noexcept {
  if (full_ || bytes.size() > kCapacity - kEnd.size() - size_) {
    full_ = true;
    return;
  }
  std::memcpy(bytes_ + size_, bytes.data(), bytes.size());
  size_ += bytes.size();
}

template <typename Value>
void JsonLine::Member(std::string_view name, Value addValue) noexcept {
  const std::size_t before = size_;
  full_ = false;
  Add(before == 1 ? "\"" : ",\"");
  Add(name);
  Add("\":");
  addValue();
  if (full_) size_ = before;
}

void JsonLine::Number(std::string_view name, std::int64_t value) noexcept {
  char digits[24];
  const char* const end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  Member(name, [&] { Add({digits, static_cast<std::size_t>(end - digits)}); });
}

void JsonLine::Null(std::string_view name) noexcept {
  Member(name, [&] { Add("null"); });
}

void JsonLine::True(std::string_view name) noexcept {
  Member(name, [&] { Add("true"); });
}

void JsonLine::AddUnit(unsigned unit) noexcept {
  static constexpr char kHex[] = "0123456789abcdef";
  const char itself = static_cast<char>(unit);
  if (unit == '"' || unit == '\\') {
    Add("\\");
    Add({&itself, 1});
  } else if (unit >= 0x20 && unit < 0x7F) {
    Add({&itself, 1});
  } else {
    const char escape[] = {'\\', 'u', kHex[unit >> 12], kHex[unit >> 8 & 15], kHex[unit >> 4 & 15], kHex[unit & 15]};
    Add({escape, sizeof escape});
  }
}

void JsonLine::Text(std::string_view name, std::wstring_view units) noexcept {
  Member(name, [&] {
    Add("\"");
    bool afterHighHalf = false;
    for (std::size_t i = 0; i < units.size(); ++i) {
      const unsigned unit = static_cast<std::uint16_t>(units[i]);
      const bool beforeLowHalf = i + 1 < units.size() && IsLowHalf(static_cast<std::uint16_t>(units[i + 1]));
      const bool alone = (IsHighHalf(unit) && !beforeLowHalf) || (IsLowHalf(unit) && !afterHighHalf);
      AddUnit(alone ? kReplacementCharacter : unit);
      afterHighHalf = IsHighHalf(unit);
    }
    Add("\"");
  });
}

std::string_view JsonLine::Finish() noexcept {
  std::memcpy(bytes_ + size_, kEnd.data(), kEnd.size());
  size_ += kEnd.size();
  return {bytes_, size_};
}

}  // namespace tvevapi
