#include "kelmnapi/component.h"

#include <string>

#include "KEAction.h"
#include "settings/own_settings.h"
#include "sharedfile/module_path.h"
#include "win/file.h"
#include "win/owner.h"
#include "win/process.h"

namespace kelmnapi {
namespace {

constexpr std::int32_t kUsualWaitMilliseconds = 10 * 60 * 1000;
constexpr std::int32_t kLongestWaitMilliseconds = 60 * 60 * 1000;

constexpr char kActionFunction[] = "Do";

/// The path of a component's files, up to their extension.
std::string StemOf(const std::string& ownFolder, std::string_view component) {
  std::string stem = ownFolder + "..\\";
  return stem.append(component).append("\\").append(component);
}

Outcome RunProgram(const std::string& path, std::string_view rest) {
  const auto limit = settings::ReadNumber("WAIT", "Milliseconds", kUsualWaitMilliseconds, 0, kLongestWaitMilliseconds);
  if (!limit) return {kBadSettings, {}};
  const win::Process process = win::StartProcess(
      ("\"" + path + "\"").append(rest),
      {.application = path.c_str(), .creationFlags = CREATE_NO_WINDOW, .startupFlags = STARTF_FORCEOFFFEEDBACK});
  if (!process) return {kNotStarted, {}};
  if (process.Wait(static_cast<DWORD>(*limit)) != WAIT_OBJECT_0) return {kNotEnded, {}};
  const auto exitCode = process.ExitCode();
  if (!exitCode) return {kNotEnded, {}};
  return {kSuccess, static_cast<std::int32_t>(*exitCode)};
}

Outcome CallAction(const std::string& path, std::uint32_t second) {
  const win::ModuleHandle module(LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
  if (!module) return {kNotStarted, {}};
  const auto action =
      reinterpret_cast<decltype(&Do)>(reinterpret_cast<void*>(GetProcAddress(module.Get(), kActionFunction)));
  if (action == nullptr) return {kNotStarted, {}};
  return {kSuccess, static_cast<std::int32_t>(action(kRunAction, second))};
}

}  // namespace

Outcome RunComponent(const ComponentCommand& command, std::uint32_t second) {
  char ownFolder[MAX_PATH];
  if (!sharedfile::FindBeside("", ownFolder)) return {kNoComponent, {}};
  const std::string stem = StemOf(ownFolder, command.component), program = stem + ".exe", module = stem + ".dll";
  if (win::Exists(program)) return RunProgram(program, command.rest);
  return win::Exists(module) ? CallAction(module, second) : Outcome{kNoComponent, {}};
}

}  // namespace kelmnapi
