#include "kepires/prompt.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "shared/texts.h"
#include "text/text.h"

namespace kepires {
namespace {

constexpr std::string_view kBlanks = " \t";

/// True when the file name at `place` is a whole one: between a separator and a blank or the end.
bool IsWholeName(std::string_view text, std::size_t place, std::size_t length) noexcept {
  const bool begins = place == 0 || text[place - 1] == '\\' || text[place - 1] == '/' || text[place - 1] == ':';
  return begins && (place + length == text.size() || kBlanks.find(text[place + length]) != kBlanks.npos);
}

/// The switches that this program knows, each at most once.
struct Given {
  bool kind = false;
  bool checkOs = false;
  bool seconds = false;
  bool rebootMessage = false;
};

std::optional<ExitCode> Once(bool& given) noexcept {
  if (given) return kRepeatedSwitch;
  given = true;
  return std::nullopt;
}

/// A switch with a number, given once.
template <typename Number, typename Target>
std::optional<ExitCode> Take(std::string_view value, bool& given, Target& target) noexcept {
  if (const auto problem = Once(given)) return problem;
  using Limits = std::numeric_limits<Number>;
  const auto number = devkit::ParseNumber(value, Limits::min(), Limits::max());
  if (!number) return kBadNumber;
  target = static_cast<Number>(*number);
  return std::nullopt;
}

/// One word of the switches.
std::optional<ExitCode> ReadSwitch(std::string_view word, Given& given, Prompt& prompt) noexcept {
  const std::size_t colon = word.find(':');
  const std::string_view name = word.substr(0, colon);
  if (colon == word.npos) return text::SameName(name, "-CheckOS") ? Once(given.checkOs) : kUnknownSwitch;
  const std::string_view value = word.substr(colon + 1);
  if (text::SameName(name, "-MsgType")) return Take<std::int32_t>(value, given.kind, prompt.kind);
  if (text::SameName(name, "-sec")) return Take<std::int32_t>(value, given.seconds, prompt.seconds);
  if (text::SameName(name, "-RebootMsg")) return Take<std::uint32_t>(value, given.rebootMessage, prompt.rebootMessage);
  return kUnknownSwitch;
}

}  // namespace

std::string_view SwitchesOf(std::string_view commandLine, std::string_view fileName) noexcept {
  if (commandLine.starts_with('"')) {
    const std::size_t end = commandLine.find('"', 1);
    return commandLine.substr(end == commandLine.npos ? commandLine.size() : end + 1);
  }
  const std::size_t length = fileName.size();
  for (std::size_t place = commandLine.size(); length != 0 && place-- != 0;) {
    if (text::SameName(commandLine.substr(place, length), fileName) && IsWholeName(commandLine, place, length))
      return commandLine.substr(place + length);
  }
  return commandLine.substr(std::min(commandLine.find_first_of(kBlanks), commandLine.size()));
}

std::optional<ExitCode> ReadSwitches(std::string_view switches, Prompt& prompt) noexcept {
  Given given;
  for (;;) {
    switches.remove_prefix(std::min(switches.find_first_not_of(kBlanks), switches.size()));
    if (switches.empty()) break;
    const std::string_view word = switches.substr(0, switches.find_first_of(kBlanks));
    if (const auto problem = ReadSwitch(word, given, prompt)) return problem;
    switches.remove_prefix(word.size());
  }
  if (!given.kind) return kNoKind;
  return std::nullopt;
}

std::optional<std::uint32_t> TimeLimitOf(const Prompt& prompt) noexcept {
  if (prompt.kind == kInstallationDialog) return std::nullopt;
  const auto seconds = static_cast<std::uint32_t>(std::max<std::int32_t>(prompt.seconds.value_or(0), 0));
  if (prompt.kind == kRebootCountDown) return prompt.seconds ? seconds : kDefaultCountDown;
  if (seconds == 0) return std::nullopt;
  return seconds;
}

}  // namespace kepires
