#include "upgrade/upgrade.h"

#include <cstdio>
#include <cstring>
#include <string>

#include "registration/registration.h"
#include "registration/texts.h"
#include "schedule/jobs.h"
#include "siblings/programs.h"
#include "siblings/settings_file.h"
#include "siblings/sibling_table.h"
#include "store/accessors.h"
#include "store/integra_store.h"
#include "text/paths.h"
#include "trace/trace.h"
#include "upgrade/settings.h"
#include "win/module.h"
#include "win/process.h"
#include "win/profile.h"

namespace upgrade {

namespace {

using trace::kAlways;
using trace::kDetail;
using trace::kInfo;
using trace::RunStep;

constexpr std::size_t kLongestDirectory = 511;  // characters
constexpr std::size_t kTypeSize = 9;            // of the buffers for a message type and a server, with the terminator
constexpr std::size_t kServerSize = 512;
constexpr DWORD kTestMilliseconds = 180000;
constexpr std::uint32_t kSuccessRebootRequired = 3010;  // ERROR_SUCCESS_REBOOT_REQUIRED of Windows Installer
constexpr std::int32_t kRetiredReportTask = 5;

std::string PathOf(const std::string& root, const char* directory, const char* file) {
  return text::FileIn(text::FileIn(root, directory), file);
}

bool Write(const std::string& path, const char* section, const char* key, const char* value) {
  return siblings::WriteProfileValue("KE_UpgradeStart", path, section, key, value);
}

bool Exists(const std::string& path, const char* section, const char* key, std::size_t size) {
  return win::ReadProfile(path, section, key, "-1", size) != "-1";
}

bool Apply(const std::string& path, const MessageChange& change) {
  if (change.value) return Write(path, change.section, change.key, change.value);
  const std::string copied = win::ReadProfile(path, change.from, change.key, "", kServerSize);
  return Write(path, change.section, change.key, copied.c_str());
}

bool UpdateMessages(const std::string& root) {
  const std::string path = PathOf(root, "KESAgent", "KE_AGPRX.dat");
  bool good = true;
  for (const MessageType& row : MessageTypes()) {
    const bool listed = Exists(path, kTypesSection, row.message, kTypeSize);
    const bool hasServer =
        row.section.written == Written::kEveryRun && Exists(path, row.section.name, kServerKey, kServerSize);
    for (const MessageChange& change : ChangesOf(row, listed, hasServer)) good &= Apply(path, change);
  }
  return good;
}

bool Apply(const std::string& path, const Setting& row) {
  if (row.change == Change::kSetWhenAbsent && win::ReadProfileNumber(path, row.section, row.key, -1) != -1) return true;
  if (row.change == Change::kRemoveKey)  // by the settings functions, which trace it
    return siblings::SetMyConfigIniValue(row.section, row.key, nullptr, path.c_str()) == KE_SUCCESS;
  return Write(path, row.section, row.key, row.value);
}

bool UpdateSettings(const std::string& root, std::span<const Setting> rows) {
  bool good = true;
  for (const Setting& row : rows) {
    const bool applied = Apply(PathOf(root, row.directory, row.file), row);
    good &= applied || row.failure == Failure::kIgnored;
  }
  return good;
}

bool UpdateOptionalFiles(const std::string& root) {
  const std::string path = PathOf(root, "KELUpd", "KelUpd.ini");
  for (const OptionalFile& row : OptionalFiles()) {
    if (!Write(path, "OPTIONAL_FILES", row.name, row.value)) return false;
  }
  return true;
}

// The command line of the plug-in manager.
std::string PluginManagerCommand(const std::string& arguments) {
  const auto& manager = siblings::kPluginManager;
  return siblings::QuotedCommand(win::ComponentFile(manager.folder, manager.file), arguments);
}

// A job of the upgrade, and the trace of its failure.
struct UpgradeJob {
  KE_RESULT (*schedule)();
  const char* failure;
};

constexpr UpgradeJob kUpgradeJobs[] = {
    {schedule::ScheduleRebootTasks,
     "Reprogramming ZUMat task error, not possible edit KELUpdTask [TaskId:8] - Error Code: %d"},
    {schedule::SchedulePeriodicTasks, "Reprogramming ZUMat periodic tasks error - Error Code: %d"},
    {[] {
       return schedule::SetPeriodicTask({schedule::kPluginManager, "KELQTINE", "-A:GETINFO", 4}, 60, true);
     },
     "Reprogramming ZUMat task error, not possible edit KELQtineTask [TaskId:4] - Error Code: %d"},
    {[] { return schedule::KE_DeleteSheduledTask(kRetiredReportTask); },
     "Deleting ZUMat task error, not possible delete KELReportTask -S [TaskId:5] - Error Code: %d"},
    {[] {
       return schedule::SetPeriodicTask({schedule::kPluginManager, "KELREPORT", "-M", 15}, 60, false);
     },
     "Reprogramming ZUMat task error, not possible edit KELReportTask [TaskId:15] - Error Code: %d"},
};

}  // namespace

KE_RESULT StartUpgrade(const char* installDir) {
  const std::string directory(installDir, strnlen(installDir, kLongestDirectory));
  const std::string root = registration::InstallRoot(directory.c_str(), win::IsLeadByte);
  if (root.empty()) return KE_MISSING_ARGUMENT;
  bool good = UpdateMessages(root);
  good &= UpdateSettings(root, EventAndTokenSettings());
  good &= UpdateOptionalFiles(root);
  good &= UpdateSettings(root, AgentSettings());
  good &= registration::MkKesLpMngTokens(directory.c_str()) == KE_SUCCESS;  // removes the backslash itself
  good &= UpdateSettings(root, ModuleSettings());
  return good ? KE_SUCCESS : KE_STORE_UNUSABLE;
}

KE_RESULT SetIntegrationServer(const char* server) {
  const std::string file = win::ComponentFile("KESAgent", "KE_AGPRX.dat");
  if (file.empty()) return KE_NO_MODULE_DIRECTORY;
  const std::string dispatcher =
      std::string(kServiceBaseAddress) + "/Orvane/Services/Agents/Facade/SecureMessageDispatcher";
  const std::string address = dispatcher + "/ISecureMessages";
  bool good = true;
  for (const char* section : {"IntegrationMessage", "IntegrationMessageInstall"}) {
    good &= win::WriteProfile(file, section, kServerKey, server);
    good &= win::WriteProfile(file, section, kNamespaceKey, dispatcher.c_str());
    good &= win::WriteProfile(file, section, kAddressKey, address.c_str());
  }
  return good ? KE_SUCCESS : KE_STORE_UNUSABLE;
}

KE_RESULT IntegrateComputerKelTest() {
  if (store::IsComputerIntegrated()) {
    Trace(kInfo, __func__, "We are integrated, no need to launch keltest");
    return KE_SUCCESS;
  }
  const std::string command = PluginManagerCommand("KELTest -FORCE ");
  Trace(kInfo, __func__, "CommandLine launched by IntegrateComputerKelTest: [%s]", command.c_str());
  const win::Process process = siblings::StartInBackground(__func__, {command});
  if (!process) return KE_PROGRAM_NOT_STARTED;
  const DWORD waited = siblings::WaitForProgram(__func__, process, kTestMilliseconds);
  if (waited == WAIT_OBJECT_0 || waited == WAIT_TIMEOUT)
    Trace(kInfo, __func__, "Integration KelTest %s", waited == WAIT_OBJECT_0 ? "finished" : "not finished");
  return KE_SUCCESS;
}

KE_RESULT CompleteUpgrade(const char* function, std::uint32_t resultCode, const char* version) {
  RunStep(IntegrateComputerKelTest);
  for (const UpgradeJob& job : kUpgradeJobs) {
    const KE_RESULT scheduled = RunStep(job.schedule);
    if (scheduled != KE_SUCCESS) Trace(kDetail, function, job.failure, static_cast<int>(scheduled));
  }
  KE_RESULT result = KE_SUCCESS;
  if (resultCode == 0 || resultCode == kSuccessRebootRequired)
    result = store::SetText(store::RowOf(store::kTextSetters, "KE_SetAgentVersion"), version);
  if (result == KE_SUCCESS) result = ScheduleUpgradeComplete(static_cast<std::int32_t>(resultCode), version);
  if (RunStep([&] { return store::KeepAsStartCopy(function); }) != KE_SUCCESS)
    Trace(kAlways, function, "Error copying from Integra.start");
  return result;
}

KE_RESULT ScheduleUpgradeComplete(std::int32_t resultCode, const char* version) noexcept {
  return trace::ExportCall("KE_ScheduleUpgradeComplete", [&](trace::Export& self) -> KE_RESULT {
    char arguments[1024];
    std::snprintf(arguments, sizeof arguments, "KELUpg -FORCE -CONTINUE -UPGCOMPLETE:%d -VERSION:%s",
                  static_cast<int>(resultCode), version ? version : "");
    const std::string command = PluginManagerCommand(arguments);
    Trace(kDetail, self.name, "CommandLine launched by KE_ScheduleUpgradeComplete: [%s]", command.c_str());
    return siblings::StartInBackground(self.name, {command}) ? KE_SUCCESS : KE_PROGRAM_NOT_STARTED;
  });
}

}  // namespace upgrade
