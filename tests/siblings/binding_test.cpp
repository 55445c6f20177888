#include <doctest/doctest.h>

#include <string>
#include <vector>

#include "siblings/modules.h"
#include "support/fake_sibling.h"
#include "support/inner_module.h"

using support::LoadedDll;

namespace {

#define NAME(name, presence) #name,

template <typename Function>
bool IsBound(Function function) {
  return function != nullptr;
}

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
    CHECK(load(folder.c_str()));
    CHECK(load(folder.c_str()));
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
  CHECK(siblings::OpenAgentApi() == KE_SUCCESS);
  CHECK(siblings::CheckAgentProxyApi() == KE_SUCCESS);
  CHECK(siblings::FreeAgentApi());
  CHECK(CALL(fake, FakeCalls)("KE_AGAPI_Finalize") == 0);
  CHECK(siblings::FreeAgentApi());
  CHECK(CALL(fake, FakeCalls)("KE_AGAPI_Initialize") == 1);
  CHECK(CALL(fake, FakeCalls)("KE_AGAPI_Finalize") == 1);
  CHECK_FALSE(siblings::FreeAgentApi());
}

TEST_CASE("agent module: an incomplete one stays loaded and counts as loaded from the second attempt on") {
  AgentTree agent;
  const std::string whole = support::ReadFile(support::TestFolder() / "FakeKELAGAPI.dll");
  SUBCASE("a required name is missing") {
    support::WriteFile(agent.tree.Path("Common/KELAGAPI.dll"), Without(whole, "KE_AGAPI_CanBeProxy"));
    CHECK(siblings::CheckAgentProxyApi() == KE_AGENT_INCOMPLETE);
    CHECK_FALSE(IsBound(siblings::AgentApi().KE_AGAPI_GetConfig));
    // The reset leaves this one pointer alone.
    CHECK(IsBound(siblings::AgentApi().KE_AGAPI_AddFileElementCompress));
  }
  SUBCASE("an optional configuration function is missing") {
    support::WriteFile(agent.tree.Path("Common/KELAGAPI.dll"), Without(whole, "KE_AGAPI_SetProxyConfig"));
    CHECK(siblings::CheckAgentProxyApi() == KE_AGENT_INCOMPLETE);
    CHECK(IsBound(siblings::AgentApi().KE_AGAPI_GetConfig));
  }
  CHECK(siblings::FreeAgentApi());
  CHECK(GetModuleHandleA("KELAGAPI.dll") == nullptr);
}

TEST_CASE("agent and launcher module: from the Common folder, else from the module directory") {
  AgentTree agent;
  CHECK(siblings::CheckAgentProxyApi() == KE_AGENT_NOT_LOADED);
  CHECK(siblings::OpenLauncher() == KE_LAUNCHER_NOT_LOADED);
  agent.tree.AddFake("FakeKERegister", "Common/KELMNAPI.dll");  // loads, but has no launcher function
  agent.tree.AddFake("FakeKELMNAPI", "KELUtils/KELMNAPI.dll");
  agent.tree.AddFake("FakeKELAGAPI", "KELUtils/KELAGAPI.dll");
  CHECK(siblings::OpenAgentApi() == KE_SUCCESS);
  CHECK(siblings::OpenLauncher() == KE_SUCCESS);
  siblings::FreeLauncher();
}
