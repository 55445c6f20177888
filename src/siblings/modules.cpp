#include "siblings/modules.h"

#include <atomic>
#include <optional>
#include <string>

#include "siblings/sibling_table.h"
#include "trace/trace.h"
#include "win/module.h"
#include "win/owner.h"

namespace siblings {

namespace {

// For `Bind`, whose folder is null while the module directory is unknown.
class Folder {
 public:
  explicit Folder(const char* name) : path_(win::FolderOf(name)) {}
  const char* Get() const noexcept { return path_ ? path_->c_str() : nullptr; }

 private:
  std::optional<std::string> path_;
};

// Guards the binding. The functions are published complete, by the pointer: a thread sees none of them or all.
win::CriticalSection g_cryptoLock;
BoundModule<CryptoTable> g_crypto;  // owns no complete module: that is never freed
constinit std::atomic<const CryptoTable*> g_cryptoPublished{nullptr};

}  // namespace

const CryptoTable* Crypto() noexcept { return g_cryptoPublished.load(std::memory_order_acquire); }

bool LoadCrypto(const char* folder) noexcept {
  if (Crypto()) return true;
  SiblingSearch search(__func__, kCryptoModule.file);
  const win::LockGuard hold(g_cryptoLock);
  if (Crypto()) return true;
  if (!g_crypto.Bind(folder, search)) return false;
  g_crypto.module.Release();
  g_cryptoPublished.store(&g_crypto.functions, std::memory_order_release);
  return true;
}

namespace {

BoundModule<LauncherTable> g_launcher;

bool LoadLauncherFrom(const char* folder, SiblingSearch& search) noexcept {
  return g_launcher.functions.Run != nullptr || g_launcher.Bind(folder, search);
}

}  // namespace

const LauncherTable& Launcher() noexcept { return g_launcher.functions; }

bool LoadLauncher(const char* folder) noexcept {
  SiblingSearch search(__func__, kLauncherModule.file);
  return LoadLauncherFrom(folder, search);
}

void FreeLauncher() noexcept { g_launcher.Free(); }

KE_RESULT OpenLauncher() {
  SiblingSearch search(__func__, kLauncherModule.file);
  const bool bound = LoadLauncherFrom(Folder(kLauncherModule.folder).Get(), search) ||
                     LoadLauncherFrom(Folder(kLauncherModule.fallback).Get(), search);
  return bound ? KE_SUCCESS : KE_LAUNCHER_NOT_LOADED;
}

LauncherScope::LauncherScope(const char* function) : boundHere_(Launcher().Run == nullptr) {
  if (boundHere_ && !LoadLauncher(Folder(kLauncherModule.folder).Get())) {
    trace::Trace(trace::kAlways, function, "Could not load KELMNAPI");
  }
}

LauncherScope::~LauncherScope() {
  if (boundHere_) FreeLauncher();
}

LauncherRun RunLauncherCommand(const char* function, const char* component, const char* command) {
  const FreeLauncherAtEnd release;
  const LauncherScope launcher(function);
  LauncherRun run{};
  run.launcherBound = static_cast<bool>(launcher);
  if (!run.launcherBound) return run;
  run.launcherResult = Launcher().Run(command, &run.exitCode);
  if (run.launcherResult != 0) {
    trace::Trace(trace::kDetail, function, "Could not Run %s. Launcher function returned code :%i", component,
                 run.launcherResult);
  }
  return run;
}

void TraceLauncherCommandFailed(const char* function, const char* component, std::int32_t exitCode) noexcept {
  trace::Trace(trace::kDetail, function, "Could not Run %s. %s Run returned code :%i", component, component,
               static_cast<int>(exitCode));
}

EventApiScope::EventApiScope(const char* folder) noexcept {
  SiblingSearch search("LoadEventApi", kEventModule.file);
  if (!bound_.Bind(folder, search)) bound_.module.Release();
}

namespace {

win::CriticalSection g_agentLock;
BoundModule<AgentApiTable> g_agent;
int g_agentReferences = 0;

bool LoadAgentFrom(const char* folder, SiblingSearch& search) noexcept {
  const win::LockGuard hold(g_agentLock);
  if (g_agent.module) {
    ++g_agentReferences;
    return true;
  }
  g_agentReferences = 0;
  if (!g_agent.Bind(folder, search)) return false;
  ++g_agentReferences;
  if (g_agent.functions.KE_AGAPI_Initialize) g_agent.functions.KE_AGAPI_Initialize();
  return true;
}

}  // namespace

const AgentApiTable& AgentApi() noexcept { return g_agent.functions; }

bool LoadAgentApi(const char* folder) noexcept {
  SiblingSearch search(__func__, kAgentModule.file);
  return LoadAgentFrom(folder, search);
}

bool FreeAgentApi() noexcept {
  const win::LockGuard hold(g_agentLock);
  const bool loaded = static_cast<bool>(g_agent.module);
  if (g_agentReferences > 0) --g_agentReferences;
  if (loaded && g_agentReferences > 0) return true;
  g_agentReferences = 0;
  if (loaded && g_agent.functions.KE_AGAPI_Finalize) g_agent.functions.KE_AGAPI_Finalize();
  g_agent.Free();
  return loaded;
}

KE_RESULT OpenAgentApi() {
  const Folder common(kAgentModule.folder), own(kAgentModule.fallback);
  SiblingSearch search(__func__, kAgentModule.file);
  const win::LockGuard hold(g_agentLock);  // no other thread counts a module that is about to be freed
  if (LoadAgentFrom(common.Get(), search) || LoadAgentFrom(own.Get(), search)) return KE_SUCCESS;
  g_agent.module.Reset();
  return KE_AGENT_NOT_LOADED;
}

KE_RESULT CheckAgentProxyApi() {
  if (OpenAgentApi() != KE_SUCCESS) return KE_AGENT_NOT_LOADED;
  const AgentApiTable& api = AgentApi();
  const bool complete = api.KE_AGAPI_SetConfig && api.KE_AGAPI_GetConfig && api.KE_AGAPI_GetProxyConfig &&
                        api.KE_AGAPI_SetProxyConfig && api.KE_AGAPI_AskProxyConfig;
  return complete ? KE_SUCCESS : KE_AGENT_INCOMPLETE;
}

void TraceAgentNotLoaded(const char* function, KE_RESULT result) noexcept {
  {
    const win::LockGuard hold(g_agentLock);
    // Required of every module: when it is bound, the search has found nothing missing.
    if (g_agent.functions.KE_AGAPI_AskProxyConfig) TraceMissingFunction(function, g_agent.module.Get());
  }
  trace::Trace(trace::kAlways, function, "Could not load required library, KELAGAPI. Return Error Code : [%i]",
               static_cast<int>(result));
}

namespace {

BoundModule<PluginReloadTable> g_pluginReload;

}  // namespace

const PluginReloadTable& PluginReload() noexcept { return g_pluginReload.functions; }

bool LoadPluginReload(const char* folder) noexcept {
  if (g_pluginReload.functions.KE_ReloadPlugins) return true;
  SiblingSearch search(__func__, kPluginReloadFile);
  return g_pluginReload.Bind(folder, search);
}

void FreePluginReload() noexcept { g_pluginReload.Free(); }

}  // namespace siblings
