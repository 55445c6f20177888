#include "services/prompt_command.h"

#include "frame/paths.h"

namespace services {
namespace {

std::string KindSwitch(std::int32_t kind) { return " -MsgType:" + std::to_string(kind); }

}  // namespace

std::string PromptProgram(std::string_view moduleDirectory) {
  return frame::SiblingFolder(moduleDirectory, "KESAgent") + "KePIRes.exe";
}

std::string PromptSwitches(std::int32_t kind, std::optional<std::int32_t> seconds) {
  const std::string switches = KindSwitch(kind) + " -CheckOS";
  return seconds ? switches + " -sec:" + std::to_string(*seconds) : switches;
}

std::string InstallDialogSwitches(std::uint32_t rebootMessage) {
  return KindSwitch(kInstallDialogPrompt) + " -RebootMsg:" + std::to_string(rebootMessage) + " -CheckOS";
}

}  // namespace services
