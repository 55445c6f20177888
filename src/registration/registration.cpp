#include "registration/registration.h"

#include <cstring>
#include <span>

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
using text::SameName;

constexpr InstalledFile kConfigurationPlugins[] = {
    {"KELSYSCF", "KELSYSCF", "KELSYSCF.dll"},
    {"KELTASK", "KELTASK", "KELTASK.dll"},
};
constexpr InstalledFile kUpdatePlugins[] = {{"KEAGENT", "KELSYSUD", "KelSysUd.dll"}};
constexpr InstalledFile kUpgradePlugins[] = {{"KEAGENT", "KELSYSIN", "KelSysIn.dll"}};

/// A module that hosts plug-ins: its folder, its file in there, and its standard plug-ins.
struct HostModule {
  const char* function;  // that failures are traced under
  const char* folder;
  const char* file;
  std::span<const InstalledFile> plugins;
};

constexpr HostModule kHostModules[] = {
    {"RegisterStdKelConfPlugins", "KELCONF", "KELCONF.INI", kConfigurationPlugins},
    {"RegisterStdKelUpdPlugins", "KELUPD", "KELUPD.INI", kUpdatePlugins},
    {"RegisterStdKelUpgPlugins", "KELUPG", "KELUPG.INI", kUpgradePlugins},
};

// Characters: with the files below it, a path has fewer than the 32,767 that Windows may crash on.
constexpr std::size_t kLongestRoot = 32000;

constexpr std::string_view kConsolePlugin = "KEC";
constexpr char kConfigurationPlugin[] = "KELSYSCF";
constexpr char kSubscribed[] = "YES";
constexpr const char* kRemoved = nullptr;  // as a value it removes the key

// Creates `folder` below `root`, and its folder Config, and writes a file there. The result of a write, as on a full
// disk, is ignored.
KE_RESULT WriteConfigFile(const char* function, const std::string& root, const char* folder, const char* file,
                          const std::string& content) {
  win::MakeFolder(FileIn(root, folder));
  const std::string config = FileIn(FileIn(root, folder), "Config"), path = FileIn(config, file);
  win::MakeFolder(config);
  const win::FileHandle opened = win::CreateForUpdate(path);
  if (!opened) {
    Trace(trace::kDetail, function, "Could not open %s. Error %d", path.c_str(), static_cast<int>(GetLastError()));
    return KE_STORE_UNUSABLE;
  }
  win::Write(opened, content.data(), content.size());
  return KE_SUCCESS;
}

// Creates the folder of each file and stores its path in one section of a settings file, under its name.
KE_RESULT WritePaths(const char* function, const std::string& file, const char* section, const std::string& root,
                     std::span<const InstalledFile> files) {
  for (const auto& installed : files) {
    win::MakeFolder(FileIn(root, installed.folder));
    const std::string path = QuotedPath(root, installed);
    if (!siblings::WriteProfileValue(function, file, section, installed.name, path.c_str())) return KE_STORE_UNUSABLE;
  }
  return KE_SUCCESS;
}

// Runs `write(function, root)` with the installation folder, in the shape of an export.
template <typename Write>
KE_RESULT WriteBelow(const char* function, const char* root, Write write) {
  return trace::ExportCall(function, [&](trace::Export& self) -> KE_RESULT {
    const std::string folder = InstallRoot(root, win::IsLeadByte);
    return folder.empty() ? KE_RESULT{KE_MISSING_ARGUMENT} : write(self.name, folder);
  });
}

// tokens.tok: the programs that scheduler jobs may name.
KE_RESULT MkSchedulerKepLpMngToken(const char* root) {
  return WriteBelow(__func__, root, [](const char* function, const std::string& folder) {
    const KE_RESULT result = WriteConfigFile(function, folder, "Scheduler", "tokens.tok", SchedulerTokens(folder));
    if (result != KE_SUCCESS) return result;
    for (const auto& program : kScheduledPrograms) win::MakeFolder(FileIn(folder, program.folder));
    return result;
  });
}

// KesWD.conf: the services that the watchdog supervises.
KE_RESULT MkKesWdTokens(const char* root) {
  return WriteBelow(__func__, root, [](const char* function, const std::string& folder) {
    win::MakeFolder(FileIn(folder, "KESWD"));
    return WritePaths(function, FileIn(folder, "KESWD\\KesWD.conf"), "SERVICES", folder, kWatchedServices);
  });
}

KE_RESULT RegisterStandardPlugins(const HostModule& host, const char* root) {
  const std::string installation = InstallRoot(root, win::IsLeadByte);
  if (installation.empty()) return KE_MISSING_ARGUMENT;
  const std::string folder = FileIn(installation, host.folder);
  win::MakeFolder(folder);
  for (const auto& plugin : host.plugins) win::MakeFolder(FileIn(installation, plugin.folder));
  return WritePaths(host.function, FileIn(folder, host.file), "PLUGINS", installation, host.plugins);
}

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

Section InstalledVersions(const char* function, const char* host) { return {function, ModuleFile(host), "INSTALLED"}; }

KE_RESULT RemoveUpdateInformation(const char* function, const char* key) {
  const std::string command = std::string("KELUPD -REMOVEINFO:") + key;
  const auto run = siblings::RunLauncherCommand(function, "KELUPD", command.c_str());
  if (!run.launcherBound) return KE_LAUNCHER_NOT_LOADED;
  if (run.launcherResult != 0) return KE_PROGRAM_NOT_STARTED;
  if (run.exitCode == 0) return KE_SUCCESS;
  siblings::TraceLauncherCommandFailed(function, "KELUPD", run.exitCode);
  return KE_STORE_UNUSABLE;
}

// Writes a subscription; first, for the console's plug-in, whose name is compared with its letter case, that of the
// configuration module's plug-in.
KE_RESULT Subscribe(const char* function, const char* key, const char* type, const char* value,
                    const char* defaultValue) {
  const Section subscribers{function, ModuleFile("KELConf"), std::string("TYPES_") + type};
  if (key == kConsolePlugin) {
    const KE_RESULT result = subscribers.Write(kConfigurationPlugin, defaultValue);
    if (result != KE_SUCCESS) return result;
  }
  return subscribers.Write(key, value);
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

}  // namespace

KE_RESULT MkKesLpMngTokens(const char* root) {
  return WriteBelow(__func__, root, [](const char* function, const std::string& folder) {
    return WriteConfigFile(function, folder, "KESLPMNG", "plugins.tok", PluginTokens(folder));
  });
}

KE_RESULT WriteRegistrationFiles(const char* root) {
  if (strnlen(root, kLongestRoot + 1) > kLongestRoot) return KE_STORE_UNUSABLE;
  for (const auto write : {MkSchedulerKepLpMngToken, MkKesLpMngTokens, MkKesWdTokens}) {
    if (const KE_RESULT result = write(root); result != KE_SUCCESS) return result;
  }
  for (const HostModule& host : kHostModules) {
    if (const KE_RESULT result = RegisterStandardPlugins(host, root); result != KE_SUCCESS) return result;
  }
  return KE_SUCCESS;
}

std::string ModuleFile(std::string_view module) { return win::ComponentFile(module, std::string(module) + ".ini"); }

KE_RESULT AddPlugin(const char* function, const char* key, const char* host, const char* value) {
  return Plugins(function, host).Write(key, value);
}

KE_RESULT RemovePlugin(const char* function, const char* key, const char* host) {
  if (const KE_RESULT result = Plugins(function, host).Write(key, kRemoved); result != KE_SUCCESS) return result;
  if (SameName(host, "KELUpg")) return InstalledVersions(function, host).Write(key, "NOT");
  return SameName(host, "KELUpd") ? RemoveUpdateInformation(function, key) : KE_RESULT{KE_SUCCESS};
}

KE_RESULT SetInstalledVersion(const char* function, const char* key, const char* version) {
  const KE_RESULT result = InstalledVersions(function, "KELUpg").Write(key, version);
  if (result == KE_SUCCESS && SameName(key, "KEAGENT")) siblings::ExecuteLocalProcessAction("KELUPG", 1, 0);
  return result;
}

KE_RESULT AddSubscription(const char* function, const char* key, const char* type) {
  return Subscribe(function, key, type, kSubscribed, kRemoved);
}

KE_RESULT RemoveSubscription(const char* function, const char* key, const char* type) {
  return Subscribe(function, key, type, kRemoved, kSubscribed);
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

}  // namespace registration
