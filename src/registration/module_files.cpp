#include "registration/module_files.h"

#include "frame/component.h"
#include "frame/module.h"
#include "frame/paths.h"
#include "frame/process_action.h"
#include "frame/text.h"
#include "win/profile.h"

namespace registration {
namespace {

using frame::SameName;

constexpr std::string_view kConsolePlugin = "KEC";
constexpr char kConfigurationPlugin[] = "KELSYSCF";
constexpr char kSubscribed[] = "YES";
constexpr const char* kRemoved = nullptr;  // as a value it removes the key

/// One section of a module's file.
struct Section {
  // A null value removes the key.
  KE_RESULT Write(const char* key, const char* value) const {
    if (file.empty()) return KE_NO_MODULE_DIRECTORY;
    return win::WriteProfile(file, name.c_str(), key, value) ? KE_SUCCESS : KE_STORE_UNUSABLE;
  }
  std::string file;
  std::string name;
};

Section Plugins(const char* host) { return {ModuleFile(host), "PLUGINS"}; }

Section InstalledComponents(const char* host) { return {ModuleFile(host), "INSTALLED"}; }

Section Subscribers(const char* type) { return {ModuleFile("KELConf"), std::string("TYPES_") + type}; }

KE_RESULT RemoveUpdateInformation(const char* function, const char* key) {
  const std::string command = std::string("KELUPD -REMOVEINFO:") + key;
  const auto run = frame::RunComponent(function, "KELUPD", command.c_str());
  if (!run.launcherBound) return KE_LAUNCHER_NOT_LOADED;
  if (run.launcherResult != 0) return KE_PROGRAM_NOT_STARTED;
  if (run.exitCode == 0) return KE_SUCCESS;
  frame::TraceComponentFailed(function, "KELUPD", run.exitCode);
  return KE_STORE_UNUSABLE;
}

// Gives the configuration module's plug-in `value` when the console's plug-in comes or goes. Letter case counts here.
KE_RESULT Displace(const Section& subscribers, const char* key, const char* value) {
  return key == kConsolePlugin ? subscribers.Write(kConfigurationPlugin, value) : KE_RESULT{KE_SUCCESS};
}

}  // namespace

std::string ModuleFile(std::string_view module) {
  const auto directory = frame::KeptModuleDirectory();
  if (directory.empty()) return {};
  return frame::SiblingFolder(directory, module).append(module).append(".ini");
}

KE_RESULT AddPlugin(const char* key, const char* host, const char* value) { return Plugins(host).Write(key, value); }

KE_RESULT RemovePlugin(const char* function, const char* key, const char* host) {
  if (const KE_RESULT result = Plugins(host).Write(key, kRemoved); result != KE_SUCCESS) return result;
  if (SameName(host, "KELUpg")) return InstalledComponents(host).Write(key, "NOT");
  if (SameName(host, "KELUpd")) return RemoveUpdateInformation(function, key);
  return KE_SUCCESS;
}

KE_RESULT SetInstalledVersion(const char* key, const char* version) {
  if (const KE_RESULT result = InstalledComponents("KELUpg").Write(key, version); result != KE_SUCCESS) return result;
  if (SameName(key, "KEAGENT")) frame::ExecuteLocalProcessAction("KELUPG", 1, 0);
  return KE_SUCCESS;
}

KE_RESULT AddSubscription(const char* key, const char* type) {
  const Section subscribers = Subscribers(type);
  if (const KE_RESULT result = Displace(subscribers, key, kRemoved); result != KE_SUCCESS) return result;
  return subscribers.Write(key, kSubscribed);
}

KE_RESULT RemoveSubscription(const char* key, const char* type) {
  const Section subscribers = Subscribers(type);
  if (const KE_RESULT result = Displace(subscribers, key, kSubscribed); result != KE_SUCCESS) return result;
  return subscribers.Write(key, kRemoved);
}

}  // namespace registration
