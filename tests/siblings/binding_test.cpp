#include <doctest/doctest.h>

#include <string>
#include <vector>

#include "siblings/modules.h"
#include "support/fake_sibling.h"
#include "support/inner_module.h"

using support::LoadedDll;

namespace {

#define NAME(name, presence) #name,

struct AgentTree {
  AgentTree() : module(tree) {}
  ~AgentTree() {
    while (siblings::FreeAgentApi()) {
    }
  }
  support::ProductTree tree;
  support::InnerModule module;
};

}  // namespace

TEST_CASE("binding: a module that lacks any one required name is not bound; optional names may be missing") {
  support::ProductTree tree;
  const std::string folder = tree.Path("Common").string() + "\\";
  // An incomplete event module stays loaded; it is taken away so that the next copy can be put in its place.
  const auto freeEvents = [] {
    while (const HMODULE left = GetModuleHandleA("TvEvAPI.dll")) FreeLibrary(left);
  };
  const auto check = [&](const std::string& file, std::vector<std::string> names, size_t optional, auto load,
                         auto free) {
    CAPTURE(file);
    const std::string whole = support::ReadFile(support::TestFolder() / ("Fake" + file));
    CHECK_FALSE(load(nullptr));
    CHECK_FALSE(load(std::string(2048, 'x').c_str()));
    CHECK_FALSE(load(folder.c_str()));
    for (size_t i = 0; i < names.size(); ++i) {
      CAPTURE(names[i]);
      support::WriteFile(tree.Path("Common/" + file), Without(whole, names[i]));
      CHECK(load(folder.c_str()) == (i < optional));
      free();
    }
    support::WriteFile(tree.Path("Common/" + file), whole);
    CHECK((load(folder.c_str()) && load(folder.c_str())));
    free();
    free();
    CHECK(GetModuleHandleA(file.c_str()) == nullptr);
  };
  check("KELAGAPI.dll", {KE_AGENT_API_FUNCTIONS(NAME, NAME)}, 6, siblings::LoadAgentApi, siblings::FreeAgentApi);
  check("KERegister.dll", {KE_PLUGIN_RELOAD_FUNCTIONS(NAME, NAME)}, 0, siblings::LoadPluginReload,
        siblings::FreePluginReload);
  check("KELMNAPI.dll", {KE_LAUNCHER_FUNCTIONS(NAME, NAME)}, 0, siblings::LoadLauncher, siblings::FreeLauncher);
  const auto loadEvents = [](const char* from) { return static_cast<bool>(siblings::EventApiScope(from)); };
  check("TvEvAPI.dll", {KE_EVENT_API_FUNCTIONS(NAME, NAME)}, 0, loadEvents, freeEvents);
}

TEST_CASE("agent module: nested uses are counted, and the last one finalises") {
  AgentTree agent;
  agent.tree.AddFake("FakeKELAGAPI", "Common/KELAGAPI.dll");
  const LoadedDll fake(agent.tree.Path("Common/KELAGAPI.dll"));
  CHECK((siblings::OpenAgentApi() == KE_SUCCESS && siblings::CheckAgentProxyApi() == KE_SUCCESS &&
         siblings::FreeAgentApi()));
  CHECK((CALL(fake, FakeCalls)("KE_AGAPI_Finalize") == 0 && siblings::FreeAgentApi()));
  CHECK((CALL(fake, FakeCalls)("KE_AGAPI_Initialize") == 1 && CALL(fake, FakeCalls)("KE_AGAPI_Finalize") == 1));
  CHECK_FALSE(siblings::FreeAgentApi());
}

TEST_CASE("agent module: an incomplete one stays loaded and counts as loaded from the second attempt on") {
  AgentTree agent;
  const std::string whole = support::ReadFile(support::TestFolder() / "FakeKELAGAPI.dll");
  for (const char* missing : {"KE_AGAPI_CanBeProxy", "KE_AGAPI_SetProxyConfig"}) {  // required; optional
    const bool optional = missing == std::string("KE_AGAPI_SetProxyConfig");
    support::WriteFile(agent.tree.Path("Common/KELAGAPI.dll"), Without(whole, missing));
    CHECK(siblings::CheckAgentProxyApi() == KE_AGENT_INCOMPLETE);
    CHECK((siblings::AgentApi().KE_AGAPI_GetConfig != nullptr) == optional);
    CHECK((siblings::AgentApi().KE_AGAPI_AddFileElementCompress != nullptr));  // the reset leaves this pointer alone
    CHECK((siblings::FreeAgentApi() && GetModuleHandleA("KELAGAPI.dll") == nullptr));
  }
}
