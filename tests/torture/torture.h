// What the endurance tests share. They have a short form, which is part of every test run, and a long one, asked for by
// the environment variable KELUTILS_TORTURE (scripts/torture.sh).
#pragma once

#include <doctest/doctest.h>

#include <cstdlib>
#include <string>

#include "exports/store_tree.h"
#include "support/inner_module.h"
#include "support/tally.h"
#include "win/file.h"
#include "win/process.h"

namespace torture {

/// Stands before every file call of the store, for the scope. Writes arrive in two halves, so that each can be cut in
/// the middle; pauses take no time.
class Gate {
 public:
  enum Act { kEndProcess, kFailOnce, kFailFromThenOn, kFailWritesFromThenOn };
  static constexpr unsigned kEnded = 77;  // the exit code of a process that was ended

  /// Acts at call number `at`, counted from 1; failing calls leave `error`.
  Gate(Act act, int at, DWORD error = 0) {
    s_act = act, s_at = at, s_error = error, s_calls = 0, s_secondHalf = false;
    win::g_fileGate = Ask;
    win::g_waiting.pause = [](DWORD) {};
  }
  ~Gate() {
    win::g_fileGate = nullptr;
    win::g_waiting = kept_;
  }
  static bool Reached() { return s_calls >= s_at; }

 private:
  static bool Ask(win::FileCall call, unsigned long& bytes) {
    ++s_calls;
    if (call == win::FileCall::kWrite && (s_secondHalf = !s_secondHalf) && bytes > 1) bytes /= 2;
    if (s_calls < s_at || (s_act == kFailOnce && s_calls > s_at)) return true;
    if (s_act == kEndProcess) TerminateProcess(GetCurrentProcess(), kEnded);
    if (s_act == kFailWritesFromThenOn && call != win::FileCall::kWrite) return true;
    SetLastError(s_error);
    return false;
  }
  static inline Act s_act;
  static inline int s_at, s_calls;
  static inline DWORD s_error;
  static inline bool s_secondHalf;
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

}  // namespace torture
