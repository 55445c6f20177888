#include "services/agent_programs.h"

#include "frame/module.h"
#include "frame/paths.h"
#include "frame/sibling_program.h"
#include "frame/trace.h"

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
  return Quoted(frame::SiblingFolder(frame::GetModuleDirectory(), "KesLpmng") + "KEPLPMNG.exe", arguments);
}

KE_RESULT StartInstallHelper(const char* function) {
  const std::string directory = frame::GetModuleDirectory();
  const auto commandIn = [](const std::string& folder) { return Quoted(folder + "KepWInst.exe", "-FORCE"); };
  const bool started = static_cast<bool>(frame::StartInBackground(
      function, {commandIn(frame::SiblingFolder(directory, "KepWInst")), commandIn(frame::OwnFolder(directory))}));
  return started ? KE_SUCCESS : KE_INSTALL_HELPER_NOT_STARTED;
}

KE_RESULT IntegrateComputerKelTest() {
  if (IsComputerIntegrated()) {
    Trace(kInfo, __func__, "We are integrated, no need to launch keltest");
    return KE_SUCCESS;
  }
  const std::string command = PluginManagerCommand("KELTest -FORCE ");
  Trace(kInfo, __func__, "CommandLine launched by IntegrateComputerKelTest: [%s]", command.c_str());
  const win::Process process = frame::StartInBackground(__func__, {command});
  if (!process) return KE_PROGRAM_NOT_STARTED;
  switch (frame::WaitForProgram(__func__, process, kTestMilliseconds)) {
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
