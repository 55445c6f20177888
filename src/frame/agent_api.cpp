#include "frame/agent_api.h"

#include "frame/module.h"
#include "frame/paths.h"
#include "frame/sibling_binder.h"
#include "frame/trace.h"
#include "win/critical_section.h"
#include "win/owner.h"

namespace frame {
namespace {

constexpr char kFile[] = "KELAGAPI.dll";

#define KE_ROW(name, presence) KE_BOUND_NAME(AgentApiTable, name, presence),
constexpr BoundName kNames[] = {KE_AGENT_API_FUNCTIONS(KE_ROW, KE_ROW)};
#undef KE_ROW

win::CriticalSection g_lock;
win::ModuleHandle g_module;
int g_references = 0;
AgentApiTable g_table{};

// KE_AGAPI_AddFileElementCompress is not on the list of pointers to reset and keeps its value; nothing here calls it.
void ClearTable() noexcept {
  const auto kept = g_table.KE_AGAPI_AddFileElementCompress;
  g_table = {};
  g_table.KE_AGAPI_AddFileElementCompress = kept;
}

bool Load(const char* folder, SiblingSearch& search) noexcept {
  const win::Holding hold(g_lock);
  if (g_module) {
    ++g_references;
    return true;
  }
  g_references = 0;
  ClearTable();
  if (!search.Bind(folder, g_module, &g_table)) {
    ClearTable();
    return false;
  }
  ++g_references;
  if (g_table.KE_AGAPI_Initialize) g_table.KE_AGAPI_Initialize();
  return true;
}

}  // namespace

const AgentApiTable& AgentApi() noexcept { return g_table; }

bool LoadAgentApi(const char* folder) noexcept {
  SiblingSearch search(__func__, kFile, kNames);
  return Load(folder, search);
}

bool FreeAgentApi() noexcept {
  const win::Holding hold(g_lock);
  if (!g_module) {
    g_references = 0;
    ClearTable();
    return false;
  }
  if (g_references > 0) --g_references;
  if (g_references > 0) return true;
  if (g_table.KE_AGAPI_Finalize) g_table.KE_AGAPI_Finalize();
  g_module.Reset();
  ClearTable();
  return true;
}

unsigned OpenAgentApi() {
  const std::string directory = GetModuleDirectory();
  SiblingSearch search(__func__, kFile, kNames);
  const win::Holding hold(g_lock);  // no other thread counts a module that is about to be given up
  if (Load(CommonFolder(directory).c_str(), search) || Load(OwnFolder(directory).c_str(), search)) return 0;
  g_module.Reset();
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
    const win::Holding hold(g_lock);
    // Required of every module, so bound means that the search has found nothing missing.
    if (g_table.KE_AGAPI_AskProxyConfig) TraceMissingFunction(function, g_module.Get());
  }
  Trace(kAlways, function, "Could not load required library, KELAGAPI. Return Error Code : [%i]",
        static_cast<int>(result));
}

}  // namespace frame
