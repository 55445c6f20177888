#include "registration/module_files.h"

#include "frame/component.h"
#include "frame/module.h"
#include "frame/paths.h"
#include "frame/process_action.h"
#include "frame/settings_file.h"
#include "frame/text.h"

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
    return frame::WriteProfileValue(function, file, name.c_str(), key, value) ? KE_SUCCESS : KE_STORE_UNUSABLE;
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
  if (SameName(key, "KEAGENT")) frame::ExecuteLocalProcessAction("KELUPG", 1, 0);
  return KE_SUCCESS;
}

KE_RESULT AddSubscription(const char* function, const char* key, const char* type) {
  const Section subscribers = Subscribers(function, type);
  if (const KE_RESULT result = Displace(subscribers, key, kRemoved); result != KE_SUCCESS) return result;
  return subscribers.Write(key, kSubscribed);
}

KE_RESULT RemoveSubscription(const char* function, const char* key, const char* type) {
  const Section subscribers = Subscribers(function, type);
  if (const KE_RESULT result = Displace(subscribers, key, kSubscribed); result != KE_SUCCESS) return result;
  return subscribers.Write(key, kRemoved);
}

}  // namespace registration
