#include "siblings/modules.h"

#include <atomic>

#include "siblings/binder.h"
#include "text/paths.h"
#include "trace/trace.h"
#include "win/module.h"
#include "win/owner.h"

namespace siblings {

namespace {

#define KE_ROW(name, presence) KE_BOUND_NAME(CryptoTable, name, presence),
constexpr BoundName kCryptoNames[] = {KE_CRYPTO_FUNCTIONS(KE_ROW, KE_ROW)};
#undef KE_ROW

// Guards the binding. The table is published complete, by the pointer: a thread sees no function or all of them.
win::CriticalSection g_cryptoLock;
CryptoTable g_cryptoTable{};
constinit std::atomic<const CryptoTable*> g_cryptoPublished{nullptr};

// Only ever a module that lacked a name: of no use, and freed by the next attempt. A complete one is never freed, and
// therefore held by no owner.
win::ModuleHandle g_cryptoModule;

}  // namespace

const CryptoTable* Crypto() noexcept { return g_cryptoPublished.load(std::memory_order_acquire); }

bool LoadCrypto(const char* folder) noexcept {
  if (Crypto()) return true;
  SiblingSearch search(__func__, "ApiCr.dll", kCryptoNames);
  const win::LockGuard hold(g_cryptoLock);
  if (Crypto()) return true;
  if (!search.Bind(folder, g_cryptoModule, &g_cryptoTable)) {
    g_cryptoTable = {};
    return false;
  }
  g_cryptoModule.Release();
  g_cryptoPublished.store(&g_cryptoTable, std::memory_order_release);
  return true;
}

namespace {

#define KE_ROW(name, presence) KE_BOUND_NAME(LauncherTable, name, presence),
constexpr BoundName kLauncherNames[] = {KE_LAUNCHER_FUNCTIONS(KE_ROW, KE_ROW)};
#undef KE_ROW

ModuleTable<LauncherTable> g_launcher("KELMNAPI.dll", kLauncherNames);

}  // namespace

const LauncherTable& Launcher() noexcept { return g_launcher.Functions(); }

bool LoadLauncher(const char* folder) noexcept {
  SiblingSearch search = g_launcher.Search(__func__);
  return g_launcher.Load(folder, search);
}

void FreeLauncher() noexcept { g_launcher.Free(); }

KE_RESULT OpenLauncher() {
  const std::string directory = win::GetModuleDirectory();
  SiblingSearch search = g_launcher.Search(__func__);
  const bool bound = g_launcher.Load(text::CommonFolder(directory).c_str(), search) ||
                     g_launcher.Load(text::OwnFolder(directory).c_str(), search);
  return bound ? KE_SUCCESS : KE_LAUNCHER_NOT_LOADED;
}

LauncherScope::LauncherScope(const char* function) : boundHere_(Launcher().Run == nullptr) {
  if (boundHere_ && !LoadLauncher(text::CommonFolder(win::GetModuleDirectory()).c_str())) {
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

namespace {

#define KE_ROW(name, presence) KE_BOUND_NAME(EventApiTable, name, presence),
constexpr BoundName kEventNames[] = {KE_EVENT_API_FUNCTIONS(KE_ROW, KE_ROW)};
#undef KE_ROW

}  // namespace

bool LoadEventApi(const char* folder, EventApiTable& record) noexcept {
  SiblingSearch search(__func__, "TvEvAPI.dll", kEventNames);
  win::ModuleHandle module;
  const bool bound = search.Bind(folder, module, &record);
  const HMODULE loaded = module.Release();
  record.module = bound ? loaded : nullptr;
  return bound;
}

void FreeEventApi(EventApiTable& record) noexcept {
  win::ModuleHandle(record.module).Reset();
  record.module = nullptr;
}

namespace {

constexpr char kAgentFile[] = "KELAGAPI.dll";

#define KE_ROW(name, presence) KE_BOUND_NAME(AgentApiTable, name, presence),
constexpr BoundName kAgentNames[] = {KE_AGENT_API_FUNCTIONS(KE_ROW, KE_ROW)};
#undef KE_ROW

win::CriticalSection g_agentLock;
win::ModuleHandle g_agentModule;
int g_agentReferences = 0;
AgentApiTable g_agentTable{};

// KE_AGAPI_AddFileElementCompress is not on the list of pointers to reset and keeps its value; nothing here calls it.
void ClearTable() noexcept {
  const auto kept = g_agentTable.KE_AGAPI_AddFileElementCompress;
  g_agentTable = {};
  g_agentTable.KE_AGAPI_AddFileElementCompress = kept;
}

bool LoadAgentFrom(const char* folder, SiblingSearch& search) noexcept {
  const win::LockGuard hold(g_agentLock);
  if (g_agentModule) {
    ++g_agentReferences;
    return true;
  }
  g_agentReferences = 0;
  ClearTable();
  if (!search.Bind(folder, g_agentModule, &g_agentTable)) {
    ClearTable();
    return false;
  }
  ++g_agentReferences;
  if (g_agentTable.KE_AGAPI_Initialize) g_agentTable.KE_AGAPI_Initialize();
  return true;
}

}  // namespace

const AgentApiTable& AgentApi() noexcept { return g_agentTable; }

bool LoadAgentApi(const char* folder) noexcept {
  SiblingSearch search(__func__, kAgentFile, kAgentNames);
  return LoadAgentFrom(folder, search);
}

bool FreeAgentApi() noexcept {
  const win::LockGuard hold(g_agentLock);
  if (!g_agentModule) {
    g_agentReferences = 0;
    ClearTable();
    return false;
  }
  if (g_agentReferences > 0) --g_agentReferences;
  if (g_agentReferences > 0) return true;
  if (g_agentTable.KE_AGAPI_Finalize) g_agentTable.KE_AGAPI_Finalize();
  g_agentModule.Reset();
  ClearTable();
  return true;
}

unsigned OpenAgentApi() {
  const std::string directory = win::GetModuleDirectory();
  SiblingSearch search(__func__, kAgentFile, kAgentNames);
  const win::LockGuard hold(g_agentLock);  // no other thread counts a module that is about to be given up
  if (LoadAgentFrom(text::CommonFolder(directory).c_str(), search) ||
      LoadAgentFrom(text::OwnFolder(directory).c_str(), search))
    return 0;
  g_agentModule.Reset();
  return kAgentModuleNotLoaded;
}

KE_RESULT CheckAgentProxyApi() {
  if (OpenAgentApi() != 0) return KE_AGENT_NOT_LOADED;
  const AgentApiTable& api = AgentApi();
  const bool complete = api.KE_AGAPI_SetConfig && api.KE_AGAPI_GetConfig && api.KE_AGAPI_GetProxyConfig &&
                        api.KE_AGAPI_SetProxyConfig && api.KE_AGAPI_AskProxyConfig;
  return complete ? KE_SUCCESS : KE_AGENT_INCOMPLETE;
}

void TraceAgentNotLoaded(const char* function, KE_RESULT result) noexcept {
  {
    const win::LockGuard hold(g_agentLock);
    // Required of every module, so bound means that the search has found nothing missing.
    if (g_agentTable.KE_AGAPI_AskProxyConfig) TraceMissingFunction(function, g_agentModule.Get());
  }
  trace::Trace(trace::kAlways, function, "Could not load required library, KELAGAPI. Return Error Code : [%i]",
               static_cast<int>(result));
}

namespace {

#define KE_ROW(name, presence) KE_BOUND_NAME(PluginReloadTable, name, presence),
constexpr BoundName kPluginReloadNames[] = {KE_PLUGIN_RELOAD_FUNCTIONS(KE_ROW, KE_ROW)};
#undef KE_ROW

ModuleTable<PluginReloadTable> g_pluginReload("KERegister.dll", kPluginReloadNames);

}  // namespace

const PluginReloadTable& PluginReload() noexcept { return g_pluginReload.Functions(); }

bool LoadPluginReload(const char* folder) noexcept {
  SiblingSearch search = g_pluginReload.Search(__func__);
  return g_pluginReload.Load(folder, search);
}

void FreePluginReload() noexcept { g_pluginReload.Free(); }

}  // namespace siblings
