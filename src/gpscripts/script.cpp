#include "gpscripts/script.h"

#include <algorithm>

namespace gpscripts {
namespace {

bool IsPlain(std::wstring_view text, std::size_t longest) noexcept {
  const auto isControl = [](wchar_t c) { return c < L' ' || c == 0x7F; };
  return text.size() <= longest && std::ranges::none_of(text, isControl);
}

}  // namespace

bool FitsPolicy(const Script& script) noexcept {
  return IsPlain(script.program, kLongestProgram) && IsPlain(script.parameters, kLongestParameters);
}

bool Matches(const Script& script, const ScriptMatch& wanted) noexcept {
  return script.parameters == wanted.parameters && (wanted.program.empty() || script.program == wanted.program);
}

std::optional<std::uint32_t> EntryNumber(std::wstring_view text) noexcept {
  constexpr std::size_t kMostDigits = 9;
  if (text.empty() || text.size() > kMostDigits || (text.size() > 1 && text.front() == L'0')) return std::nullopt;
  std::uint32_t number = 0;
  for (const wchar_t digit : text) {
    if (digit < L'0' || digit > L'9') return std::nullopt;
    number = number * 10 + static_cast<std::uint32_t>(digit - L'0');
  }
  return number;
}

}  // namespace gpscripts
