#include "agent/texts.h"

namespace agent {

namespace {

constexpr std::string_view kPlaceholder = "%s";
constexpr std::size_t kLongest = kDescriptionSize - 1;

// `format` contains the placeholder. From left to right, so that of "%%s" the percent sign is taken first.
std::string Formatted(std::string_view format, std::string_view insert) {
  std::string text;
  bool inserted = false;
  while (!format.empty() && text.size() < kLongest) {
    if (format.starts_with("%%")) {
      text += '%';
      format.remove_prefix(2);
    } else if (!inserted && format.starts_with(kPlaceholder)) {
      text += insert.substr(0, kLongest);
      inserted = true;
      format.remove_prefix(kPlaceholder.size());
    } else {
      text += format.front();
      format.remove_prefix(1);
    }
  }
  return text;
}

std::string KindSwitch(std::int32_t kind) { return " -MsgType:" + std::to_string(kind); }

}  // namespace

std::string DescriptionText(std::string_view resource, std::string_view insert) {
  const bool takesText = resource.find(kPlaceholder) != resource.npos;
  std::string text = takesText ? Formatted(resource, insert) : std::string(resource.substr(0, kLongest));
  if (text.size() > kLongest) text.resize(kLongest);
  return text;
}

std::string PromptSwitches(std::int32_t kind, std::optional<std::int32_t> seconds) {
  const std::string switches = KindSwitch(kind) + " -CheckOS";
  return seconds ? switches + " -sec:" + std::to_string(*seconds) : switches;
}

std::string InstallDialogSwitches(std::uint32_t rebootMessage) {
  return KindSwitch(kInstallDialogPrompt) + " -RebootMsg:" + std::to_string(rebootMessage) + " -CheckOS";
}

}  // namespace agent
