// A product tree in which every export finds what it needs, and nothing that it would have to wait for.
#pragma once

#include <algorithm>

#include "endurance/exported_functions.h"
#include "exports/store_tree.h"

namespace endurance {

/// Exports that would wait with siblings that answer, and why. They are called in a tree without those siblings.
struct Waiting {
  const char *name, *reason;
};
inline constexpr Waiting kWaiting[] = {{"KE_GetCanReboot", "starts the prompt program"},
                                       {"KE_GetCanRebootEx", "starts the prompt program"},
                                       {"KE_GetUserResponse", "starts the prompt program"},
                                       {"KE_ShowRebootCountDown", "starts the prompt program"},
                                       {"KE_ShowInstallDialog", "starts the prompt program"},
                                       {"KE_ShowInstallDialogEx", "starts the prompt program"},
                                       {"KE_GetUUID", "asks the platform's management service"},
                                       {"KE_UpdateNow", "lasts 20 seconds once an update has ended well"},
                                       {"KE_UpdateNowEx", "lasts 20 seconds once an update has ended well"},
                                       {"KE_Uninstall", "lasts 30 seconds once the event module is connected"}};

inline bool Waits(const ExportedFunction& function) {
  return std::any_of(std::begin(kWaiting), std::end(kWaiting),
                     [&](const Waiting& row) { return function.name == row.name; });
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
      support::WriteFile(Path("KELUtils/KELUTILS.INI"), "[LOG]\r\nLEVELLOG=20\r\n");
      AddDevkit("TvLogSys.dll", "Common");
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
