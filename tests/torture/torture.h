// What the tests share that break something while the store is at work. They have a short form, which is part of every
// test run, and a long one, asked for by the environment variable KELUTILS_TORTURE (scripts/torture.sh).
#pragma once

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "exports/store_tree.h"
#include "support/inner_module.h"
#include "support/tally.h"
#include "win/file.h"
#include "win/gate.h"
#include "win/process.h"

namespace torture {

/// Stands before the calls of one or more kinds, for the scope. Writes arrive in two halves, so that each can be cut in
/// the middle; pauses take no time.
class Gate {
 public:
  enum Act { kEndProcess, kFailOnce, kFailFromThenOn, kFailWritesFromThenOn };
  static constexpr unsigned kEnded = 77;  // the exit code of a process that was ended

  /// Acts at call number `at` of the kinds from `first` to `last`, counted from 1; failing calls leave `error`. With
  /// `inPlace`, no access rights can be read, and files are overwritten in place.
  Gate(Act act, int at, DWORD error = 0, bool inPlace = false, win::Call first = win::Call::kStatus,
       win::Call last = win::Call::kLock) {
    s_act = act, s_at = at, s_error = error, s_calls = 0, s_secondHalf = false, s_inPlace = inPlace;
    s_first = first, s_last = last;
    win::g_waiting.pause = [](DWORD) {};
    Arm(true);
  }
  ~Gate() {
    Arm(false);
    win::g_waiting = kept_;
  }
  static void Arm(bool on) { win::g_gate = on ? Ask : nullptr; }
  static bool Reached() { return s_calls >= s_at; }

 private:
  static bool Ask(win::Call call, unsigned long& bytes) {
    if (call < s_first || call > s_last) return true;
    if (s_inPlace && call == win::Call::kRights) return SetLastError(ERROR_ACCESS_DENIED), false;
    ++s_calls;
    if (call == win::Call::kWrite && (s_secondHalf = !s_secondHalf) && bytes > 1) bytes /= 2;
    if (s_calls < s_at || (s_act == kFailOnce && s_calls > s_at)) return true;
    if (s_act == kEndProcess) TerminateProcess(GetCurrentProcess(), kEnded);
    if (s_act == kFailWritesFromThenOn && call != win::Call::kWrite) return true;
    SetLastError(s_error);
    return false;
  }
  static inline Act s_act;
  static inline int s_at, s_calls;
  static inline DWORD s_error;
  static inline win::Call s_first, s_last;
  static inline bool s_secondHalf, s_inPlace;
  win::Waiting kept_ = win::g_waiting;
};

/// This test program, running its skipped case `name` in a process of its own, on a tree and with a number or two.
class Child {
 public:
  Child(const std::string& name, const support::ProductTree& tree, int first = 0, int second = 0) {
    const support::EnvironmentVariable noProgress("KELUTILS_TEST_PROGRESS", nullptr);
    const support::EnvironmentVariable root("TORTURE_TREE", tree.Path("").string().c_str());
    const support::EnvironmentVariable one("TORTURE_FIRST", std::to_string(first).c_str());
    const support::EnvironmentVariable two("TORTURE_SECOND", std::to_string(second).c_str());
    char self[MAX_PATH];
    GetModuleFileNameA(nullptr, self, sizeof self);
    process_ = support::StartProgram("\"" + std::string(self) + "\" --no-skip --minimal -tc=\"" + name + "\"");
    CloseHandle(process_.hThread);
  }
  ~Child() {
    TerminateProcess(process_.hProcess, Gate::kEnded);
    WaitForSingleObject(process_.hProcess, 10000);
    CloseHandle(process_.hProcess);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  /// Its exit code, waited for; 259 for one that does not end in time.
  DWORD End(DWORD milliseconds = 60000) const {
    DWORD code = 0;
    WaitForSingleObject(process_.hProcess, milliseconds);
    GetExitCodeProcess(process_.hProcess, &code);
    return code;
  }

 private:
  PROCESS_INFORMATION process_{};
};

/// In a child: the library at work in the tree, and the numbers.
struct ToldModule : support::InnerModule {
  ToldModule() : InnerModule(Path("KELUtils/KELUtils.dll")) {}
  static std::filesystem::path Path(const char* file) {
    return std::filesystem::path(std::getenv("TORTURE_TREE")) / file;
  }
  const int first = std::atoi(std::getenv("TORTURE_FIRST")), second = std::atoi(std::getenv("TORTURE_SECOND"));
};

/// The n-th value of a key, of many lengths; the empty one for 0. A torn value is none of them.
inline std::string Value(const std::string& key, int n) {
  if (n == 0) return "";
  return std::to_string(n) + key + std::string(static_cast<size_t>(n % 89) * 5, static_cast<char>('a' + n % 26));
}

// States of the files of the store, and a call in each.

inline const std::string kOld = "old" + std::string(3000, 'o'), kNew = "new" + std::string(5000, 'n'), kNone = "(1782)";

/// One state of the files, one call, and the identities that a process may find whatever became of the call.
struct Scene {
  const char* name;
  std::optional<std::string> live, backup, start;  // texts; none for a missing file
  KE_RESULT (*call)();
  std::string before, after;  // the identity, when the call did nothing and when it did all
  std::string also = after;   // one more that is right

  bool Allows(const std::string& id) const { return id == before || id == after || id == also; }
};

inline KE_RESULT SetNew() { return KE_SetAgentID(kNew.c_str()); }

inline KE_RESULT GetAny() {
  static char buffer[8192];
  return KE_GetAgentID(buffer, sizeof buffer);
}

inline KE_RESULT Keep() { return store::KeepAsStartCopy("Keep"); }

inline const std::vector<Scene>& Scenes() {
  const std::string old = WholeStore(kOld), start = WholeStore("start"), cut = old.substr(0, 70);
  static const std::vector<Scene> scenes = {
      {"a value is set", old, old, {}, SetNew, kOld, kNew},
      {"a damaged store is repaired from the start copy", cut, old, start, GetAny, "start", "start", kOld},
      {"the first value is set", {}, {}, {}, SetNew, kNone, kNew},
      {"a value is set without a live file", {}, old, start, SetNew, kOld, kNew},
      {"a value is set in a damaged store, whose backup is whole", cut, old, {}, SetNew, kOld, kNew},
      {"an identity is restored from the backup", WholeStore(""), old, {}, GetAny, kOld, kOld},
      {"an identity is restored from the start copy", WholeStore(""), WholeStore(""), start, GetAny, "start", "start"},
      {"the store becomes the start copy", old, old, start, Keep, kOld, kOld},
  };
  return scenes;
}

inline void Prepare(const StoreTree& tree, const Scene& scene) {
  const auto put = [&](const char* file, const std::optional<std::string>& text) {
    std::filesystem::remove(tree.tree.Store(file));
    if (text) tree.Put(file, *text);
  };
  put("INTEGRA.DAT", scene.live);
  put("INTEGRA.BAK", scene.backup);
  put("INTEGRA.START", scene.start);
}

/// True when no file that was whole is anything but whole: with its own text, or with that of the live store.
inline bool CopiesAreWhole(const StoreTree& tree, const Scene& scene) {
  const std::pair<const char*, const std::optional<std::string>&> copies[] = {{"INTEGRA.BAK", scene.backup},
                                                                              {"INTEGRA.START", scene.start}};
  return std::ranges::all_of(copies, [&](const auto& copy) {
    const std::string text = tree.Text(copy.first);
    const std::string rights[] = {copy.second.value_or(""), WholeStore(scene.before), WholeStore(scene.after)};
    return !copy.second || std::ranges::find(rights, text) != std::end(rights);
  });
}

/// The identity that a fresh process finds, through the DLL and the tool; in the short form a fresh instance in this
/// process.
inline std::string FreshIdentity(const StoreTree& tree) {
  if (!support::IsLong()) return AgentId(tree.Load());
  const std::string tool = (support::BuildFolder() / "bin" / "kelctl.exe").string();
  const std::string dll = tree.tree.Path("KELUtils/KELUtils.dll").string();
  const auto run = support::RunProgram("\"" + tool + "\" --dll \"" + dll + "\" get agent-id");
  return run.exitCode == 0 ? run.output.substr(0, run.output.find('\n')) : kNone;
}

}  // namespace torture
