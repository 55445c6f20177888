#include "services/agent_programs.h"

#include "frame/module.h"
#include "frame/paths.h"
#include "frame/sibling_program.h"
#include "frame/trace.h"
#include "frame/waiting.h"

namespace services {
namespace {

using frame::kInfo;

constexpr DWORD kTestMilliseconds = 180000;

std::string Quoted(const std::string& program, const std::string& arguments) {
  return "\"" + program + "\" " + arguments;
}

}  // namespace

bool IsComputerIntegrated() {
  std::int32_t integrated = 0;
  return KE_IsIntegrated(&integrated) == KE_SUCCESS && integrated != 0;
}

std::string PluginManagerCommand(const std::string& arguments) {
  const std::string directory = frame::GetModuleDirectory();
  if (directory.empty()) return {};
  return Quoted(frame::SiblingFolder(directory, "KesLpmng") + "KEPLPMNG.exe", arguments);
}

KE_RESULT StartInstallHelper() {
  const std::string directory = frame::GetModuleDirectory();
  // Without a directory the program would be looked for at the root of the current drive.
  if (directory.empty()) return KE_INSTALL_HELPER_NOT_STARTED;
  for (const std::string& folder : {frame::SiblingFolder(directory, "KepWInst"), frame::OwnFolder(directory)}) {
    if (frame::StartInBackground(Quoted(folder + "KepWInst.exe", "-FORCE"))) return KE_SUCCESS;
  }
  return KE_INSTALL_HELPER_NOT_STARTED;
}

KE_RESULT IntegrateComputerKelTest() {
  if (IsComputerIntegrated()) {
    Trace(kInfo, __func__, "We are integrated, no need to launch keltest");
    return KE_SUCCESS;
  }
  const std::string command = PluginManagerCommand("KELTest -FORCE ");
  Trace(kInfo, __func__, "CommandLine launched by IntegrateComputerKelTest: [%s]", command.c_str());
  const win::Process process = frame::StartInBackground(command);
  if (!process) return KE_PROGRAM_NOT_STARTED;
  switch (frame::WaitForEnd(process, kTestMilliseconds)) {
    case WAIT_OBJECT_0:
      Trace(kInfo, __func__, "Integration KelTest finished");
      break;
    case WAIT_TIMEOUT:
      Trace(kInfo, __func__, "Integration KelTest not finished");
      break;
    default:
      break;
  }
  return KE_SUCCESS;
}

}  // namespace services
