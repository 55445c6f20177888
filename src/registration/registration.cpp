#include "registration/registration.h"

#include <cstring>
#include <initializer_list>
#include <span>
#include <string>

#include "registration/texts.h"
#include "siblings/modules.h"
#include "siblings/programs.h"
#include "siblings/settings_file.h"
#include "text/paths.h"
#include "text/text.h"
#include "trace/trace.h"
#include "win/file.h"
#include "win/module.h"
#include "win/registry.h"

namespace registration {

namespace {

using text::FileIn;
using trace::Export;
using trace::ExportCall;

// Creates a folder of the installation folder and, in it, "Config"; answers with the latter.
std::string MakeConfigFolder(const std::string& root, const char* folder) {
  const std::string host = FileIn(root, folder);
  win::MakeFolder(host);
  std::string config = FileIn(host, "Config");
  win::MakeFolder(config);
  return config;
}

// Writes a whole file. A write that fails, as on a full disk, is not told.
KE_RESULT WriteText(const char* function, const std::string& path, const std::string& text) {
  const win::FileHandle file = win::CreateForUpdate(path);
  if (!file) {
    Trace(trace::kDetail, function, "Could not open %s. Error %d", path.c_str(), static_cast<int>(GetLastError()));
    return KE_STORE_UNUSABLE;
  }
  win::Write(file, text.data(), text.size());
  return KE_SUCCESS;
}

KE_RESULT WritePluginTokens(const char* function, const std::string& root) {
  return WriteText(function, FileIn(MakeConfigFolder(root, "KESLPMNG"), "plugins.tok"), PluginTokens(root));
}

KE_RESULT WriteSchedulerTokens(const char* function, const std::string& root) {
  const std::string config = MakeConfigFolder(root, "Scheduler");
  const KE_RESULT result = WriteText(function, FileIn(config, "tokens.tok"), SchedulerTokens(root));
  if (result != KE_SUCCESS) return result;
  for (const auto& program : kScheduledPrograms) win::MakeFolder(FileIn(root, program.folder));
  return KE_SUCCESS;
}

KE_RESULT WriteWatchdogServices(const char* function, const std::string& root) {
  const std::string folder = FileIn(root, "KESWD");
  win::MakeFolder(folder);
  const std::string file = FileIn(folder, "KesWD.conf");
  for (const auto& service : kWatchedServices) {
    win::MakeFolder(FileIn(root, service.folder));
    const std::string program = QuotedPath(root, service);
    if (!siblings::WriteProfileValue(function, file, "SERVICES", service.name, program.c_str()))
      return KE_STORE_UNUSABLE;
  }
  return KE_SUCCESS;
}

KE_RESULT WriteBelow(const char* function, const char* root,
                     KE_RESULT (*write)(const char* function, const std::string& root)) {
  return ExportCall(function, [&](Export& self) -> KE_RESULT {
    const std::string folder = InstallRoot(root, win::IsLeadByte);
    if (folder.empty()) return KE_MISSING_ARGUMENT;
    return write(self.name, folder);
  });
}

}  // namespace

KE_RESULT MkKesLpMngTokens(const char* root) { return WriteBelow(__func__, root, WritePluginTokens); }

KE_RESULT MkSchedulerKepLpMngToken(const char* root) { return WriteBelow(__func__, root, WriteSchedulerTokens); }

KE_RESULT MkKesWdTokens(const char* root) { return WriteBelow(__func__, root, WriteWatchdogServices); }

namespace {

using text::FileIn;

constexpr InstalledFile kConfigurationPlugins[] = {
    {"KELSYSCF", "KELSYSCF", "KELSYSCF.dll"},
    {"KELTASK", "KELTASK", "KELTASK.dll"},
};
constexpr InstalledFile kUpdatePlugins[] = {{"KEAGENT", "KELSYSUD", "KelSysUd.dll"}};
constexpr InstalledFile kUpgradePlugins[] = {{"KEAGENT", "KELSYSIN", "KelSysIn.dll"}};

// Characters: with the files below it, a path has fewer than the 32,767 that Windows may crash on.
constexpr std::size_t kLongestRoot = 32000;

/// A module that hosts plug-ins: its folder, its file in there, and the plug-ins it always has.
struct HostModule {
  const char* folder;
  const char* file;
  std::span<const InstalledFile> plugins;
};

constexpr HostModule kConfiguration{"KELCONF", "KELCONF.INI", kConfigurationPlugins};
constexpr HostModule kUpdate{"KELUPD", "KELUPD.INI", kUpdatePlugins};
constexpr HostModule kUpgrade{"KELUPG", "KELUPG.INI", kUpgradePlugins};

KE_RESULT Register(const char* function, const HostModule& host, const char* root) {
  const std::string installation = InstallRoot(root, win::IsLeadByte);
  if (installation.empty()) return KE_MISSING_ARGUMENT;
  const std::string folder = FileIn(installation, host.folder);
  win::MakeFolder(folder);
  for (const auto& plugin : host.plugins) win::MakeFolder(FileIn(installation, plugin.folder));
  const std::string file = FileIn(folder, host.file);
  for (const auto& plugin : host.plugins) {
    const std::string library = QuotedPath(installation, plugin);
    if (!siblings::WriteProfileValue(function, file, "PLUGINS", plugin.name, library.c_str())) return KE_STORE_UNUSABLE;
  }
  return KE_SUCCESS;
}

}  // namespace

KE_RESULT RegisterStdKelConfPlugins(const char* root) { return Register(__func__, kConfiguration, root); }

KE_RESULT RegisterStdKelUpdPlugins(const char* root) { return Register(__func__, kUpdate, root); }

KE_RESULT RegisterStdKelUpgPlugins(const char* root) { return Register(__func__, kUpgrade, root); }

KE_RESULT WriteRegistrationFiles(const char* root) {
  if (strnlen(root, kLongestRoot + 1) > kLongestRoot) return KE_STORE_UNUSABLE;
  for (const auto write : {MkSchedulerKepLpMngToken, MkKesLpMngTokens, MkKesWdTokens, RegisterStdKelConfPlugins,
                           RegisterStdKelUpdPlugins, RegisterStdKelUpgPlugins}) {
    if (const KE_RESULT result = write(root); result != KE_SUCCESS) return result;
  }
  return KE_SUCCESS;
}

namespace {

using text::SameName;

constexpr std::string_view kConsolePlugin = "KEC";
constexpr char kConfigurationPlugin[] = "KELSYSCF";
constexpr char kSubscribed[] = "YES";
constexpr const char* kRemoved = nullptr;  // as a value it removes the key

/// One section of a module's file.
struct Section {
  // A null value removes the key.
  KE_RESULT Write(const char* key, const char* value) const {
    if (file.empty()) return KE_NO_MODULE_DIRECTORY;
    return siblings::WriteProfileValue(function, file, name.c_str(), key, value) ? KE_SUCCESS : KE_STORE_UNUSABLE;
  }
  const char* function;  // that failures are traced under
  std::string file;
  std::string name;
};

Section Plugins(const char* function, const char* host) { return {function, ModuleFile(host), "PLUGINS"}; }

Section InstalledComponents(const char* function, const char* host) {
  return {function, ModuleFile(host), "INSTALLED"};
}

Section Subscribers(const char* function, const char* type) {
  return {function, ModuleFile("KELConf"), std::string("TYPES_") + type};
}

KE_RESULT RemoveUpdateInformation(const char* function, const char* key) {
  const std::string command = std::string("KELUPD -REMOVEINFO:") + key;
  const auto run = siblings::RunLauncherCommand(function, "KELUPD", command.c_str());
  if (!run.launcherBound) return KE_LAUNCHER_NOT_LOADED;
  if (run.launcherResult != 0) return KE_PROGRAM_NOT_STARTED;
  if (run.exitCode == 0) return KE_SUCCESS;
  siblings::TraceLauncherCommandFailed(function, "KELUPD", run.exitCode);
  return KE_STORE_UNUSABLE;
}

// Gives the configuration module's plug-in `value` when the console's plug-in comes or goes. Letter case counts here.
KE_RESULT SwitchDefaultSubscriber(const Section& subscribers, const char* key, const char* value) {
  return key == kConsolePlugin ? subscribers.Write(kConfigurationPlugin, value) : KE_RESULT{KE_SUCCESS};
}

}  // namespace

std::string ModuleFile(std::string_view module) {
  const auto directory = win::KeptModuleDirectory();
  if (directory.empty()) return {};
  return text::SiblingFolder(directory, module).append(module).append(".ini");
}

KE_RESULT AddPlugin(const char* function, const char* key, const char* host, const char* value) {
  return Plugins(function, host).Write(key, value);
}

KE_RESULT RemovePlugin(const char* function, const char* key, const char* host) {
  if (const KE_RESULT result = Plugins(function, host).Write(key, kRemoved); result != KE_SUCCESS) return result;
  if (SameName(host, "KELUpg")) return InstalledComponents(function, host).Write(key, "NOT");
  if (SameName(host, "KELUpd")) return RemoveUpdateInformation(function, key);
  return KE_SUCCESS;
}

KE_RESULT SetInstalledVersion(const char* function, const char* key, const char* version) {
  const KE_RESULT result = InstalledComponents(function, "KELUpg").Write(key, version);
  if (result != KE_SUCCESS) return result;
  if (SameName(key, "KEAGENT")) siblings::ExecuteLocalProcessAction("KELUPG", 1, 0);
  return KE_SUCCESS;
}

KE_RESULT AddSubscription(const char* function, const char* key, const char* type) {
  const Section subscribers = Subscribers(function, type);
  if (const KE_RESULT result = SwitchDefaultSubscriber(subscribers, key, kRemoved); result != KE_SUCCESS) return result;
  return subscribers.Write(key, kSubscribed);
}

KE_RESULT RemoveSubscription(const char* function, const char* key, const char* type) {
  const Section subscribers = Subscribers(function, type);
  if (const KE_RESULT result = SwitchDefaultSubscriber(subscribers, key, kSubscribed); result != KE_SUCCESS)
    return result;
  return subscribers.Write(key, kRemoved);
}

std::string PluginFolder(std::string directory) {
  if (!text::EndsInBackslash(directory, win::IsLeadByte) && !directory.ends_with('/')) directory += '\\';
  return directory;
}

KE_RESULT ReRegisterPluginsFromRegistry() {
  trace::Trace(trace::kInfo, __func__, "Function start");
  const auto names = win::ValueNames(HKEY_LOCAL_MACHINE, kProtectionsKey, kLongestProtection);
  if (!names) {
    trace::Trace(trace::kDetail, __func__, "Could not open the registry key %s", kProtectionsKey);
    return KE_REGISTRY_UNUSABLE;
  }
  for (const auto& name : *names) {
    if (!name.empty()) ReRegisterOnePluginFromRegistry(name.c_str());
  }
  return KE_SUCCESS;
}

void ReRegisterOnePluginFromRegistry(const char* valueName) {
  trace::Trace(trace::kInfo, __func__, "Function start");
  const auto directory =
      win::ReadTextValue(HKEY_LOCAL_MACHINE, kProtectionsKey, valueName, kLongestProtectionDirectory);
  if (!directory) {
    trace::Trace(trace::kDetail, __func__, "Could not read the directory of the plug-in %s", valueName);
    return;
  }
  if (siblings::LoadPluginReload(PluginFolder(*directory).c_str())) siblings::PluginReload().KE_ReloadPlugins();
  siblings::FreePluginReload();  // also a module that lacks the function
}

}  // namespace registration
