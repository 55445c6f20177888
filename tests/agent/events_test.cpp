#include <doctest/doctest.h>

#include <regex>

#include "KELUtils.h"
#include "agent/texts.h"
#include "policy/policy_fixture.h"
#include "policy/script_registration.h"
#include "support/inner_module.h"
#include "support/recorded_program.h"

using namespace policy;
using support::HeldTime;
using support::ReadFile;

namespace {

/// A tree with the event module, the descriptions, the upgrade module and the launcher of the development kit.
struct EventTree : support::AgentTree {
  EventTree() {
    AddDevkit("TvEvAPI.dll", "KELTVEVT");
    AddDevkit("KePIRes.exe", "KESAgent");
    AddDevkit("KELUPG.dll", "KELUPG");
    AddDevkit("KELMNAPI.dll", "Common");
  }
  void Remove(const char* file) const { std::filesystem::remove(Path(file)); }
  void Fail(const std::string& call) const { support::WriteFile(Path("KELTVEVT/TvEvAPI.ini"), "[FAIL]\r\n" + call); }
  /// What the event module has noted since the last time: each call with its record and its result.
  std::string Calls() const {
    static const std::regex line(R"*(\{"time".*"call":"TEVT_(\w+)",(.*)"result":(\d+)[}]\r\n)*");
    const std::string calls = std::regex_replace(ReadFile(Path("KELTVEVT/events.jsonl")), line, "$1 $2$3\n");
    Remove("KELTVEVT/events.jsonl");
    return std::regex_replace(calls, std::regex(R"*("\d{4}(-\d\d){2} \d\d(:\d\d){2}")*"), "now");
  }
};

const struct {
  std::string name, call, record, notSent;
  KE_RESULT (*send)();
} kEvents[] = {
    {"KE_ScanStateEvent", "ScanState",
     R"("product":"KEC","extra":0,"text":now,"description":null,"argument":"Unknown","status":-3,"taskId":null,)",
     "State Event asociated with TaskId: [(null)] and Status: [-3] to the Queue",
     [] { return KE_ScanStateEvent("KEC", nullptr, -3); }},
    {"KE_RebootForcedEvent", "RebootForced",
     R"("product":null,"extra":0,"text":null,"description":null,"argument":"0",)",
     "UnInstall Event asociated with product: [(null)]", [] { return KE_RebootForcedEvent(nullptr); }},
    {"KE_Uninstall", "Install", R"("product":"KEC","extra":0,"text":null,"description":null,"flag":1,)",
     "UnInstall Event asociated with product: [KEC]", [] { return KE_Uninstall("KEC"); }},
    {"KE_GenerateEvent", "ErrorEvent",
     R"("product":"KEAGENT","extra":4294967295,"text":"x","description":"The agent has run out of memory.",)"
     R"("source":4294967295,"identifier":"KEAGENT-2",)",
     "Error Event asociated with ErrorCode: [2] to the Queue", [] { return KE_GenerateEvent(7, 0xFFFFFFFF, 2, "x"); }},
};

/// The agent's shutdown script and another one in the policy of the machine for the scope.
struct MachinePolicy {
  MachinePolicy() {
    RegisterScript(nullptr, MachinePlaces(), ScriptKind::kShutdown, {u"a", Utf16(kAgent)});
    RegisterScript(nullptr, MachinePlaces(), ScriptKind::kShutdown, {u"o", u"OTHER"});
    support::TestPolicy::Put(file, "");
  }
  ~MachinePolicy() {
    for (const wchar_t* parameters : {kAgent, L"OTHER"}) DeleteShutdownInformation(nullptr, parameters, L"", 1);
    std::filesystem::remove_all(folder);
  }
  /// The names of the scripts in the file and in two places of the registry, and "+" for the file of the agent's.
  std::wstring Scripts() const {
    std::vector<ListedScript> listed;
    ListScripts(nullptr, MachinePlaces(), listed);
    std::wstring names;
    for (const auto& one : listed) names += Wide(one.script.program);
    return names + (std::filesystem::exists(file) ? L"+" : L"");
  }
  static constexpr wchar_t kAgent[] = L"PROT_AGENTVOSK_UPG_SCRIPT=\"1\"";
  const std::filesystem::path folder = std::filesystem::path(std::getenv("SystemRoot")) / "Sysnative" / "GroupPolicy";
  const std::filesystem::path file = folder / "Machine\\Scripts\\Shutdown\\a";
};

}  // namespace

TEST_CASE("events: another record or result, a module that stays, a script of the uninstallation that stays") {
  const std::string computer = std::getenv("COMPUTERNAME");
  for (const auto& row : kEvents) {
    const EventTree tree;
    const auto check = [&](const std::string& fail, KE_RESULT result, const std::string& calls,
                           const std::string& told) {
      CAPTURE(row.name + ": " + fail);
      const MachinePolicy policy;
      REQUIRE((policy.Scripts() == L"aoaoao+"));
      tree.Fail(fail);
      tree.Remove("KELUtils/KELUtils.log");
      HeldTime::pauses.clear();
      CHECK((row.send() == result && tree.Calls() == calls));
      CHECK(HeldTime::pauses == (row.call == "Install" && calls.ends_with("StopAPI 0\n") ? "30000 " : ""));
      CHECK(tree.Log().find(row.name + ";\"" + told) != std::string::npos);
      CHECK((policy.Scripts() == (row.call == "Install" ? L"ooo" : L"aoaoao+")));
      for (const char* module : {"TvEvAPI.dll", "KePIRes.exe", "KELUPG.dll"}) CHECK(!GetModuleHandleA(module));
    };
    const std::string sent = "StartAPI 0\n" + row.call + " \"class\":" + (row.call == "ErrorEvent" ? "7" : "4") +
                             ",\"computer\":\"" + computer + "\"," + row.record;
    check("", KE_SUCCESS, sent + "0\nStopAPI 0\n", "Function start");
    check("TEVT_StartAPI=7", KE_EVENT_NOT_SENT, "StartAPI 7\n", "Failed to start TvEvAPI-TEVT_StartAPI\"");
    check("TEVT_" + row.call + "=9", KE_EVENT_NOT_SENT, sent + "9\nStopAPI 0\n",
          "Could not send " + row.notSent + "\"");
    tree.Remove("KELTVEVT/TvEvAPI.dll");
    check("", KE_EVENTS_UNAVAILABLE, "", "Could not load TvEvAPI\"");
    CHECK(ReadFile(tree.Path("KELUPG/KELUPG.log")).ends_with(";2;0\r\n") == (row.call == "Install"));
  }
}

TEST_CASE("event descriptions: a conversion other than the first %s; a cut, missing or overlong text") {
  const std::string x511(511, 'x'),
      rows[][3] = {{"50% of %d and %%", "i", "50% of %d and %%"}, {"a %s %%s %s %", "%s %%", "a %s %% %s %s %"}};
  for (const auto& [resource, insert, text] : rows) CHECK(agent::DescriptionText(resource, insert) == text);
  const EventTree tree;
  const auto check = [&](uint32_t code, const char* insert, int32_t size, KE_RESULT result, const std::string& text) {
    char buffer[600] = "before";
    CHECK(KE_GetEventDescription(code, buffer, size, insert) == result);
    CHECK((buffer == text && GetModuleHandleA("KePIRes.exe") == nullptr));
  };
  check(403, "x", 24, KE_SUCCESS, "The quarantine is full.");
  check(403, nullptr, 23, KE_SUCCESS, "The quarantine is full");
  check(402, nullptr, 600, KE_SUCCESS, "The scan  was stopped before its end.");
  check(401, x511.c_str(), 600, KE_SUCCESS, "The scan " + x511.substr(9));
  check(404, "x", 600, KE_EVENT_NOT_SENT, "before");
  CHECK((KE_GenerateEvent(4, 0, 404, "x") == KE_EVENT_NOT_SENT && tree.Calls().empty()));
  tree.Remove("KESAgent/KePIRes.exe");
  check(403, nullptr, 600, KE_MODULE_NOT_LOADED, "before");
  check(403, nullptr, 0, KE_BUFFER_TOO_SMALL, "before");
  CHECK((KE_GenerateEvent(4, 0, 403, nullptr) == KE_MODULE_NOT_LOADED && tree.Calls().empty()));
}

TEST_CASE("event service: it is not started, or a failed start is a success") {
  const EventTree tree;
  CHECK(KE_InitEventSystem() == KE_EVENTS_UNAVAILABLE);
  CHECK(tree.Traced("KE_InitEventSystem;\"Could not Run KELTVEVT. Launcher function returned code :3\""));
  const support::RecordedProgram service(tree, "KELTVEVT/KELTVEVT.exe");
  CHECK(KE_InitEventSystem() == KE_SUCCESS);
  service.EndWith(9);
  CHECK((KE_InitEventSystem() == KE_EVENTS_UNAVAILABLE && service.Lines() == "-start\n-start\n"));
  tree.Remove("Common/KELMNAPI.dll");
  CHECK((KE_InitEventSystem() == KE_EVENTS_UNAVAILABLE && GetModuleHandleA("KELMNAPI.dll") == nullptr));
}
