#include "TvLogSys.h"

#include <doctest/doctest.h>

#include <cstring>
#include <set>
#include <vector>

#include "folder.h"
#include "support/product_tree.h"
#include "tvlogsys/results.h"
#include "win/owner.h"

using namespace tvlogsys;

namespace {

struct LogModule : support::LoadedDll {
  LogModule() : LoadedDll(support::BuildFolder() / "devkit" / "TvLogSys.dll") {}

  std::uint32_t Open(const std::string& path, std::uint32_t level, std::uint32_t maximumSize) const {
    std::uint32_t handle = 0;
    LogFileSettings settings{level, {}, maximumSize, 1, 1};
    std::strcpy(settings.path, path.c_str());
    REQUIRE(CALL(*this, LogSys_InitializeLogSystem)(&handle) == kSuccess);
    REQUIRE(CALL(*this, LogSys_ConfigureLogFile)(handle, &settings) == kSuccess);
    return handle;
  }
};

constexpr DWORD kPatience = 60000;  // milliseconds
constexpr char kPathVariable[] = "DEVKIT_TEST_LOG";
constexpr int kProcesses = 3, kThreads = 3, kLines = 60, kLineLength = 32;

struct Writer {
  decltype(&LogSys_DumpLogFile) dump;
  std::uint32_t handle;
};

DWORD WINAPI WriteLines(void* argument) {
  const Writer& writer = *static_cast<Writer*>(argument);
  for (int i = 0; i < kLines; ++i) {
    if (writer.dump(writer.handle, 0, "%08lu %08lu %012d\r\n", GetCurrentProcessId(), GetCurrentThreadId(), i))
      return 1;
  }
  return 0;
}

win::ProcessHandle StartWriterProcess() {
  char program[MAX_PATH];
  GetModuleFileNameA(nullptr, program, sizeof program);
  std::string command = std::string("\"") + program + "\" --no-skip \"--test-case=a process that logs\"";
  STARTUPINFOA startup{};
  PROCESS_INFORMATION started{};
  REQUIRE(CreateProcessA(program, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &started));
  CloseHandle(started.hThread);
  return win::ProcessHandle(started.hProcess);
}

}  // namespace

TEST_CASE("a log keeps the lines up to its level, and those of level 0") {
  const Folder folder;
  const LogModule log;
  const std::uint32_t handle = log.Open(folder / "a.log", 10, 1000);
  for (const std::uint32_t level : {0u, 9u, 10u, 11u, 20u}) {
    CHECK(CALL(log, LogSys_DumpLogFile)(handle, level, "%u%s", level, ";") == kSuccess);
  }
  CHECK(support::ReadFile(folder / "a.log") == "0;9;10;");
}

TEST_CASE("a full log file becomes the one older file, unless someone has it open") {
  const Folder folder;
  const LogModule log;
  const std::uint32_t handle = log.Open(folder / "a.log", 0, 10);
  const std::string large(30, 'L');
  const auto expect = [&](const std::string& line, const std::string& file, const std::string& old) {
    CHECK(CALL(log, LogSys_DumpLogFile)(handle, 0, "%s", line.c_str()) == kSuccess);
    CHECK(support::ReadFile(folder / "a.log") == file);
    CHECK(support::ReadFile(folder / "a.log.old") == old);
  };
  expect("12345", "12345", "");
  expect("67890", "1234567890", "");
  expect("a", "a", "1234567890");
  expect(large, large, "a");
  expect("b", "b", large);
  {
    const support::LockedFile reader(folder / "a.log", FILE_SHARE_READ | FILE_SHARE_WRITE);
    expect("1234567890", "b1234567890", large);
  }
  expect("c", "c", "b1234567890");
  CHECK(folder.FileCount() == 2);
}

TEST_CASE("a process that logs" * doctest::skip()) {
  const LogModule log;
  const std::uint32_t full = kProcesses * kThreads * kLines * kLineLength * 2 / 3;  // so that all rotate once
  Writer writer{CALL(log, LogSys_DumpLogFile), log.Open(std::getenv(kPathVariable), 0, full)};
  HANDLE threads[kThreads];
  for (HANDLE& thread : threads) thread = CreateThread(nullptr, 0, WriteLines, &writer, 0, nullptr);
  WaitForMultipleObjects(kThreads, threads, TRUE, kPatience);
  for (const HANDLE thread : threads) {
    DWORD code = 1;
    CHECK((GetExitCodeThread(thread, &code) && code == 0));
  }
}

TEST_CASE("processes and threads that append at once lose and tear no line, also while the file rotates") {
  const Folder folder;
  const support::EnvironmentVariable path(kPathVariable, (folder / "a.log").c_str());
  std::vector<win::ProcessHandle> processes;
  for (int i = 0; i < kProcesses; ++i) processes.push_back(StartWriterProcess());
  for (const win::ProcessHandle& process : processes) {
    DWORD code = 1;
    WaitForSingleObject(process.Get(), kPatience);
    CHECK((GetExitCodeProcess(process.Get(), &code) && code == 0));
  }
  const std::string text = support::ReadFile(folder / "a.log.old") + support::ReadFile(folder / "a.log");
  std::set<std::string> lines;
  for (std::size_t at = 0; at < text.size(); at += kLineLength) lines.insert(text.substr(at, kLineLength));
  CHECK(folder.FileCount() == 2);
  CHECK(text.size() == kProcesses * kThreads * kLines * kLineLength);
  CHECK(lines.size() == kProcesses * kThreads * kLines);
  for (const std::string& line : lines) CHECK(line.find("\r\n") == kLineLength - 2);
}

TEST_CASE("bad input is refused, long lines are cut, and the last error stays") {
  const Folder folder;
  const LogModule log;
  const auto configure = CALL(log, LogSys_ConfigureLogFile);
  const auto dump = CALL(log, LogSys_DumpLogFile);
  const std::uint32_t handle = log.Open(folder / "a.log", 0, 9999);
  LogFileSettings good{0, "a.log", 1000, 1, 1}, empty{0, "", 1000, 1, 1}, noSize{0, "a.log", 0, 1, 1};
  LogFileSettings unterminated = good;
  std::memset(unterminated.path, 'x', sizeof unterminated.path);
  SetLastError(4711);
  for (const std::uint32_t bad : {0u, 0xFFFFFFFFu}) {
    CHECK(configure(bad, &good) == kBadHandle);
    CHECK(dump(bad, 0, "x") == kBadHandle);
  }
  for (const LogFileSettings* bad : {&empty, &unterminated, &noSize}) CHECK(configure(handle, bad) == kBadArgument);
  CHECK(configure(handle, nullptr) == kBadArgument);
  CHECK(CALL(log, LogSys_InitializeLogSystem)(nullptr) == kBadArgument);
  CHECK(dump(log.Open(folder / "missing\\a.log", 0, 1000), 0, "x") == kFileFailure);
  const std::string text(9000, 'x');
  CHECK(dump(handle, 0, "%s\r\n", text.c_str()) == kSuccess);
  std::uint32_t other = 0;
  for (int i = 2; i < 64; ++i) CHECK(CALL(log, LogSys_InitializeLogSystem)(&other) == kSuccess);
  CHECK(CALL(log, LogSys_InitializeLogSystem)(&other) == kTooManyLogs);
  CHECK(GetLastError() == 4711);
  CHECK(support::ReadFile(folder / "a.log") == text.substr(0, 8189) + "\r\n");
}
