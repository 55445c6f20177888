#include "TvEvAPI.h"

#include <doctest/doctest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "shared/results.h"
#include "siblings/functions.h"
#include "support/product_tree.h"

using namespace devkit;
using nlohmann::json;

namespace {

const EventInfo kInfo{4, "PC7", "KEAGENT", 0xFFFFFFFF, nullptr, "about"};

/// A copy of the module in a folder of its own.
struct EventModule : support::Folder, support::LoadedDll {
  EventModule() : LoadedDll((AddDevkit("TvEvAPI.dll", "."), *this / "TvEvAPI.dll")) {}
  std::vector<json> Events() const {
    std::istringstream lines(support::ReadFile(*this / "events.jsonl"));
    std::vector<json> events;
    for (std::string line; std::getline(lines, line);) events.push_back(json::parse(line));
    return events;
  }
};

}  // namespace

TEST_CASE("events: every call is a line with its arguments and its result") {
  const EventModule module;
  SetLastError(4711);
  CHECK((CALL(module, TEVT_StopAPI)() == kNotInitialised && CALL(module, TEVT_Install)(&kInfo, 1) == kNotInitialised));
  CHECK((CALL(module, TEVT_StartAPI)() + CALL(module, TEVT_ScanState)(&kInfo, "Unknown", -3, nullptr) == kSuccess));
  CHECK(CALL(module, TEVT_ErrorEvent)(nullptr, 0x80000000, "KEAGENT-5") == kBadArgument);
  CHECK(CALL(module, TEVT_StopAPI)() == kSuccess);
#define FIND(name, presence) module.Get<KE_UncalledFunction>(#name);
#define CHECK_REFUSED(name, presence) CHECK(module.Get<int(KE_SIBLING_CALL*)()>(#name)() == kNotSupported);
  KE_EVENT_API_FUNCTIONS(FIND, CHECK_REFUSED)
  CHECK(GetLastError() == 4711);
  std::vector<json> events = module.Events();
  REQUIRE(events.size() == 6 + 12);
  CHECK((events[0]["process"] == GetCurrentProcessId() && events[0]["thread"] == GetCurrentThreadId()));
  for (const char* changing : {"time", "process", "thread"}) events[3].erase(changing);
  CHECK(events[3] == json::parse(R"({"call":"TEVT_ScanState","class":4,"computer":"PC7","product":"KEAGENT",
    "extra":4294967295,"text":null,"description":"about","argument":"Unknown","status":-3,"taskId":null,"result":0})"));
  CHECK((events[4]["source"] == 2147483648 && events[4]["identifier"] == "KEAGENT-5" && events[4]["result"] == 1));
}

TEST_CASE("events: texts of any bytes and any length") {
  const EventModule module;
  std::string hostile;
  for (int byte = 255; byte > 0; --byte) hostile += static_cast<char>(byte);
  for (const std::string& text : {hostile, std::string(1024, '\xFF'), std::string(100000, '"')}) {
    const EventInfo info{1, text.c_str(), text.c_str(), 2, text.c_str(), text.c_str()};
    CALL(module, TEVT_ScanState)(&info, text.c_str(), 0, text.c_str());
  }
  std::vector<json> events = module.Events();
  for (const char* member : {"computer", "product", "text", "description", "argument", "taskId"})
    CHECK((events[0][member].get<std::string>().find("\xC3\xBF") == 0 && events[2][member] == std::string(1024, '"')));
  CHECK((!events[1].contains("cut") && events[2]["cut"] == true && events[1]["result"] == kNotInitialised));
}

TEST_CASE("events: failures on demand, and a file that cannot be written") {
  const EventModule module;
  const auto start = CALL(module, TEVT_StartAPI), stop = CALL(module, TEVT_StopAPI);
  const auto install = CALL(module, TEVT_Install);
  support::WriteFile(module / "TvEvAPI.ini", "[FAIL]\r\nTEVT_StartAPI=7\r\n");
  CHECK((start() == 7 && install(&kInfo, 1) == kNotInitialised));
  support::WriteFile(module / "TvEvAPI.ini", "[FAIL]\r\nTEVT_StopAPI=-8\r\nTEVT_Install=9\r\n");
  CHECK((start() == kSuccess && install(&kInfo, 1) == 9 && stop() == -8));
  CHECK((module.Events().back()["result"] == -8 && CALL(module, TEVT_RebootForced)(&kInfo, "0") == kNotInitialised));
  CHECK((support::LockedFile(module / "events.jsonl"), start()) == kNotLogged);
  CHECK(CALL(module, TEVT_RebootForced)(&kInfo, "0") == kNotInitialised);
}
