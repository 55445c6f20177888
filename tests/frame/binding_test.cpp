#include <doctest/doctest.h>

#include <functional>
#include <string>

#include "frame/agent_api.h"
#include "frame/event_api.h"
#include "frame/fs_redirection.h"
#include "frame/launcher.h"
#include "frame/plugin_reload.h"
#include "frame/windows_tables.h"
#include "support/fake_sibling.h"
#include "support/inner_module.h"

using support::LoadedDll;

namespace {

#define NAME(name, presence) #name,

// A DLL's content without one of its exports: the last character of the name becomes the one before it in the alphabet,
// which keeps the order of the export table.
std::string Without(std::string content, const std::string& name) {
  const std::string wanted = '\0' + name + '\0';
  for (size_t at = content.find(wanted); at != std::string::npos; at = content.find(wanted, at + 1)) {
    --content[at + name.size()];
  }
  return content;
}

template <typename Function>
bool IsBound(Function function) {
  return function != nullptr;
}

struct AgentTree {
  AgentTree() : module(tree) {}
  ~AgentTree() {
    while (frame::FreeAgentApi()) {
    }
  }
  support::ProductTree tree;
  support::InnerModule module;
};

}  // namespace

TEST_CASE("binding: a module that lacks any one required name is not bound; optional names may be missing") {
  support::ProductTree tree;
  const std::string folder = tree.Path("Common").string() + "\\";
  frame::EventApiTable events{};
  const struct {
    const char* fake;
    const char* file;
    std::vector<const char*> names;
    size_t optional;  // how many names, from the first on, may be missing
    std::function<bool()> load;
    std::function<void()> free;
  } modules[] = {
      {"FakeKELAGAPI",
       "KELAGAPI.dll",
       {KE_AGENT_API_FUNCTIONS(NAME, NAME)},
       6,
       [&] { return frame::LoadAgentApi(folder.c_str()); },
       [] { frame::FreeAgentApi(); }},
      {"FakeTvEvAPI",
       "TvEvAPI.dll",
       {KE_EVENT_API_FUNCTIONS(NAME, NAME)},
       0,
       [&] { return frame::LoadEventApi(folder.c_str(), events); },
       [&] {
         // An incomplete module stays loaded; the case takes it away so that the next copy can be put in its place.
         frame::FreeEventApi(events);
         while (const HMODULE left = GetModuleHandleA("TvEvAPI.dll")) FreeLibrary(left);
       }},
      {"FakeKERegister",
       "KERegister.dll",
       {KE_PLUGIN_RELOAD_FUNCTIONS(NAME, NAME)},
       0,
       [&] { return frame::LoadPluginReload(folder.c_str()); },
       [] { frame::FreePluginReload(); }},
      {"FakeKELMNAPI",
       "KELMNAPI.dll",
       {KE_LAUNCHER_FUNCTIONS(NAME, NAME)},
       0,
       [&] { return frame::LoadLauncher(folder.c_str()); },
       [] { frame::FreeLauncher(); }},
  };
  for (const auto& module : modules) {
    CAPTURE(module.file);
    const std::string whole = support::ReadFile(support::TestFolder() / (std::string(module.fake) + ".dll"));
    const auto path = tree.Path("Common") / module.file;
    CHECK_FALSE(module.load());
    for (size_t i = 0; i < module.names.size(); ++i) {
      CAPTURE(module.names[i]);
      support::WriteFile(path, Without(whole, module.names[i]));
      CHECK(module.load() == (i < module.optional));
      module.free();
    }
    support::WriteFile(path, whole);
    CHECK(module.load());
    CHECK(module.load());
    module.free();
    module.free();
    CHECK(GetModuleHandleA(module.file) == nullptr);
  }
}

TEST_CASE("agent module: nested uses are counted, and the last one finalises") {
  AgentTree agent;
  agent.tree.AddFake("FakeKELAGAPI", "Common/KELAGAPI.dll");
  const LoadedDll fake(agent.tree.Path("Common/KELAGAPI.dll"));
  CHECK(frame::OpenAgentApi() == 0);
  CHECK(frame::OpenAgentApi() == 0);
  CHECK(frame::CheckAgentProxyApi() == KE_SUCCESS);
  CHECK(frame::FreeAgentApi());
  CHECK(frame::FreeAgentApi());
  CHECK(CALL(fake, FakeCalls)("KE_AGAPI_Finalize") == 0);
  CHECK(IsBound(frame::AgentApi().KE_AGAPI_GetConfig));
  CHECK(frame::FreeAgentApi());
  CHECK(CALL(fake, FakeCalls)("KE_AGAPI_Initialize") == 1);
  CHECK(CALL(fake, FakeCalls)("KE_AGAPI_Finalize") == 1);
  CHECK_FALSE(IsBound(frame::AgentApi().KE_AGAPI_GetConfig));
  CHECK_FALSE(frame::FreeAgentApi());
}

TEST_CASE("agent module: found in the module directory when the Common folder has none, and missing in both") {
  AgentTree agent;
  CHECK(frame::OpenAgentApi() == frame::kAgentModuleNotLoaded);
  CHECK(frame::CheckAgentProxyApi() == KE_AGENT_NOT_LOADED);
  agent.tree.AddFake("FakeKELAGAPI", "KELUtils/KELAGAPI.dll");
  CHECK(frame::OpenAgentApi() == 0);
}

TEST_CASE("agent module: an incomplete one stays loaded and counts as loaded from the second attempt on") {
  AgentTree agent;
  const std::string whole = support::ReadFile(support::TestFolder() / "FakeKELAGAPI.dll");
  SUBCASE("a required name is missing") {
    support::WriteFile(agent.tree.Path("Common/KELAGAPI.dll"), Without(whole, "KE_AGAPI_CanBeProxy"));
    CHECK(frame::CheckAgentProxyApi() == KE_AGENT_INCOMPLETE);
    CHECK_FALSE(IsBound(frame::AgentApi().KE_AGAPI_GetConfig));
    // The reset leaves this one pointer alone.
    CHECK(IsBound(frame::AgentApi().KE_AGAPI_AddFileElementCompress));
  }
  SUBCASE("an optional configuration function is missing") {
    support::WriteFile(agent.tree.Path("Common/KELAGAPI.dll"), Without(whole, "KE_AGAPI_SetProxyConfig"));
    CHECK(frame::CheckAgentProxyApi() == KE_AGENT_INCOMPLETE);
    CHECK(IsBound(frame::AgentApi().KE_AGAPI_GetConfig));
  }
  CHECK(frame::FreeAgentApi());
  CHECK(GetModuleHandleA("KELAGAPI.dll") == nullptr);
}

TEST_CASE("launcher: opened from the Common folder, else from the module directory") {
  support::ProductTree tree;
  const support::InnerModule module(tree);
  CHECK(frame::OpenLauncher() == KE_LAUNCHER_NOT_LOADED);
  tree.AddFake("FakeKERegister", "Common/KELMNAPI.dll");  // loads, but has no launcher function
  CHECK(frame::OpenLauncher() == KE_LAUNCHER_NOT_LOADED);
  tree.AddFake("FakeKELMNAPI", "KELUtils/KELMNAPI.dll");
  CHECK(frame::OpenLauncher() == KE_SUCCESS);
  CHECK(frame::OpenLauncher() == KE_SUCCESS);
  CHECK(IsBound(frame::Launcher().Run));
  frame::FreeLauncher();
  CHECK_FALSE(IsBound(frame::Launcher().Run));
}

TEST_CASE("binding: folders that are null or too long load nothing") {
  frame::EventApiTable events{};
  const std::string longFolder(2048, 'x');
  for (const char* folder : {static_cast<const char*>(nullptr), longFolder.c_str()}) {
    CHECK_FALSE(frame::LoadAgentApi(folder));
    CHECK_FALSE(frame::LoadEventApi(folder, events));
    CHECK_FALSE(frame::LoadPluginReload(folder));
    CHECK_FALSE(frame::LoadLauncher(folder));
  }
}

TEST_CASE("windows tables: bound while the library is loaded, then cleared") {
  frame::BindWindowsTables();
  CHECK(IsBound(frame::Advapi32().CreateWellKnownSid));
  CHECK(IsBound(frame::Advapi32().GetSecurityDescriptorControl));
  CHECK(IsBound(frame::Shell32().SHChangeNotify));
  frame::ReleaseWindowsTables();
  CHECK(frame::Advapi32().module == nullptr);
  CHECK_FALSE(IsBound(frame::Shell32().SHChangeNotify));
}

TEST_CASE("redirection: switched off, the native system folder is seen") {
  void* old = nullptr;
  char folder[MAX_PATH];
  GetSystemDirectoryA(folder, sizeof folder);
  // Only the 64-bit folder holds the 64-bit ntdll; its machine type tells which one was opened.
  auto machine = [&] {
    const std::string image = support::ReadFile(std::string(folder) + "\\ntdll.dll");
    const auto header = static_cast<unsigned char>(image.at(0x3c)) | static_cast<unsigned char>(image.at(0x3d)) << 8;
    return static_cast<unsigned char>(image.at(header + 4)) | static_cast<unsigned char>(image.at(header + 5)) << 8;
  };
  CHECK(machine() == IMAGE_FILE_MACHINE_I386);
  REQUIRE(frame::DisableFsRedirection(&old));
  const auto native = machine();
  CHECK(frame::RevertFsRedirection(old));
  CHECK(native == IMAGE_FILE_MACHINE_AMD64);
  CHECK(machine() == IMAGE_FILE_MACHINE_I386);
}
