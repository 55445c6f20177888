// The exports as KELUtils.json describes them: what to call, with which arguments, and the allowed results; and a
// product tree in which every export finds what it needs, and nothing that it would wait for.
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "exports/store_tree.h"

namespace endurance {

enum class Kind { kText, kBuffer, kNumber, kNumberIn, kNumberOut, kTime, kProxy };

struct Parameter {
  Kind kind;
  std::string name;
};

struct ExportedFunction {
  std::string name;
  std::vector<Parameter> parameters;
  std::set<std::uint32_t> results;  // that its contract lists, and success
  bool otherResults;                // its contract lets results of other modules through

  bool MayReturn(std::uint32_t result) const { return otherResults || results.contains(result); }
};

/// All of them, in the order of the header.
const std::vector<ExportedFunction>& ExportedFunctions();

/// What lies in memory before a call, behind 16 bytes that nobody may change.
struct Fill {
  char* at;
  std::string content;
};

/// A value of a parameter, or of a pair such as a buffer and its size. What it points to ends where the next page
/// cannot be touched.
struct Value {
  std::string shown;
  std::vector<std::uint32_t> words;
  std::vector<Fill> fills;
};

/// For each parameter or pair, in their order: a good value, and then the bad ones. Good paths lie in `folder`, which
/// ends in a backslash; buffers hold what fits of `settingText` on entry.
std::vector<std::vector<Value>> ValuesOf(const ExportedFunction& function, const std::string& folder,
                                         const std::string& settingText);

struct Called {
  std::uint32_t result;
  std::uint32_t popped;  // bytes of arguments that the function took off the stack
  bool inBounds;         // the bytes before every buffer are as they were
  bool untouched;        // and so is all else that it might have written
};

/// Calls `function` of a loaded DLL, with a stack that is `offset` bytes off a multiple of 16, as callers of other
/// compilers do. `inside` is called with true right before the call and with false right after it.
Called Call(
    HMODULE dll, const ExportedFunction& function, const std::vector<const Value*>& values, int offset,
    void (*inside)(bool) = [](bool) {});

/// True for the exports that wait when their siblings exist: for the prompt program, for management instrumentation, 20
/// seconds after an update, 30 seconds after the event of an uninstallation. They are called without siblings.
inline bool Waits(const ExportedFunction& function) {
  static const std::set<std::string> waiting = {"KE_GetCanReboot",      "KE_GetCanRebootEx",
                                                "KE_GetUserResponse",   "KE_ShowRebootCountDown",
                                                "KE_ShowInstallDialog", "KE_ShowInstallDialogEx",
                                                "KE_GetUUID",           "KE_UpdateNow",
                                                "KE_UpdateNowEx",       "KE_Uninstall"};
  return waiting.contains(function.name);
}

/// The scheduler, the plug-in manager and the installer helper are missing: each export that starts them tells so at
/// once. With `siblings` there are a trace log, agent, launcher and event module, the plug-ins, and the descriptions of
/// errors.
struct BusyTree : support::ProductTree {
  explicit BusyTree(bool siblings) {
    for (const char* folder : {"KesLpmng", "KelConf", "KelUpg", "KELUPD", "KELTVEVT", "KELREPORT", "KelQtine",
                               "KelSNet", "KelTask", "KelNtf", "5"})
      std::filesystem::create_directories(Path(folder));
    if (siblings) {
      TurnLogOn();
      AddDevkit("KePIRes.exe", "KESAgent");
      AddFake("FakeKELAGAPI", "Common/KELAGAPI.dll");
      AddFake("FakeKELMNAPI", "Common/KELMNAPI.dll");
      AddFake("FakeTvEvAPI", "KELTVEVT/TvEvAPI.dll");
      AddDevkit("KEC.dll", "KelUpg");
      AddDevkit("KELRCM.dll", "KelConf");
      support::WriteFile(Path("KelUpg/KelUpg.ini"), "[PLUGINS]\r\nKEC=" + (*this / "KelUpg\\KEC.dll") + "\r\n");
      support::WriteFile(Path("KelConf/Kelconf.ini"), "[PLUGINS]\r\nRCM=" + (*this / "KelConf\\KELRCM.dll") + "\r\n");
    }
    support::WriteFile(Path("values.dat"), "[5]\r\n5=5\r\n");
    SetCurrentDirectoryA((*this / "").c_str());  // relative paths stay here
    const support::LoadedDll dll(Path("KELUtils/KELUtils.dll"));
    settingText = Encrypted(dll, "secret", 6);
    support::WriteFile(Store("INTEGRA.DAT"), WholeStore("agent"));
    CALL(dll, KE_SetUninstallPass)(settingText.c_str(), 0);
    CALL(dll, KE_SetPasswordRCM)(settingText.c_str());
    CALL(dll, KE_SetDeviceID)("device");
    content = support::ReadFile(Store("INTEGRA.DAT"));
  }
  ~BusyTree() { SetCurrentDirectoryA("C:\\"); }

  /// A store as at the beginning.
  void Reset() const {
    support::WriteFile(Store("INTEGRA.DAT"), content);
    support::WriteFile(Store("INTEGRA.BAK"), content);
    std::filesystem::remove(Store("INTEGRA.START"));
  }

  std::vector<std::vector<Value>> Values(const ExportedFunction& function) const {
    return ValuesOf(function, *this / "", settingText);
  }

  std::string settingText, content;
};

/// The first value, which is a good one, of each.
inline std::vector<const Value*> GoodValues(const std::vector<std::vector<Value>>& values) {
  std::vector<const Value*> good;
  for (const auto& value : values) good.push_back(&value[0]);
  return good;
}

}  // namespace endurance
