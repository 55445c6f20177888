#include "kelmnapi/component_command.h"

#include <algorithm>
#include <iterator>

namespace kelmnapi {
namespace {

constexpr char UpperCase(char c) noexcept { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

constexpr bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }

constexpr bool IsNameCharacter(char c) noexcept { return IsDigit(c) || (UpperCase(c) >= 'A' && UpperCase(c) <= 'Z'); }

/// The platform takes such a name for a device, in every folder and with any extension.
bool IsDevice(std::string_view name) noexcept {
  constexpr std::string_view kPlain[] = {"CON", "PRN", "AUX", "NUL"}, kNumbered[] = {"COM", "LPT"};
  const auto isName = [](std::string_view text) {
    return [text](std::string_view device) {
      return std::equal(text.begin(), text.end(), device.begin(), device.end(),
                        [](char a, char b) { return UpperCase(a) == b; });
    };
  };
  if (std::any_of(std::begin(kPlain), std::end(kPlain), isName(name))) return true;
  return name.size() == 4 && IsDigit(name[3]) &&
         std::any_of(std::begin(kNumbered), std::end(kNumbered), isName(name.substr(0, 3)));
}

bool IsName(std::string_view name) noexcept {
  return !name.empty() && name.size() <= kLongestName && std::all_of(name.begin(), name.end(), IsNameCharacter) &&
         !IsDevice(name);
}

}  // namespace

std::optional<ComponentCommand> ParseCommand(std::string_view command) noexcept {
  if (command.size() > kLongestCommand) return std::nullopt;
  const std::size_t end = std::min(command.find_first_of(" \t"), command.size());
  const ComponentCommand parts{command.substr(0, end), command.substr(end)};
  return IsName(parts.component) ? std::optional(parts) : std::nullopt;
}

}  // namespace kelmnapi
